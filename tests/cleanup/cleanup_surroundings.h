// What the clean-up asks of its surroundings, as fakes.

#pragma once

#include <string>
#include <vector>

#include "cleanup/cleanup_services.h"
#include "contacts/testing/in_memory_contact_store.h"
#include "platform/linux/text/icu_text_collation.h"
#include "platform/testing/fake_clock.h"
#include "platform/testing/fake_services.h"
#include "platform/testing/manual_task_runner.h"
#include "platform/testing/recording_presenter.h"
#include "support/person_builder.h"

namespace varnok {

struct CleanupSurroundings {
  InMemoryContactStoreProvider contacts;
  FakeTextCatalog texts;
  IcuTextCollation collation{"de_DE"};
  FakeClock clock;
  ManualTaskRunner tasks;
  RecordingPresenter presenter;
  FakeIdleTimer idleTimer;
  CleanupServices services{contacts, texts, collation, clock, tasks, presenter, idleTimer};

  CleanupSurroundings() { texts.texts["REMOVE_DUPLICATE_INFO"] = "REMOVE_DUPLICATE_INFO %@"; }

  std::vector<RecordID> ids() {
    const auto store = ABAddressBookCreateWithOptions(contacts);
    return ABAddressBookCopyArrayOfAllPeople(store.get()).ids();
  }
};

}  // namespace varnok
