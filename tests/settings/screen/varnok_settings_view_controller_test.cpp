#include "settings/screen/varnok_settings_view_controller.h"

#include <gtest/gtest.h>

#include "support/golden.h"
#include "support/test_application.h"

namespace varnok {
namespace {

class SettingsScreen : public testing::Test {
 protected:
  SettingsScreen() {
    app.texts.texts["EXPORT_LAST"] = "EXPORT_LAST %@";
    app.texts.texts["REMINDER_FAILED"] = "REMINDER_FAILED %@";
    app.texts.texts["csv"] = "CSV table";
    app.texts.texts["WEEK"] = "Weekly";
    app.texts.texts["MONTH"] = "Monthly";
    // The web access of these tests is nobody else's business.
    app.preferences.setObject("lo", key::WEB_INTERFACE);
    app.launch();
  }

  // The settings, opened where they are not yet.
  VarnokSettingsViewController& settings() {
    if (app.presenter.screens.empty()) app.screen().tapControl("btn_Settings", 0);
    return app.presenter.front<VarnokSettingsViewController>();
  }

  void close() {
    settings().onClick_Done();
    app.presenter.settle();
  }

  std::string table() { return describe(settings().sections(), VarnokSettingsViewController::kTableKeys); }

  // The place of the row with that text or button.
  IndexPath at(std::string_view text) {
    const std::vector<TableSection>& sections = settings().sections();
    for (std::size_t section = 0; section < sections.size(); ++section) {
      for (std::size_t row = 0; row < sections[section].rows.size(); ++row) {
        const TableRow& found = sections[section].rows[row];
        if (found.text == text || (found.button && found.button->title == text))
          return {static_cast<int>(section), static_cast<int>(row)};
      }
    }
    return {-1, -1};
  }
  TableRow rowAt(std::string_view text) { return settings().cellForRowAtIndexPath(at(text)); }

  std::string_view front() { return app.presenter.screens.back()->screenName(); }

