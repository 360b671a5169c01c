#include "backup/list/restore_backup_view_controller.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/golden.h"
#include "support/test_application.h"

namespace varnok {
namespace {

using testing::ElementsAre;

class BackupList : public testing::Test {
 protected:
  BackupList() {
    app.dropboxClient.authorized = true;
    app.files.files = {{"/docs/a.vcf", std::string(1536, 'x')}, {"/docs/b.VCF", ""}, {"/docs/old/c.vcf", "c"}};
    app.files.files.merge(std::map<std::string, std::string>{
        {"/docs/d.csv", ""}, {"/docs/e.zip", ""}, {"/docs/vcf", ""}, {"/docs/f.vcf.part", ""}, {"/else/g.vcf", ""}});
  }

  RestoreBackupViewController& screen() {
    if (app.presenter.screens.empty()) {
      app.presenter.present(std::make_shared<RestoreBackupViewController>(backupListServices(app.services())));
    }
    return app.presenter.front<RestoreBackupViewController>();
  }

  std::string rows() {
    std::string text;
    const std::vector<TableSection> table = tableOf(screen());
    for (const TableRow& row : table.front().rows) {
      text += row.text;
      if (row.progress) text += " " + std::to_string(std::lround(*row.progress * 100)) + "%";
      text += row.detail ? " " : " (no detail) ";
    }
    return text;
  }

  // Taps a row and a button of its sheet.
  void choose(int row, int index) {
    ASSERT_TRUE(screen().selectRow({0, row}));
    app.presenter.choose(index);
  }

