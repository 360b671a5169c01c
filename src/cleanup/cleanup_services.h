#pragma once

#include "contacts/contact_store.h"
#include "platform/clock.h"
#include "platform/idle_timer.h"
#include "platform/screen_presenter.h"
#include "platform/task_runner.h"
#include "platform/text_catalog.h"
#include "platform/text_collation.h"

namespace varnok {

// What finding and deleting contacts asks of its surroundings. All outlive the
// screens and the work that these begin.
struct CleanupServices {
  ContactStoreProvider& contacts;
  const TextCatalog& texts;
  const TextCollation& collation;
  const Clock& clock;
  TaskRunner& tasks;
  ScreenPresenter& presenter;
  IdleTimer& idleTimer;
};

}  // namespace varnok