  TestApplication app;
};

TEST_F(SettingsScreen, BeforeTheFirstBackup) {
  EXPECT_TRUE(matchesGolden("screens/settings_first.txt", table()));
  EXPECT_EQ(settings().title(), "SETTINGS");
}

TEST_F(SettingsScreen, WithEverything) {
  app.files.files["/docs/old/a.vcf"] = "";
  app.dropboxClient.authorized = true;
  app.preferences.setObject("csv", key::EXPORT_TYPE);
  app.preferences.setObject("YES", key::REMINDER);
  app.preferences.setObject("WEEK", key::EVERY);
  app.preferences.setDouble(1709647629, key::EXPORT_LAST);
  app.preferences.setObject("12", key::lastRecord);
  app.contacts.access = AuthorizationStatus::denied;
  EXPECT_TRUE(matchesGolden("screens/settings_everything.txt", table()));
}

struct BackupCase {
  std::string name;
  std::string file;
  bool wifi;
  bool switchEnabled;
  bool restore;
};

class BackupsThere : public SettingsScreen, public testing::WithParamInterface<BackupCase> {};

TEST_P(BackupsThere, DecideTheRestoreSectionAndTheWiFiSwitch) {
  const BackupCase& c = GetParam();
  app.files.files[c.file] = "";
  if (!c.wifi) app.network.listed = {{"en1", "192.168.1.7"}};
  EXPECT_EQ(at("RESTORE_VCF"), (c.restore ? IndexPath{1, 0} : IndexPath{-1, -1}));
  EXPECT_EQ(at("EVERY"), (IndexPath{c.restore ? 3 : 2, 1}));
  const IndexPath server = at("WI_FI_SERVER");
  EXPECT_EQ(settings().headingOfSection(server.section).footer, c.restore ? "WI_FI_INFO" : "WI_FI_INFO_NO_BACKUP");
  EXPECT_EQ(rowAt("WI_FI_SERVER").accessoryView->enabled, c.switchEnabled);
  if (c.switchEnabled) return;
  EXPECT_FALSE(settings().switchRow(server, true));
}

INSTANTIATE_TEST_SUITE_P(, BackupsThere,
                         testing::Values(BackupCase{"None", "/else/a.vcf", true, false, false},
                                         BackupCase{"VCardInAFolder", "/docs/old/a.vcf", true, true, true},
                                         BackupCase{"ZipOnly", "/docs/a.zip", true, true, false},
                                         BackupCase{"CSVOnly", "/docs/a.csv", true, false, false},
                                         BackupCase{"Capitals", "/docs/a.VCF", true, false, false},
                                         BackupCase{"NoWiFi", "/docs/a.vcf", false, false, true}),
                         [](const auto& tested) { return tested.param.name; });

TEST_F(SettingsScreen, QuirkTheTypeIsATextAfterAChoiceAndAStoredNameOtherwise) {
  EXPECT_EQ(rowAt("TYPE").detail, "vcf");
  EXPECT_TRUE(settings().selectRow({0, 0}));
  ASSERT_EQ(front(), "ExportTypeViewController");
  app.presenter.screens.back()->selectRow({0, 1});
  app.presenter.screens.back()->tapControl("onTap_Done", 0);
  EXPECT_EQ(rowAt("TYPE").detail, "CSV table");
  app.preferences.setObject("NO", key::AppFirstOpened);
  close();
  EXPECT_EQ(rowAt("TYPE").detail, "csv");
}

TEST_F(SettingsScreen, OpensTheFieldsAndThePeriod) {
  EXPECT_TRUE(settings().selectRow({0, 1}));
  ASSERT_EQ(front(), "ExportTypeConfigurationViewController");
  app.presenter.screens.back()->tapControl("onTap_Done", 0);
  EXPECT_TRUE(settings().selectRow(at("EVERY")));
  ASSERT_EQ(front(), "ReminderViewController");
  app.presenter.screens.back()->selectRow({0, 0});
  app.presenter.screens.back()->tapControl("onTap_Done", 0);
  EXPECT_EQ(rowAt("EVERY").detail, "Weekly");
}

TEST_F(SettingsScreen, RowsDoOnlyWhatTheyShow) {
  app.files.files["/docs/a.vcf"] = "";
  for (const char* text : {"RESTORE_VCF", "WI_FI_SERVER", "", "REMINDER", "REMOVE_DUPLICATE", "Dropbox", "REMOVE_ALL"})
    EXPECT_FALSE(settings().selectRow(at(text))) << text;
  for (const char* text : {"TYPE", "CONFIGURE", "WI_FI_SERVER", "REMINDER", "EVERY", "REMOVE_RECORDS"})
    EXPECT_FALSE(settings().pressRow(at(text))) << text;
  for (const char* text : {"TYPE", "RESTORE_VCF", "EVERY", "Dropbox"})
    EXPECT_FALSE(settings().switchRow(at(text), true)) << text;
  for (const IndexPath outside : {IndexPath{-1, 0}, IndexPath{0, 2}, IndexPath{7, 0}, IndexPath{99, 0}}) {
    EXPECT_FALSE(settings().selectRow(outside));
    EXPECT_FALSE(settings().pressRow(outside));
    EXPECT_FALSE(settings().switchRow(outside, true));
  }
  EXPECT_FALSE(settings().tapControl("close", 0));
  EXPECT_EQ(app.presenter.screens.size(), 1U);
}

TEST_F(SettingsScreen, StoresTheReminderSwitchAtOnce) {
  const int flushes = app.preferences.flushes;
  EXPECT_TRUE(settings().switchRow(at("REMINDER"), true));
  EXPECT_EQ(app.preferences.objectForKey(key::REMINDER), Value("YES"));
  EXPECT_EQ(app.preferences.flushes, flushes + 1);
  EXPECT_EQ(app.reminders.log, "ask ");
  EXPECT_TRUE(rowAt("REMINDER").accessoryView->on);
  EXPECT_TRUE(settings().switchRow(at("REMINDER"), false));
  EXPECT_EQ(app.preferences.objectForKey(key::REMINDER), Value("NO"));
}

TEST_F(SettingsScreen, OffersRemindersOnceAtTheFirstDone) {
  close();
  ASSERT_EQ(app.presenter.screens.size(), 1U);  // Still open.
  const AlertView offer = app.presenter.alerts.front();
  EXPECT_EQ(offer.title, "ALERTVIEWTITLE");
  EXPECT_EQ(offer.message, "ALERTVIEWMESSAGE");
  EXPECT_EQ(offer.buttons, (std::vector<std::string>{"NO", "YES"}));
  EXPECT_EQ(app.preferences.stringForKey(key::AppFirstOpened), "NO");
  app.presenter.answer(0);
  EXPECT_FALSE(app.preferences.boolForKey(key::REMINDER));
  EXPECT_EQ(app.reminders.log, "");
  close();
  EXPECT_TRUE(app.presenter.screens.empty());
  EXPECT_TRUE(app.presenter.alerts.empty());
}

TEST_F(SettingsScreen, YesToTheOfferTurnsRemindersOn) {
  close();
  app.presenter.answer(1);
  EXPECT_TRUE(app.preferences.boolForKey(key::REMINDER));
  EXPECT_TRUE(rowAt("REMINDER").accessoryView->on);
  EXPECT_EQ(app.reminders.log, "ask ");
  EXPECT_EQ(app.presenter.screens.size(), 1U);
  close();
  EXPECT_TRUE(app.presenter.screens.empty());
  EXPECT_TRUE(app.reminders.planned.has_value());
}

TEST_F(SettingsScreen, NoOfferWhileRemindersAreOn) {
  app.preferences.setObject("YES", key::REMINDER);
  close();
  EXPECT_TRUE(app.presenter.screens.empty());
  EXPECT_EQ(app.preferences.stringForKey(key::AppFirstOpened), "YES");
}

TEST_F(SettingsScreen, AnAnswerAfterTheScreenHasGoneDoesNothing) {
  close();
  close();
  ASSERT_TRUE(app.presenter.screens.empty());
  app.presenter.answer(1);
  EXPECT_FALSE(app.preferences.boolForKey(key::REMINDER));
}

TEST_F(SettingsScreen, ClosingPlansTheReminder) {
  app.preferences.setObject("NO", key::AppFirstOpened);
  close();
  EXPECT_EQ(app.reminders.log, "cancel ");
  app.preferences.setObject("YES", key::REMINDER);
  close();
  EXPECT_EQ(app.reminders.log, "cancel cancel schedule ");
  EXPECT_EQ(app.reminders.planned->timeZone, "Europe/Vienna");
}

TEST_F(SettingsScreen, OpensTheBackupsWhileThereAreAny) {
  app.files.files["/docs/a.vcf"] = "";
  const IndexPath restore = at("RESTORE_VCF");
  EXPECT_TRUE(settings().pressRow(restore));
  EXPECT_EQ(front(), "RestoreBackupViewController");
  app.presenter.screens.back()->tapControl("close", 0);
  app.files.files.clear();  // Meanwhile, elsewhere: the section is still shown.
  EXPECT_TRUE(settings().pressRow(restore));
  EXPECT_EQ(front(), "VarnokSettingsViewController");
}

TEST_F(SettingsScreen, SearchesDuplicatesOnlyWithABackupAndAccess) {
  EXPECT_TRUE(settings().pressRow(at("REMOVE_DUPLICATE")));
  EXPECT_TRUE(app.presenter.overlays.empty());
  app.files.files["/docs/a.vcf"] = "";
  EXPECT_TRUE(settings().pressRow(at("REMOVE_DUPLICATE")));
  EXPECT_EQ(app.presenter.overlays, std::vector<std::string>{"DUPLICATE_RECORD_SEARCHING"});
  app.tasks.runUntilIdle();
  for (const auto access :
       {AuthorizationStatus::notDetermined, AuthorizationStatus::restricted, AuthorizationStatus::denied}) {
    app.contacts.access = access;
    settings().refreshScreen();
    EXPECT_FALSE(settings().pressRow(at("REMOVE_DUPLICATE")));
  }
}

TEST_F(SettingsScreen, DeletesChosenContactsOrAll) {
  putPeople(app.contacts, {person().firstName("Ada"), person().firstName("Bob")});
  EXPECT_TRUE(settings().selectRow(at("REMOVE_RECORDS")));
  ASSERT_EQ(front(), "RemoveRecordsViewController");
  app.tasks.runUntilIdle();
  app.presenter.screens.back()->tapControl("close", 0);
  EXPECT_TRUE(settings().pressRow(at("REMOVE_ALL")));
  EXPECT_EQ(app.presenter.sheets.front().tag, 2);
  app.presenter.choose(1);
  EXPECT_EQ(app.screen().numberOfContacts(), 2);
  EXPECT_TRUE(settings().pressRow(at("REMOVE_ALL")));
  app.presenter.choose(0);
  EXPECT_EQ(app.screen().numberOfContacts(), 0);
  EXPECT_EQ(app.presenter.alerts.front().title, "REMOVE_ALL_INFO");
}

TEST_F(SettingsScreen, LinksAndUnlinksDropbox) {
  EXPECT_TRUE(settings().pressRow(at("Dropbox")));
  EXPECT_EQ(app.presenter.urls.size(), 1U);
  EXPECT_EQ(rowAt("Dropbox").segments, std::vector<std::string>{"Link Dropbox"});
  app.dropboxClient.authorized = true;
  app.dropboxClient.redirect = DropboxRedirectResult{DropboxRedirectResult::Outcome::success, ""};
  app.delegate->openURL("db-x://1");
  EXPECT_EQ(rowAt("Dropbox").segments, std::vector<std::string>{"Unlink"});
  EXPECT_TRUE(settings().pressRow(at("Dropbox")));
  EXPECT_FALSE(app.dropbox.isLinked());
  EXPECT_EQ(rowAt("Dropbox").segments, std::vector<std::string>{"Link Dropbox"});
}

TEST_F(SettingsScreen, QuirkOnlyAnotherSegmentOpensTheDropboxBrowser) {
  app.dropboxClient.authorized = true;
  settings().openDropBox(1);
  EXPECT_EQ(front(), "DropboxBrowserViewController");
  EXPECT_EQ(app.presenter.screens.back()->title(), "Dropbox");
}

TEST_F(SettingsScreen, OpensTheHelpDesk) {
  EXPECT_TRUE(settings().tapControl("onClick_Support", 0));
  EXPECT_EQ(app.feedback.presented, 1);
}

// The server itself is not run here: its thread is one of the background tasks.
TEST_F(SettingsScreen, ShowsTheAddressWhileTheServerIsOn) {
  app.files.files["/docs/a.vcf"] = "";
  EXPECT_TRUE(settings().switchRow(at("WI_FI_SERVER"), true));
  EXPECT_EQ(at("http://127.0.0.1:8080"), (IndexPath{2, 1}));
  EXPECT_TRUE(rowAt("WI_FI_SERVER").accessoryView->on);
  settings().refreshScreen();
  EXPECT_EQ(at("http://127.0.0.1:8080"), (IndexPath{2, 1}));
  EXPECT_EQ(app.idleTimer.log, "awake ");
  app.network.status = NetworkStatus::notReachable;
  settings().handleNetworkChange();
  app.tasks.backgroundTasks.clear();
  EXPECT_FALSE(rowAt("WI_FI_SERVER").accessoryView->on);
  EXPECT_EQ(rowAt("").text, "");
  EXPECT_EQ(app.idleTimer.log, "awake awake sleepy ");
}

TEST_F(SettingsScreen, FollowsTheNetwork) {
  app.files.files["/docs/a.vcf"] = "";
  EXPECT_TRUE(rowAt("WI_FI_SERVER").accessoryView->enabled);
  app.network.listed.clear();
  app.network.changed();
  app.tasks.runUntilIdle();
  EXPECT_FALSE(rowAt("WI_FI_SERVER").accessoryView->enabled);
}

}  // namespace
}  // namespace varnok