  TestApplication app;
};

TEST_F(BackupList, ShowsVCardsOfEveryFolderInReverseOrder) {
  EXPECT_TRUE(matchesGolden("screens/backup_list.txt", *screen().tableHeader() + "\n" + describe(tableOf(screen()))));
  app.files.files["/docs/z.vcf"] = "";  // Not seen before the list is opened again.
  EXPECT_EQ(screen().numberOfRowsInSection(0), 3);
}

TEST_F(BackupList, OfAnEmptyFolderIsEmpty) {
  app.files.files.clear();
  EXPECT_EQ(rows(), "");
  EXPECT_FALSE(screen().selectRow({0, 0}));
  EXPECT_FALSE(screen().deleteRow({0, 0}));
}

TEST_F(BackupList, OffersWhatCanBeDoneWithARow) {
  ASSERT_TRUE(screen().selectRow({0, 2}));
  const ActionSheet& sheet = app.presenter.sheets.front();
  EXPECT_EQ(sheet.title, "a.vcf");
  EXPECT_THAT(sheet.buttons, ElementsAre("Email", "Dropbox", "RESTORE", "Cancel"));
  EXPECT_EQ(sheet.cancelButtonIndex, 3);
  app.presenter.choose(3);
  EXPECT_TRUE(app.mail.presented.empty());
  EXPECT_TRUE(app.dropboxClient.uploads.empty());
  app.tasks.runUntilIdle();
  EXPECT_TRUE(app.handOver.paths.empty());
}

TEST_F(BackupList, MailsARow) {
  choose(0, 0);
  ASSERT_EQ(app.mail.presented.size(), 1U);
  const MailMessage& message = app.mail.presented[0];
  EXPECT_EQ(message.subject, "Varnok");
  EXPECT_EQ(message.body, "BACKUP_MAIL_BODY");
  EXPECT_FALSE(message.bodyIsHTML);
  ASSERT_EQ(message.attachments.size(), 1U);
  EXPECT_EQ(message.attachments[0].bytes, "c");
  EXPECT_EQ(message.attachments[0].fileName, "c.vcf");
  EXPECT_EQ(message.attachments[0].mimeType, "text/x-vcard;charset=UTF-8");
  EXPECT_THAT(app.log.lines, ElementsAre("path: /docs/old/c.vcf"));
}

TEST_F(BackupList, LeavesTheComposerUpUntilTheAnswerWhenTheMailWasSent) {
  choose(0, 0);
  app.mail.finish(MailComposeResult::sent);
  EXPECT_TRUE(app.mail.inFront);
  EXPECT_EQ(app.presenter.alerts.front().title, "EXPORT_INFO");
  EXPECT_EQ(app.presenter.alerts.front().message, std::nullopt);
  EXPECT_EQ(app.presenter.alerts.front().tag, 1);
  app.presenter.answer(0);
  EXPECT_FALSE(app.mail.inFront);
  for (const auto result : {MailComposeResult::cancelled, MailComposeResult::saved, MailComposeResult::failed}) {
    choose(0, 0);
    app.mail.finish(result);
    EXPECT_FALSE(app.mail.inFront);
    EXPECT_TRUE(app.presenter.alerts.empty());
  }
}

TEST_F(BackupList, SaysWhyThereIsNoMail) {
  app.texts.texts["BACKUP_UNREADABLE"] = "BACKUP_UNREADABLE %@";
  screen();
  app.files.files.erase("/docs/old/c.vcf");
  choose(0, 0);
  EXPECT_EQ(app.presenter.alerts.back().message, "BACKUP_UNREADABLE CAUSE_NOT_FOUND");
  app.mail.canSend = false;
  choose(0, 0);
  EXPECT_EQ(app.presenter.alerts.back().message, "MAILCOMPOSER_CANT_SEND");
  EXPECT_TRUE(app.mail.presented.empty());
}

TEST_F(BackupList, HandsAFileToAnotherApplicationOnTheMainQueue) {
  choose(1, 2);
  EXPECT_TRUE(app.handOver.paths.empty());
  app.tasks.runUntilIdle();
  EXPECT_THAT(app.handOver.paths, ElementsAre("/docs/b.VCF"));
}

TEST_F(BackupList, UploadsAFileBehindABar) {
  choose(0, 1);
  ASSERT_EQ(app.dropboxClient.uploads.size(), 1U);
  DropboxUpload& upload = app.dropboxClient.uploads[0];
  EXPECT_EQ(upload.file, "/docs/old/c.vcf");
  EXPECT_EQ(upload.path, "/c.vcf");
  EXPECT_EQ(rows(), "c.vcf b.VCF a.vcf ");
  upload.progress(1, 4);
  EXPECT_EQ(rows(), "c.vcf 25% (no detail) b.VCF a.vcf ");
  EXPECT_FALSE(screen().selectRow({0, 0}));  // Does not react to touches.
  upload.response(DropboxMetadata{}, {});
  EXPECT_EQ(rows(), "c.vcf b.VCF a.vcf ");
  EXPECT_TRUE(screen().selectRow({0, 0}));
}

TEST_F(BackupList, QuirkAFailedUploadLeavesItsRowAtTheLastProgress) {
  choose(0, 1);
  app.dropboxClient.uploads[0].progress(1, 4);
  app.dropboxClient.uploads[0].response(std::nullopt, {Status::Code::unavailable, "gone"});
  EXPECT_EQ(rows(), "c.vcf 25% (no detail) b.VCF a.vcf ");
  EXPECT_TRUE(app.presenter.alerts.empty());
}

TEST_F(BackupList, QuirkProgressKeepsToTheRowWhereTheUploadBegan) {
  choose(1, 1);
  app.dropboxClient.uploads[0].progress(1, 4);
  ASSERT_TRUE(screen().deleteRow({0, 0}));
  EXPECT_EQ(rows(), "b.VCF 25% (no detail) a.vcf ");
  app.dropboxClient.uploads[0].progress(2, 4);
  EXPECT_EQ(rows(), "b.VCF 25% (no detail) a.vcf 50% (no detail) ");
  ASSERT_TRUE(screen().deleteRow({0, 0}));
  app.dropboxClient.uploads[0].progress(3, 4);  // There is no such row any more.
  EXPECT_EQ(rows(), "a.vcf 50% (no detail) ");
}

TEST_F(BackupList, ASecondUploadOfAFileKeepsTheFirstRow) {
  choose(1, 1);
  screen().deleteRow({0, 0});
  choose(0, 1);
  app.dropboxClient.uploads[1].progress(1, 4);
  EXPECT_EQ(rows(), "b.VCF a.vcf 25% (no detail) ");
}

TEST_F(BackupList, QuirkAnUploadUnderWayBeginsAtZeroWhenTheListIsOpened) {
  app.dropbox.uploadFile("/docs/b.VCF", "b.VCF");
  app.dropbox.uploadFile("/docs/d.csv", "d.csv");
  app.dropboxClient.uploads[0].progress(3, 4);
  EXPECT_EQ(rows(), "c.vcf b.VCF 0% (no detail) a.vcf ");
  app.dropboxClient.uploads[1].progress(1, 4);  // Of a file that the list does not show.
  app.dropboxClient.uploads[0].progress(4, 4);
  EXPECT_EQ(rows(), "c.vcf b.VCF 100% (no detail) a.vcf ");
}

TEST_F(BackupList, LinksTheAccountFirst) {
  app.dropboxClient.authorized = false;
  choose(0, 1);
  EXPECT_EQ(app.presenter.urls.size(), 1U);
  EXPECT_TRUE(app.dropboxClient.uploads.empty());
}

TEST_F(BackupList, DeletesAFileButNotTheLastBackup) {
  app.preferences.setObject("c.vcf", key::FILE_NAME);
  EXPECT_TRUE(screen().deleteRow({0, 0}));
  EXPECT_EQ(app.presenter.alerts.front().title, "");
  EXPECT_EQ(app.presenter.alerts.front().message, "LAST_BACKUP_ERROR_MESSAGE");
  EXPECT_TRUE(screen().deleteRow({0, 2}));
  EXPECT_EQ(rows(), "c.vcf b.VCF ");
  EXPECT_FALSE(app.files.files.contains("/docs/a.vcf"));
  app.files.files.erase("/docs/b.VCF");  // Somebody was faster.
  EXPECT_TRUE(screen().deleteRow({0, 1}));
  EXPECT_EQ(rows(), "c.vcf ");
  EXPECT_TRUE(app.files.files.contains("/docs/old/c.vcf"));
}

TEST_F(BackupList, TogglesEditing) {
  EXPECT_EQ(screen().controls()[1].text, "EDIT_LIST");
  EXPECT_TRUE(screen().tapControl("edit", 0));
  EXPECT_TRUE(screen().isEditing());
  EXPECT_EQ(screen().controls()[1].text, "DONE");
  screen().edit();
  EXPECT_FALSE(screen().isEditing());
}

TEST_F(BackupList, NothingReachesAScreenThatHasClosed) {
  choose(0, 1);
  choose(1, 0);
  screen().selectRow({0, 2});
  EXPECT_TRUE(screen().tapControl("close", 0));
  app.presenter.settle();
  app.dropboxClient.uploads[0].progress(1, 4);
  app.dropboxClient.uploads[0].response(DropboxMetadata{}, {});
  app.mail.finish(MailComposeResult::sent);
  app.presenter.choose(1);
  EXPECT_EQ(app.dropboxClient.uploads.size(), 1U);
  EXPECT_TRUE(app.presenter.alerts.empty());
}

}  // namespace
}  // namespace varnok
