#include "app/startup/varnok_app_delegate.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/test_application.h"

namespace varnok {
namespace {

using testing::ElementsAre;

TEST(StartUp, RegistersDefaultsThatStoredValuesOutlive) {
  TestApplication app;
  app.launch();
  EXPECT_EQ(app.preferences.stringForKey(key::EXPORT_TYPE), "vcf");
  EXPECT_TRUE(app.preferences.boolForKey(key::EXPORT_CONF_SHRINK));
  EXPECT_EQ(app.preferences.doubleForKey(key::EXPORT_LAST), 0.0);
  EXPECT_FALSE(app.preferences.boolForKey(key::REMINDER));
  EXPECT_EQ(app.preferences.stringForKey(key::EVERY), "MONTH");
  EXPECT_FALSE(app.preferences.boolForKey(key::multipleVCF));
  EXPECT_EQ(app.preferences.stringForKey(key::AppFirstOpened), "YES");

  app.preferences.setObject("csv", key::EXPORT_TYPE);
  app.preferences.setObject("NO", key::AppFirstOpened);
  VarnokAppDelegate::initialize(app.preferences);
  app.launch();
  EXPECT_EQ(app.preferences.stringForKey(key::EXPORT_TYPE), "csv");
  EXPECT_EQ(app.preferences.stringForKey(key::AppFirstOpened), "NO");
}

TEST(StartUp, AReminderAsksForAVCardBackup) {
  const auto typeAfter = [](const std::function<void(TestApplication&)>& event) {
    TestApplication app;
    app.preferences.setObject("csv", key::EXPORT_TYPE);
    event(app);
    return app.preferences.stringForKey(key::EXPORT_TYPE);
  };
  EXPECT_EQ(typeAfter([](auto& app) { app.launch({.localNotification = true}); }), "vcf");
  EXPECT_EQ(typeAfter([](auto& app) { app.launch(); }), "csv");
  const auto received = [](ApplicationState state) {
    return [state](auto& app) {
      app.launch();
      app.delegate->didReceiveLocalNotification(state);
    };
  };
  EXPECT_EQ(typeAfter(received(ApplicationState::inactive)), "vcf");
  EXPECT_EQ(typeAfter(received(ApplicationState::active)), "csv");
  EXPECT_EQ(typeAfter(received(ApplicationState::background)), "csv");
}

TEST(StartUp, OpensTheWindowOnTheMainScreen) {
  TestApplication app;
  app.launch();
  EXPECT_EQ(app.delegate->window().rootViewController, &app.screen());
  EXPECT_TRUE(app.delegate->window().keyAndVisible);
  EXPECT_EQ(app.delegate->window().statusBarStyle, StatusBarStyle::lightContent);
}

TEST(StartUp, DescribesTheDevice) {
  TestApplication app;
  putPeople(app.contacts, {person().firstName("Ada")});
  app.launch();
  EXPECT_EQ(app.feedback.configuration.customFields.at("Device Data"),
            "VNKPro V1.2 , Slate , iOS12 , Country:DE , Language:de-AT , Contacts Count:1, Last Backup:-");
  app.preferences.setDouble(1709647629, key::EXPORT_LAST);
  app.clock.offset = std::chrono::hours(2);
  app.device.localeIdentifier = "fr";
  app.device.displayName = "Varnok Lite";
  app.contacts.access = AuthorizationStatus::denied;
  EXPECT_EQ(app.delegate->deviceDataLine(),
            "VNK V1.2 , Slate , iOS12 , Country:fr , Language:de-AT , Contacts Count:0, Last Backup:05-03-2024 16:07");
}

TEST(StartUp, DropboxIsSetUpOrMigrated) {
  TestApplication fresh;
  fresh.launch();
  EXPECT_EQ(fresh.dropboxClient.appKey, "r4wzt8kq1hyd0mv");
  EXPECT_EQ(fresh.dropboxClient.migrations, 0);

  TestApplication older;
  older.preferences.setInteger(0, key::migration);
  older.launch();
  EXPECT_EQ(older.dropboxClient.migrations, 1);
  EXPECT_EQ(older.dropboxClient.appKey, "r4wzt8kq1hyd0mv");
  EXPECT_EQ(older.preferences.integerForKey(key::migration), 1);

  TestApplication failing;
  failing.preferences.setInteger(0, key::migration);
  failing.dropboxClient.migration.unmigrated = {{"u", "t", "s", "k"}};
  failing.launch();
  EXPECT_EQ(failing.dropboxClient.appKey, "");
  EXPECT_THAT(failing.log.lines,
              testing::Contains("DropboxUserID: u, AccessToken: t, AccessTokenSecret: s, StoredAppKey: k"));
}

TEST(OpenURL, AnswersYesAndTellsOnlyOfASuccessfulSignIn) {
  TestApplication app;
  app.launch();
  app.log.lines.clear();
  int returned = 0;
  const auto observation = app.notifications.observe("returnMainMenu", [&] { ++returned; });
  EXPECT_TRUE(app.delegate->openURL("https://example.org"));
  app.dropboxClient.redirect = DropboxRedirectResult{DropboxRedirectResult::Outcome::error, "why"};
  EXPECT_TRUE(app.delegate->openURL("db-x://1"));
  app.dropboxClient.redirect = DropboxRedirectResult{DropboxRedirectResult::Outcome::success, ""};
  EXPECT_TRUE(app.delegate->openURL("db-x://1"));
  EXPECT_EQ(returned, 0);
  app.dropboxClient.authorized = true;
  EXPECT_TRUE(app.delegate->openURL("db-x://1"));
  EXPECT_EQ(returned, 1);
  EXPECT_THAT(app.log.lines, ElementsAre("VarnokBackup Pro", "VarnokBackup Pro", "Error: why", "VarnokBackup Pro",
                                         "Success! User is logged into Dropbox.", "VarnokBackup Pro",
                                         "Success! User is logged into Dropbox."));
}

}  // namespace
}  // namespace varnok
