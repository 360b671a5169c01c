#include "platform/linux/dbus/desktop_mail_composer.h"

#include <gmock/gmock.h>

#include "platform/linux/dbus/stand_in.h"
#include "platform/linux/posix/posix_clock.h"

namespace varnok {
namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

class DesktopMail : public DesktopTest {
 protected:
  ~DesktopMail() override {
    if (composer_) composer_->stop();
    running_.reset();
    fs::remove_all(attachments_);
    for (const char* name : {"/message", "/arguments"})
      fs::remove(home() + name);
  }

  DesktopMailComposer& composer(std::chrono::milliseconds limit = 3s, bool desktop = true) {
    composer_.emplace(DesktopMailComposer::Settings{desktop, attachments_, {limit}}, sendmail_, tasks_, log_);
    return *composer_;
  }

  void present() {
    MailMessage message{{"a@example.org", "b@example.org"}, "Backup", "<p>One &amp;<br>two</p>", true, {}};
    message.attachments.push_back({"BEGIN:VCARD", "text/x-vcard;charset=UTF-8", "../my backup.vcf"});
    const auto before = std::chrono::steady_clock::now();
    composer_->present(std::move(message), [this](MailComposeResult result) { results_.push_back(result); });
    EXPECT_LT(std::chrono::steady_clock::now() - before, 250ms) << "the main thread waited";
  }

  MailComposeResult result() {
    EXPECT_TRUE(await([this] { return !results_.empty(); })) << log_.text();
    return results_.empty() ? MailComposeResult::saved : results_.front();
  }

  // A sendmail program that stores the message.
  std::string sendmail() const {
    program("sendmail", "cat > " + home() + "/message");
    return home() + "/message";
  }

  std::size_t keptCopies() const {
    return fs::exists(attachments_) ? static_cast<std::size_t>(std::distance(fs::directory_iterator(attachments_), {}))
                                    : 0;
  }

  const std::string attachments_ = home() + "/mail";
  PosixClock clock_;
  SendmailMailComposer sendmail_{{"", programs_}, tasks_, clock_, log_};
  std::optional<DesktopMailComposer> composer_;
  std::vector<MailComposeResult> results_;
};

TEST_F(DesktopMail, IsComposedThroughThePortal) {
  sendmail();
  StandIn portal("portal");
  composer();
  const std::pair<const char*, MailComposeResult> rows[] = {
      {"0", MailComposeResult::sent}, {"1", MailComposeResult::cancelled}, {"2", MailComposeResult::failed}};
  for (const auto& [answer, expected] : rows) {
    SCOPED_TRACE(answer);
    results_.clear();
    portal.tell(std::string("answer ") + answer);
    present();
    EXPECT_EQ(result(), expected);
    const std::string asked = portal.line();
    EXPECT_THAT(asked, HasSubstr("compose\ta@example.org,b@example.org\tBackup\tOne &"));
    EXPECT_EQ(portal.line(), "two");
    EXPECT_THAT(portal.line(), HasSubstr("/my backup.vcf=BEGIN:VCARD"));
    EXPECT_EQ(keptCopies(), 1U) << "only the copy that was sent stays, for the mail program to read";
  }
  EXPECT_FALSE(fs::exists(home() + "/message"));
}

TEST_F(DesktopMail, FailsWhenThePortalDiesMeanwhile) {
  StandIn portal("portal");
  portal.tell("answer never");
  composer();
  present();
  EXPECT_THAT(portal.line(), HasSubstr("compose"));
  portal.line();
  portal.line();
  EXPECT_EQ(portal.tell("die"), "died");
  EXPECT_EQ(result(), MailComposeResult::failed);
  EXPECT_EQ(keptCopies(), 0U);
}

TEST_F(DesktopMail, IsTakenAwayByDismiss) {
  StandIn portal("portal");
  portal.tell("answer never");
  composer();
  present();
  EXPECT_THAT(portal.line(), HasSubstr("compose"));
  portal.line();
  portal.line();
  composer_->dismiss();
  EXPECT_EQ(result(), MailComposeResult::cancelled);
  EXPECT_EQ(portal.line(), "closed");
  composer_->dismiss();
  EXPECT_EQ(results_.size(), 1U);
}

TEST_F(DesktopMail, GoesToTheRegisteredMailProgramWithoutAPortal) {
  const std::string arguments = home() + "/arguments";
  program("thunderbird",
          "for a; do printf '%s\\n' \"$a\"; done > " + arguments + ".new; mv " + arguments + ".new " + arguments);
  application("thunderbird", "thunderbird %u", "x-scheme-handler/mailto");
  composer();
  present();
  EXPECT_EQ(result(), MailComposeResult::sent) << log_.text();
  ASSERT_TRUE(await([&] { return fs::exists(arguments); }));
  const std::string text = contentOf(arguments);
  EXPECT_THAT(text, HasSubstr("a@example.org"));
  EXPECT_THAT(text, HasSubstr("Backup"));
  EXPECT_THAT(text, HasSubstr("attachment="));
  EXPECT_EQ(keptCopies(), 1U);
  EXPECT_TRUE(log_.has("Mail: not through the portal: ")) << log_.text();
}

TEST_F(DesktopMail, GoesThroughSendmailWithoutAMailProgram) {
  const std::string message = sendmail();
  composer();
  present();
  EXPECT_EQ(result(), MailComposeResult::sent);
  EXPECT_THAT(contentOf(message), HasSubstr("To: a@example.org"));
  EXPECT_TRUE(log_.has("Mail: no mail program is registered")) << log_.text();
  EXPECT_EQ(keptCopies(), 0U);
}

TEST_F(DesktopMail, IsNotLostToAPortalThatNeverAnswers) {
  const std::string message = sendmail();
  const StandIn portal("silent", "org.freedesktop.portal.Desktop");
  composer(300ms);
  present();
  EXPECT_EQ(result(), MailComposeResult::sent);
  EXPECT_THAT(contentOf(message), HasSubstr("Subject: Backup"));
  EXPECT_TRUE(log_.has("Timeout")) << log_.text();
}

TEST_F(DesktopMail, FailsWhereNothingTakesIt) {
  composer();
  present();
  EXPECT_EQ(result(), MailComposeResult::failed);
}

TEST_F(DesktopMail, GoesThroughSendmailAloneWhereNobodySitsAtADesktop) {
  sendmail();
  StandIn portal("portal");
  EXPECT_TRUE(composer(3s, /*desktop=*/false).canSendMail());
  present();
  EXPECT_EQ(result(), MailComposeResult::sent);
  EXPECT_EQ(portal.line(100ms), "(nothing)");
}

TEST_F(DesktopMail, LeavesNoCopiesForLongerThanADay) {
  for (const char* name : {"old", "new"})
    fs::create_directories(attachments_ + "/" + name);
  fs::last_write_time(attachments_ + "/old", fs::file_time_type::clock::now() - 25h);
  removeOldAttachments(attachments_);
  EXPECT_FALSE(fs::exists(attachments_ + "/old"));
  EXPECT_TRUE(fs::exists(attachments_ + "/new"));
}

}  // namespace
}  // namespace varnok
