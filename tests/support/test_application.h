// The whole core over fakes, for tests of screens.
//
//   TestApplication app;
//   putPeople(app.contacts, {person().firstName("Ada")});
//   app.launch();
//   app.screen().onClick_Backup();
//   app.tasks.runUntilIdle();

#pragma once

#include <memory>
#include <string>

#include "app/preferences/preference_keys.h"
#include "app/startup/varnok_app_delegate.h"
#include "contacts/testing/in_memory_contact_store.h"
#include "platform/testing/fake_clock.h"
#include "platform/testing/fake_image_codec.h"
#include "platform/testing/fake_random_source.h"
#include "platform/testing/fake_services.h"
#include "platform/testing/in_memory_file_system.h"
#include "platform/testing/in_memory_preference_store.h"
#include "platform/testing/manual_task_runner.h"
#include "platform/testing/recording_presenter.h"
#include "support/person_builder.h"

namespace varnok {

struct TestApplication {
  InMemoryPreferenceStore preferences;
  InMemoryContactStoreProvider contacts;
  InMemoryFileSystem files;
  FakeTextCatalog texts;
  FakeTextCodec codec;
  FakeTextCollation collation;
  FakeClock clock;
  FakeDateFormatter dates;
  FakeRandomSource random;
  FakeImageCodec images;
  ManualTaskRunner tasks;
  RecordingPresenter presenter;
  NotificationCenter notifications;
  FakeNotificationScheduler reminders;
  FakeMailComposer mail;
  FakeDocumentHandOver handOver;
  FakeIdleTimer idleTimer;
  FakeDropboxClient dropboxClient;
  FakeDeveloperLog log;
  Device device{"Varnok", "1.2", "1.2.3", "Slate", "12", "6.0", "de_DE", {"de-AT", "en"}, false};
  DropboxSession dropbox{dropboxClient, preferences, log};
  FakeNetworkMonitor network;
  FakeStoreReview storeReview;
  CorvelRating rating{{preferences, clock, device, network, storeReview, tasks, log}};
  FakeCrashReporter crashReporter{log};
  FakeFeedbackService feedback;
  std::unique_ptr<VarnokAppDelegate> delegate;

  TestApplication() { VarnokAppDelegate::initialize(preferences); }

  Services services() {
    return {preferences,   contacts, files,   texts,     codec,         collation,     clock,
            dates,         random,   images,  tasks,     presenter,     notifications, reminders,
            mail,          handOver, network, idleTimer, dropboxClient, dropbox,       rating,
            crashReporter, feedback, log,     device,    "/docs",       "/lock",       "/Web"};
  }

  void launch(const LaunchOptions& options = {}) {
    delegate = std::make_unique<VarnokAppDelegate>(services());
    EXPECT_TRUE(delegate->didFinishLaunchingWithOptions(options));
    delegate->applicationDidBecomeActive();
  }

  VarnokViewController& screen() { return *delegate->viewController(); }

  // A backup from the tap to its end.
  void backUp() {
    screen().onClick_Backup();
    tasks.runUntilIdle();
  }
};

}  // namespace varnok
