#include "backup/run/varnok_view_controller.h"

#include <gtest/gtest.h>

#include "support/golden.h"
#include "support/test_application.h"
#include "support/zip_reader.h"

namespace varnok {
namespace {

using namespace std::chrono_literals;

const std::string kFile = "/docs/Varnok-2024-03-05-140709-2.vcf";

// The screen as a person would see it.
std::string described(const VarnokViewState& state) {
  std::string text;
  const auto add = [&](const char* name, const Control& control) {
    if (!control.hidden) text += std::string(name) + " ";
  };
  add("Backup", state.btn_Backup);
  add("Export", state.btn_Export);
  add("Cancel", state.btn_Cancel);
  add("Send", state.btn_Send);
  add("Settings", state.btn_Settings);
  return text + "\"" + state.lbl_Backup.text + "\" " + std::to_string(state.progress.currentValue) + "/" +
         std::to_string(state.progress.maxValue);
}

class MainScreen : public testing::Test {
 protected:
  MainScreen() {
    putPeople(app.contacts,
              {person().firstName("Ada").phone("boat", "1"), person().firstName("Bob").phone("car", "2")});
    app.preferences.setObject("YES", key::ALERT_BACKUP_POPUP_SHOWED);
    app.launch();
  }

  std::string seen() { return described(app.screen().state()); }

