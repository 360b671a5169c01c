#pragma once

#include <string>

#include "contacts/contact_store.h"
#include "platform/clock.h"
#include "platform/developer_log.h"
#include "platform/file_system.h"
#include "platform/idle_timer.h"
#include "platform/image_codec.h"
#include "platform/network_monitor.h"
#include "platform/notification_center.h"
#include "platform/preference_store.h"
#include "platform/random.h"
#include "platform/task_runner.h"
#include "platform/text_catalog.h"

namespace varnok {

// What the web access asks of its surroundings. All outlive it.
struct WebServices {
  PreferenceStore& preferences;
  ContactStoreProvider& contacts;
  FileSystem& files;
  const TextCatalog& texts;
  const ImageCodec& images;
  const Clock& clock;
  RandomSource& random;
  TaskRunner& tasks;
  NotificationCenter& notifications;
  IdleTimer& idleTimer;
  NetworkMonitor& network;
  DeveloperLog& log;
  std::string documents;  // The documents directory.
  std::string webPages;   // The folder of the browser pages.
};

}  // namespace varnok
