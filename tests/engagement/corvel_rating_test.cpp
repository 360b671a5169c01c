#include "engagement/corvel_rating.h"

#include <gtest/gtest.h>

#include "app/preferences/preference_keys.h"
#include "platform/testing/fake_clock.h"
#include "platform/testing/fake_services.h"
#include "platform/testing/in_memory_preference_store.h"
#include "platform/testing/manual_task_runner.h"

namespace varnok {
namespace {

class Rating : public testing::Test {
 protected:
  void event(bool canPrompt = true) {
    rating.userDidSignificantEvent(canPrompt);
    tasks.runUntilIdle();
  }
  std::int64_t events() { return preferences.integerForKey(key::kAppiraterSignificantEventCount); }

  InMemoryPreferenceStore preferences;
  FakeClock clock;
  Device device{"Varnok", "1.2", "1.2.3", "", "", "6.0", "en", {"en"}, false};
  FakeNetworkMonitor network;
  FakeStoreReview store;
  ManualTaskRunner tasks;
  FakeDeveloperLog log;
  CorvelRating rating{{preferences, clock, device, network, store, tasks, log}};
};

TEST_F(Rating, IsAskedForAfterTheSecondBackupAndThenNotForTwoDays) {
  event();
  EXPECT_EQ(events(), 1);
  EXPECT_EQ(store.requests, 0);
  event();
  EXPECT_EQ(store.requests, 1);
  clock.seconds += 172799;
  event();
  EXPECT_EQ(store.requests, 1);
  clock.seconds += 1;
  event();
  EXPECT_EQ(store.requests, 2);
  EXPECT_EQ(events(), 4);
}

TEST_F(Rating, QuirkTheFirstUseIsNowForAUseAndLaterForAnEvent) {
  event();
  EXPECT_EQ(preferences.doubleForKey(key::kAppiraterFirstUseDate), 0);
  event();
  EXPECT_EQ(preferences.doubleForKey(key::kAppiraterFirstUseDate), clock.seconds);
  preferences.removeObjectForKey(key::kAppiraterCurrentVersion);
  rating.appLaunched(false);
  tasks.runUntilIdle();
  EXPECT_EQ(preferences.doubleForKey(key::kAppiraterFirstUseDate), clock.seconds);
  EXPECT_EQ(preferences.integerForKey(key::kAppiraterUseCount), 1);
  EXPECT_EQ(events(), 0);
}

TEST_F(Rating, IsNotAskedForWhenOfflineRatedDeclinedOrForbidden) {
  event();
  network.flags.reset();
  event();
  EXPECT_EQ(log.lines.back(), "Error. Could not recover network reachability flags");
  network.flags = ReachabilityFlags{.reachable = true, .connectionRequired = true, .transientConnection = false};
  event();
  network.flags = ReachabilityFlags{.reachable = true, .connectionRequired = false, .transientConnection = false};
  network.connects = false;
  event();
  network.connects = true;
  event(/*canPrompt=*/false);
  rating.clickedButtonAtIndex(0);
  event();
  preferences.setBool(false, key::kAppiraterDeclinedToRate);
  rating.clickedButtonAtIndex(1);
  event();
  EXPECT_EQ(store.requests, 0);
  EXPECT_EQ(events(), 7);
  ASSERT_EQ(store.urls.size(), 1U);
  EXPECT_EQ(store.urls[0].find("APP_ID"), std::string::npos);
}

TEST_F(Rating, CountsAfreshForANewVersion) {
  event();
  rating.clickedButtonAtIndex(0);
  device.buildVersion = "1.2.4";
  event();
  EXPECT_EQ(events(), 1);
  EXPECT_FALSE(preferences.boolForKey(key::kAppiraterDeclinedToRate));
  event();
  EXPECT_EQ(store.requests, 1);
}

}  // namespace
}  // namespace varnok