  TestApplication app;
};

TEST_F(MainScreen, GoesFromReadyThroughRunningToFinished) {
  EXPECT_EQ(seen(), "Backup Settings \"BACKUP_LABEL 2\" 0/2");
  app.screen().onClick_Backup();
  EXPECT_EQ(seen(), "Backup Cancel \"BACKUP_LABEL 2\" 0/2");
  EXPECT_TRUE(app.tasks.runOneInBackground());
  EXPECT_EQ(app.idleTimer.log, "");  // Nothing reaches the screen from the run's thread.
  app.tasks.runUntilIdle();
  EXPECT_EQ(seen(), "Backup Send Settings \"FILE_SIZE_MESSAGE 0 KB\" 2/2");
  EXPECT_EQ(app.idleTimer.log, "awake sleepy ");
  EXPECT_EQ(app.tasks.detachedCount, 3);  // One for each contact, and one for the end.
  EXPECT_TRUE(matchesGolden("vcard/two_people.vcf", app.files.files.at(kFile)));
  EXPECT_EQ(app.preferences.doubleForKey(key::EXPORT_LAST), app.clock.seconds);
  EXPECT_EQ(app.preferences.stringForKey(key::FILE_PATH), kFile);
  EXPECT_EQ(app.screen().lastOutcome()->contacts, 2);
  EXPECT_TRUE(app.presenter.alerts.empty());
}

TEST_F(MainScreen, ShowsItsControlsAndDoesWhatTheyAllow) {
  const auto shown = [&] {
    std::string text;
    for (const ScreenControl& control : app.screen().controls())
      if (!control.hidden) text += control.name + "=" + control.text + " ";
    return text;
  };
  EXPECT_EQ(shown(), "btn_Backup=Backup btn_Settings=SETTINGS lbl_Backup=BACKUP_LABEL 2 lbl_PrivacyMessage= ");
  EXPECT_FALSE(app.screen().tapControl("btn_Cancel", 0));  // Hidden.
  EXPECT_FALSE(app.screen().tapControl("lbl_Backup", 0));
  EXPECT_TRUE(app.screen().tapControl("btn_Backup", 0));
  EXPECT_EQ(shown(), "btn_Backup=Backup btn_Cancel=Cancel lbl_Backup=BACKUP_LABEL 2 lbl_PrivacyMessage= ");
  app.tasks.runUntilIdle();
  EXPECT_EQ(app.screen().progressBar()->currentValue, 2);
  EXPECT_TRUE(app.screen().tapControl("btn_Send", 0));
  EXPECT_EQ(app.mail.presented.size(), 1U);
}

TEST_F(MainScreen, SaysWhenTheReminderCannotBePlanned) {
  app.texts.texts["REMINDER_FAILED"] = "REMINDER_FAILED %@";
  app.preferences.setObject("YES", key::REMINDER);
  app.reminders.scheduleStatus = {Status::Code::noSpace, "full"};
  EXPECT_TRUE(app.screen().tapControl("btn_Settings", 0));
  app.screen().settingsDidFinish();
  EXPECT_TRUE(app.presenter.screens.empty());
  EXPECT_EQ(app.presenter.alerts.front().message, "REMINDER_FAILED CAUSE_NO_SPACE");
}

TEST_F(MainScreen, NumbersBeginAtZeroInEveryRun) {
  app.backUp();
  const std::string first = app.files.files.at(kFile);
  app.clock.seconds += 60;
  app.backUp();
  EXPECT_EQ(app.files.files.size(), 2U);  // vCard backups accumulate.
  EXPECT_EQ(app.files.files.at("/docs/Varnok-2024-03-05-140809-2.vcf"), first);
}

TEST_F(MainScreen, CancelLeavesNoFileAndIsReadyAtOnce) {
  app.screen().onClick_Backup();
  app.screen().onClick_Cancel();
  EXPECT_EQ(seen(), "Backup Settings \"BACKUP_LABEL 2\" 0/2");
  EXPECT_EQ(app.screen().lastOutcome()->kind, BackupOutcome::Kind::cancelled);
  app.backUp();  // The cancelled one does not cancel this one.
  EXPECT_EQ(app.screen().lastOutcome()->kind, BackupOutcome::Kind::finished);
  EXPECT_EQ(app.files.files.size(), 1U);
}

TEST_F(MainScreen, ProgressThatArrivesAfterCancelIsDropped) {
  app.screen().onClick_Backup();
  app.tasks.runOneInBackground();  // The whole run; its updates are still on their way.
  app.screen().onClick_Cancel();
  app.tasks.runUntilIdle();
  EXPECT_EQ(app.screen().state().progress.currentValue, 0);
}

TEST_F(MainScreen, TheBarStaysResetAfterAFailure) {
  app.files.failCommits = true;
  app.screen().onClick_Backup();
  app.tasks.runOneInBackground();
  while (app.tasks.runOneOnMain()) {
  }
  app.tasks.runUntilIdle();  // The updates come after the failure.
  EXPECT_EQ(seen(), "Backup Settings \"BACKUP_LABEL 2\" 0/2");
}

TEST_F(MainScreen, ACancelledRunSaysNothingOfTheNext) {
  app.screen().onClick_Backup();
  app.tasks.runOneInBackground();  // Has ended; nobody has been told yet.
  app.screen().onClick_Cancel();
  app.screen().onClick_Backup();
  while (app.tasks.runOneOnMain()) {
  }
  EXPECT_EQ(app.screen().lastOutcome(), std::nullopt);
  EXPECT_FALSE(app.screen().state().btn_Cancel.hidden);
}

TEST_F(MainScreen, BecomingActiveLeavesARunningBackupAlone) {
  app.screen().onClick_Backup();
  app.delegate->applicationDidBecomeActive();
  EXPECT_EQ(seen(), "Backup Cancel \"BACKUP_LABEL 2\" 0/2");
}

TEST_F(MainScreen, UpdatesThatOutliveTheScreenTouchNothing) {
  app.screen().onClick_Backup();
  app.tasks.runOneInBackground();
  app.delegate.reset();
  app.tasks.runUntilIdle();
}

// Cancels from the run's thread when the photo of a person is reduced.
class CancellingCodec : public FakeImageCodec {
 public:
  mutable std::function<void()> cancel;
  std::optional<ImageSize> sizeOf(std::string_view bytes) const override {
    if (cancel) std::exchange(cancel, nullptr)();
    return FakeImageCodec::sizeOf(bytes);
  }
};

TEST(BackupRun, StopsAfterThePersonTakenAndLeavesNothing) {
  struct Host : BackupRun::Host {
    bool cancelled = false;
    int taken = 0;
    bool operationCancelled() const override { return cancelled; }
    void personTaken(const PersonRef& /*person*/) override { ++taken; }
  } host;
  TestApplication app;
  CancellingCodec codec;
  codec.cancel = [&] { host.cancelled = true; };
  putPeople(app.contacts, {person().firstName("Ada"), person().image("1x1"), person().firstName("Eve")});
  BackupRun run(host, {{app.preferences, app.clock, codec, app.codec, app.random},
                       app.contacts,
                       app.files,
                       app.log,
                       app.texts,
                       app.tasks});
  const BackupOutcome outcome = run.run("/docs/a.vcf", "en");
  EXPECT_EQ(outcome.kind, BackupOutcome::Kind::cancelled);
  EXPECT_EQ(outcome.contacts, 2);
  EXPECT_EQ(host.taken, 2);
  EXPECT_TRUE(app.files.files.empty());
  EXPECT_EQ(app.files.filesOnTheirWay, 0);
}

TEST_F(MainScreen, AnEmptyBookIsSaidSo) {
  TestApplication empty;
  empty.launch();
  empty.screen().onClick_Backup();
  ASSERT_EQ(empty.presenter.alerts.size(), 1U);
  EXPECT_EQ(empty.presenter.alerts.front().message, "NOCONTACT");
  EXPECT_TRUE(empty.files.files.empty());
  EXPECT_EQ(empty.preferences.stringForKey(key::FILE_NAME), std::nullopt);
}

struct FailureCase {
  std::string name;
  std::function<void(TestApplication&)> breakIt;
  std::string message;
};

class FailingRun : public testing::TestWithParam<FailureCase> {};

TEST_P(FailingRun, SaysWhyAndChangesNothing) {
  TestApplication app;
  putPeople(app.contacts, {person().firstName("Ada")});
  app.files.files["/docs/Varnok-old.vcf"] = "old";
  app.preferences.setDouble(7, key::EXPORT_LAST);
  app.launch();
  GetParam().breakIt(app);
  app.backUp();
  ASSERT_EQ(app.presenter.alerts.size(), 1U);
  EXPECT_EQ(app.presenter.alerts.front().message, GetParam().message);
  EXPECT_EQ(app.files.files, (std::map<std::string, std::string>{{"/docs/Varnok-old.vcf", "old"}}));
  EXPECT_EQ(app.files.filesOnTheirWay, 0);
  EXPECT_EQ(app.preferences.doubleForKey(key::EXPORT_LAST), 7);
  EXPECT_EQ(app.preferences.stringForKey(key::ALERT_BACKUP_POPUP_SHOWED), "NO");
  EXPECT_TRUE(app.screen().state().btn_Cancel.hidden);
  EXPECT_FALSE(app.screen().state().btn_Settings.hidden);
  EXPECT_EQ(app.screen().lastOutcome()->kind, BackupOutcome::Kind::failed);
  // A failed run gives its lock back: the next one is not refused.
  EXPECT_LE(app.files.locked.size(), GetParam().name == "AnotherBackupRuns" ? 1U : 0U);
}

INSTANTIATE_TEST_SUITE_P(
    , FailingRun,
    testing::Values(
        FailureCase{"FolderGone", [](auto& app) { app.files.failCreates = true; }, "BACKUP_FAILED CAUSE_ACCESS_DENIED"},
        FailureCase{"DiskFull", [](auto& app) { app.files.failAppendsAfter(20); }, "BACKUP_FAILED CAUSE_NO_SPACE"},
        FailureCase{"NotDurable", [](auto& app) { app.files.failCommits = true; }, "BACKUP_FAILED CAUSE_INPUT_OUTPUT"},
        FailureCase{"StoreDamaged",
                    [](auto& app) {
                      app.contacts.failReads({Status::Code::corrupt, "damaged"});
                    },
                    "BACKUP_FAILED CAUSE_CORRUPT"},
        FailureCase{"AnotherBackupRuns", [](auto& app) { app.files.locked.insert("/lock"); }, "BACKUP_BUSY"}),
    [](const auto& tested) { return tested.param.name; });

TEST_F(MainScreen, TheFirstBackupIsCongratulatedOnce) {
  app.preferences.setObject("NO", key::ALERT_BACKUP_POPUP_SHOWED);
  app.backUp();
  ASSERT_EQ(app.presenter.alerts.size(), 1U);
  EXPECT_EQ(app.presenter.alerts.front().message, "FIRSTBACKUPALERTMESSAGE");
  app.backUp();
  EXPECT_EQ(app.presenter.alerts.size(), 1U);
}

// One person whose note makes the file exactly `bytes` large.
void makeFileOf(TestApplication& app, std::size_t bytes) {
  putPeople(app.contacts, {person().note("")});
  app.launch();
  app.backUp();
  const std::size_t bare = app.files.files.begin()->second.size();
  app.files.files.clear();
  Status status;
  const auto store = app.contacts.open(status);
  ASSERT_TRUE(store->allPeople()[0]->setValue(kABPersonNoteProperty, std::string(bytes - bare, 'x')).ok());
  ASSERT_TRUE(store->save().ok());
  app.presenter.alerts.clear();
  app.backUp();
  ASSERT_EQ(app.files.files.begin()->second.size(), bytes);
}

TEST(SizeMessage, RoundsAndWarnsStrictlyAboveTheLimit) {
  struct Row {
    std::size_t bytes;
    std::string message;
    std::size_t alerts;
  };
  for (const auto& [bytes, message, alerts] :
       {Row{1048575, "FILE_SIZE_MESSAGE 1024 KB", 0}, Row{1048576, "FILE_SIZE_MESSAGE 1 MB", 0},
        Row{3145728, "FILE_SIZE_MESSAGE 3 MB", 0}, Row{3145729, "FILE_SIZE_MESSAGE 3 MB", 1}}) {
    TestApplication app;
    ASSERT_NO_FATAL_FAILURE(makeFileOf(app, bytes));
    EXPECT_EQ(app.screen().state().lbl_Backup.text, message);
    EXPECT_EQ(app.presenter.alerts.size(), alerts) << bytes;
  }
}

TEST_F(MainScreen, AFileWhoseSizeCannotBeReadIsFinishedWithoutASizeLine) {
  app.files.hideAttributes = true;
  app.backUp();
  EXPECT_EQ(seen(), "Backup Send Settings \"BACKUP_LABEL 2\" 2/2");
  EXPECT_EQ(app.screen().lastOutcome()->kind, BackupOutcome::Kind::finished);
  EXPECT_TRUE(app.presenter.alerts.empty());
}

TEST(SizeWarning, AcceptedTurnsPhotosOffAndRepeats) {
  TestApplication app;
  ASSERT_NO_FATAL_FAILURE(makeFileOf(app, 3145729));
  EXPECT_EQ(app.presenter.alerts.front().title, "Warning");
  EXPECT_EQ(app.presenter.alerts.front().tag, 9999);
  app.clock.seconds += 60;
  app.presenter.answer(1);
  EXPECT_TRUE(app.screen().photoExportClosedForLastBackup());
  EXPECT_FALSE(app.preferences.boolForKey(key::EXPORT_CONF_PHOTOS));
  app.tasks.runUntilIdle();
  EXPECT_EQ(app.files.files.size(), 2U);
  EXPECT_TRUE(app.presenter.alerts.empty());  // Without photos nothing is warned of.
}

TEST(SizeWarning, DeclinedOffersDropboxOnlyWhenLinked) {
  for (const bool linked : {false, true}) {
    TestApplication app;
    app.dropboxClient.authorized = linked;
    ASSERT_NO_FATAL_FAILURE(makeFileOf(app, 3145729));
    app.presenter.answer(0);
    app.tasks.runUntilIdle();
    EXPECT_EQ(app.preferences.integerForKey(key::kAppiraterSignificantEventCount), 1);
    app.tasks.advance(499ms);
    EXPECT_TRUE(app.presenter.sheets.empty());
    app.tasks.advance(1ms);
    ASSERT_EQ(app.presenter.sheets.size(), linked ? 1U : 0U);
    if (!linked) continue;
    EXPECT_EQ(app.presenter.sheets.front().title, "Would you upload Dropbox?");
    app.presenter.choose(0);
    ASSERT_EQ(app.dropboxClient.uploads.size(), 1U);
    EXPECT_EQ(app.dropboxClient.uploads[0].path, "/" + *app.screen().fileName());
    EXPECT_EQ(app.dropboxClient.uploads[0].file, *app.screen().filePath());
    EXPECT_TRUE(app.dropbox.uploadQueue().contains(*app.screen().filePath()));
  }
}

TEST_F(MainScreen, SendsTheBackupByMail) {
  app.backUp();
  app.screen().onClick_Send();
  ASSERT_EQ(app.mail.presented.size(), 1U);
  const MailMessage& message = app.mail.presented[0];
  EXPECT_EQ(message.subject, "BACKUP_MAIL_SUBJECT");
  EXPECT_EQ(message.body, "BACKUP_MAIL_BODY");
  EXPECT_TRUE(message.bodyIsHTML);
  ASSERT_EQ(message.attachments.size(), 1U);
  EXPECT_EQ(message.attachments[0].mimeType, "text/x-vcard;charset=UTF-8");
  EXPECT_EQ(message.attachments[0].fileName, "Varnok-2024-03-05-140709-2.vcf");
  EXPECT_EQ(message.attachments[0].bytes, app.files.files.at(kFile));
  app.mail.finish(MailComposeResult::sent);
  EXPECT_FALSE(app.mail.inFront);
  EXPECT_EQ(app.presenter.alerts.front().title, "EXPORT_INFO");
  EXPECT_FALSE(app.screen().state().btn_Send.hidden);  // Sent stays at finished.
  app.screen().onClick_Send();
  app.mail.finish(MailComposeResult::failed);
  EXPECT_FALSE(app.mail.inFront);
  EXPECT_TRUE(app.screen().state().btn_Send.hidden);
}

TEST_F(MainScreen, QuirkMailIsRefusedOnlyWithoutAFileAndWithoutMail) {
  app.mail.canSend = false;
  app.screen().onClick_Send();
  EXPECT_EQ(app.presenter.alerts.front().message, "MAILCOMPOSER_CANT_SEND");
  EXPECT_TRUE(app.mail.presented.empty());
  app.backUp();
  app.screen().onClick_Send();
  EXPECT_EQ(app.mail.presented.size(), 1U);
}

TEST_F(MainScreen, FormatsDecideTheButtonAndTheOldBackups) {
  app.preferences.setBool(true, key::multipleVCF);
  app.screen().refreshContactCount();
  EXPECT_EQ(seen(), "Export Settings \"BACKUP_LABEL 2\" 0/2");
  EXPECT_EQ(app.screen().fileType(), "zip");
  app.preferences.setObject("csv", key::EXPORT_TYPE);
  EXPECT_EQ(app.screen().fileType(), "csv");
  EXPECT_FALSE(app.screen().hasMultipleVCF());
}

TEST_F(MainScreen, ACSVBackupReplacesOnlyTheOlderOnesOfItsKind) {
  app.preferences.setObject("csv", key::EXPORT_TYPE);
  app.preferences.setBool(true, key::multipleVCF);  // Means nothing for CSV.
  app.preferences.setDouble(7, key::EXPORT_LAST);
  for (const char* old : {"/docs/a.vcf", "/docs/a.zip", "/docs/a.csv", "/docs/sub/b.csv", "/docs/c.CSV", "/else/d.csv"})
    app.files.files[old] = "old";
  const auto names = [&] {
    std::string text;
    for (const auto& [path, bytes] : app.files.files)
      text += path + " ";
    return text;
  };
  app.backUp();
  const std::string others = "/docs/a.vcf /docs/a.zip /docs/c.CSV /else/d.csv ";
  EXPECT_EQ(names(), "/docs/Varnok-2024-03-05-140709-2.csv " + others);
  app.clock.seconds += 60;
  app.backUp();
  EXPECT_EQ(names(), "/docs/Varnok-2024-03-05-140809-2.csv " + others);
  EXPECT_EQ(app.preferences.doubleForKey(key::EXPORT_LAST), 7);
  EXPECT_EQ(app.preferences.boolForKey(key::multipleVCF), true);
}

TEST_F(MainScreen, ACSVBackupThatFailsLeavesTheOlderOne) {
  app.preferences.setObject("csv", key::EXPORT_TYPE);
  app.files.files["/docs/a.csv"] = "old";
  app.files.failAppendsAfter(20);  // Within the header row.
  app.backUp();
  EXPECT_EQ(app.presenter.alerts.front().message, "BACKUP_FAILED CAUSE_NO_SPACE");
  EXPECT_EQ(app.files.files, (std::map<std::string, std::string>{{"/docs/a.csv", "old"}}));
}

TEST_F(MainScreen, SendsACSVBackupByMail) {
  app.preferences.setObject("csv", key::EXPORT_TYPE);
  app.backUp();
  app.screen().onClick_Send();
  ASSERT_EQ(app.mail.presented.size(), 1U);
  const MailMessage& message = app.mail.presented[0];
  EXPECT_EQ(message.subject, "EXPORT_MAIL_SUBJECT");
  EXPECT_EQ(message.body, "EXPORT_MAIL_BODY");
  ASSERT_EQ(message.attachments.size(), 1U);
  EXPECT_EQ(message.attachments[0].mimeType, "text/csv;charset=UTF-8");
  EXPECT_EQ(message.attachments[0].fileName, "Varnok-2024-03-05-140709-2.csv");
  EXPECT_EQ(message.attachments[0].bytes.substr(0, 18), "Prefix,First Name,");
  EXPECT_NE(message.attachments[0].bytes.find("Note\r,Ada,"), std::string::npos);
}

// One card per contact.
class ZipBackup : public MainScreen {
 protected:
  ZipBackup() { app.preferences.setBool(true, key::multipleVCF); }

