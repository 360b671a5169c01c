#include "platform/linux/mail/sendmail_mail_composer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "platform/linux/posix/temporary_directory.h"
#include "platform/linux/posix/thread_task_runner.h"
#include "platform/testing/fake_clock.h"

namespace varnok {
namespace {

using ::testing::HasSubstr;

class RecordingLog : public DeveloperLog {
 public:
  std::string text;
  void write(std::string_view line) override { text.append(line).append("\n"); }
};

class SendmailMailComposerTest : public ::testing::Test {
 protected:
  // A program that stands in for sendmail.
  std::string script(const std::string& body) {
    const std::string path = directory_ / "sendmail";
    setContent(path, "#!/bin/sh\n" + body);
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path;
  }

  MailComposeResult presented(const SendmailMailComposer::Settings& settings, MailMessage message) {
    SendmailMailComposer composer(settings, tasks_, clock_, log_);
    std::vector<MailComposeResult> results;
    composer.present(std::move(message), [&](MailComposeResult result) {
      EXPECT_TRUE(tasks_.isMainThread());
      results.push_back(result);
    });
    EXPECT_TRUE(results.empty());
    EXPECT_TRUE(tasks_.runUntil([&] { return tasks_.idle(); }));
    EXPECT_EQ(results.size(), 1U);
    return results.at(0);
  }

  const TemporaryDirectory directory_;
  ThreadTaskRunner tasks_;
  FakeClock clock_;
  RecordingLog log_;
  const MailMessage message_{{"ada@example.org"}, "Backup", "Hello", false, {}};
};

std::string decodedBase64(std::string_view text) {
  static constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string bytes;
  std::uint32_t bits = 0;
  int count = 0;
  for (const char c : text) {
    const std::size_t digit = kDigits.find(c);
    if (digit == std::string_view::npos) continue;
    bits = (bits << 6 | static_cast<std::uint32_t>(digit)) & 0xFFFFFF;
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes.push_back(static_cast<char>(bits >> count & 0xFF));
  }
  return bytes;
}

TEST_F(SendmailMailComposerTest, HandsTheMessageOverByteForByte) {
  const std::string stored = directory_ / "stored";
  const std::string program = script("echo \"$@\" > '" + stored + ".arguments'\nls /proc/self/fd | wc -l > '" + stored +
                                     ".files'\ncat > '" + stored + "'\n");
  MailMessage message = message_;
  std::mt19937 random(7);
  std::string attachment(5'000'000, ' ');
  std::generate(attachment.begin(), attachment.end(), [&] { return static_cast<char>(random()); });
  message.attachments.push_back({attachment, "application/zip", "backup.zip"});
  EXPECT_EQ(presented({.program = program, .searchPath = ""}, message), MailComposeResult::sent) << log_.text;
  EXPECT_EQ(contentOf(stored + ".arguments"), "-i -t\n");
  EXPECT_EQ(contentOf(stored + ".files"), "4\n");  // The standard three and the listing's own.
  const std::string text = contentOf(stored);
  EXPECT_THAT(text.substr(0, 500),
              HasSubstr("To: ada@example.org\nSubject: Backup\nDate: Tue, 5 Mar 2024 14:07:09 +0000\n"));
  const std::size_t start = text.find("\n\n", text.find("filename=")) + 2;
  EXPECT_TRUE(decodedBase64(text.substr(start, text.find("\n\n", start) - start)) == attachment);
}

struct Failure {
  const char* name;
  const char* script;
  const char* logged;
};

void PrintTo(const Failure& row, std::ostream* out) {
  *out << row.name;
}

class SendmailFailures : public SendmailMailComposerTest, public ::testing::WithParamInterface<Failure> {};

TEST_P(SendmailFailures, AreReportedAndLogged) {
  EXPECT_EQ(presented({.program = script(GetParam().script), .searchPath = "", .timeLimit = std::chrono::seconds(2)},
                      message_),
            MailComposeResult::failed);
  EXPECT_THAT(log_.text, HasSubstr(GetParam().logged));
}

struct ByName {
  std::string operator()(const ::testing::TestParamInfo<Failure>& row) const { return row.param.name; }
};

INSTANTIATE_TEST_SUITE_P(, SendmailFailures,
                         ::testing::Values(Failure{"Status", "cat > /dev/null; echo 'queue is down' >&2; exit 75",
                                                   "ended with status 75: queue is down"},
                                           Failure{"Signal", "kill -9 $$", "was ended by signal 9"},
                                           Failure{"Hangs", "sleep 600", "did not end in time"},
                                           Failure{"MuchErrorText", "yes >&2 | head -c 10000000 >&2; exit 1",
                                                   "status 1"}),
                         ByName());

TEST_F(SendmailMailComposerTest, AProgramNeedNotReadTheMessage) {
  MailMessage message = message_;
  message.attachments.push_back({std::string(1'000'000, 'x'), "text/csv", "backup.csv"});
  EXPECT_EQ(presented({.program = script("exec <&-\nexit 0\n"), .searchPath = ""}, message), MailComposeResult::sent);
}

TEST_F(SendmailMailComposerTest, LooksForTheProgramInTheSearchPath) {
  const auto canSend = [&](const SendmailMailComposer::Settings& settings) {
    return SendmailMailComposer(settings, tasks_, clock_, log_).canSendMail();
  };
  const std::string path = "/nowhere::" + directory_.path();
  EXPECT_FALSE(canSend({.program = "", .searchPath = path}));
  setContent(directory_ / "sendmail", "not executable");
  EXPECT_FALSE(canSend({.program = "", .searchPath = path}));
  script("exit 0\n");
  EXPECT_TRUE(canSend({.program = "", .searchPath = path}));
  EXPECT_FALSE(canSend({.program = directory_ / "other", .searchPath = path}));
  EXPECT_EQ(presented({.program = directory_ / "other", .searchPath = path}, message_), MailComposeResult::failed);
}

TEST_F(SendmailMailComposerTest, WithoutARecipientNothingIsSent) {
  MailMessage message = message_;
  message.to.clear();
  EXPECT_EQ(presented({.program = script("exit 0\n"), .searchPath = ""}, message), MailComposeResult::cancelled);
  EXPECT_THAT(log_.text, HasSubstr("Backup"));
  message.to = {"eve@example.org\nBcc: all"};
  EXPECT_EQ(presented({.program = script("exit 0\n"), .searchPath = ""}, message), MailComposeResult::failed);
}

}  // namespace
}  // namespace varnok