  const std::string file_ = "/docs/Varnok-2024-03-05-140709-2.zip";
};

TEST_F(ZipBackup, HoldsTheCardsAndReplacesOnlyTheOlderOnesOfItsKind) {
  app.preferences.setDouble(7, key::EXPORT_LAST);
  for (const char* old : {"/docs/a.vcf", "/docs/a.csv", "/docs/a.zip", "/docs/sub/b.zip", "/docs/c.ZIP", "/else/d.zip"})
    app.files.files[old] = "old";
  app.backUp();
  const std::vector<ReadEntry> entries = readZip(app.files.files.at(file_));
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_EQ(entries[0].name, "Ada1.vcf");
  EXPECT_EQ(entries[1].name, "Bob2.vcf");
  EXPECT_TRUE(matchesGolden("vcard/two_people.vcf", entries[0].bytes + entries[1].bytes));
  app.files.files.erase(file_);
  EXPECT_EQ(app.files.files,
            (std::map<std::string, std::string>{
                {"/docs/a.vcf", "old"}, {"/docs/a.csv", "old"}, {"/docs/c.ZIP", "old"}, {"/else/d.zip", "old"}}));
  EXPECT_EQ(app.preferences.doubleForKey(key::EXPORT_LAST), 7);
  EXPECT_EQ(app.screen().lastOutcome()->contacts, 2);
}

TEST_F(ZipBackup, ThatFailsOrIsCancelledLeavesTheOlderOne) {
  const std::map<std::string, std::string> before{{"/docs/a.zip", "old"}};
  app.files.files = before;
  app.files.failAppendsAfter(20);
  app.backUp();
  EXPECT_EQ(app.presenter.alerts.front().message, "BACKUP_FAILED CAUSE_NO_SPACE");
  EXPECT_EQ(app.files.files, before);
  EXPECT_EQ(app.files.filesOnTheirWay, 0);
  app.screen().onClick_Backup();
  app.screen().onClick_Cancel();
  app.tasks.runUntilIdle();
  EXPECT_EQ(app.files.files, before);
}

TEST_F(ZipBackup, IsSentByMail) {
  app.backUp();
  app.screen().onClick_Send();
  ASSERT_EQ(app.mail.presented.size(), 1U);
  const MailMessage& message = app.mail.presented[0];
  EXPECT_EQ(message.subject, "EXPORT_MAIL_SUBJECT_ZIP");
  EXPECT_EQ(message.body, "EXPORT_MAIL_BODY_ZIP");
  ASSERT_EQ(message.attachments.size(), 1U);
  EXPECT_EQ(message.attachments[0].mimeType, "application/zip");
  EXPECT_EQ(message.attachments[0].fileName, "Varnok-2024-03-05-140709-2.zip");
  EXPECT_EQ(message.attachments[0].bytes, app.files.files.at(file_));
}

struct AccessCase {
  std::string name;
  AuthorizationStatus status;
  bool grants;
  bool ready;
  std::string privacy;
};

class Access : public testing::TestWithParam<AccessCase> {};

TEST_P(Access, DecidesWhatIsShown) {
  TestApplication app;
  app.contacts.access = GetParam().status;
  app.contacts.grantsAccess = GetParam().grants;
  app.launch();
  app.tasks.runUntilIdle();
  EXPECT_EQ(!app.screen().state().btn_Backup.hidden, GetParam().ready);
  EXPECT_EQ(app.screen().state().lbl_PrivacyMessage.text, GetParam().privacy);
  EXPECT_TRUE(app.presenter.overlays.empty());
}

INSTANTIATE_TEST_SUITE_P(
    , Access,
    testing::Values(AccessCase{"Authorized", AuthorizationStatus::authorized, true, true, ""},
                    AccessCase{"Granted", AuthorizationStatus::notDetermined, true, true, ""},
                    AccessCase{"Refused", AuthorizationStatus::notDetermined, false, false, "PRIVACY_ERROR"},
                    AccessCase{"Denied", AuthorizationStatus::denied, true, false, "PRIVACY_ERROR"},
                    AccessCase{"Restricted", AuthorizationStatus::restricted, true, false, "PRIVACY_ERROR"}),
    [](const auto& tested) { return tested.param.name; });

TEST_F(MainScreen, ReadsThePlatformVersion) {
  for (const auto& [text, number] : std::vector<std::pair<std::string, int>>{
           {"6.0", 60000}, {"12.1.4", 120104}, {"7", 70000}, {"", 0}, {"6.1.2.9", 60102}}) {
    app.device.platformVersion = text;
    EXPECT_EQ(app.screen().getSystemVersionAsAnInteger(), number) << text;
  }
}

}  // namespace
}  // namespace varnok
