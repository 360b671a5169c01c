#include "platform/linux/mail/mime_message.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <random>

#include "platform/linux/posix/temporary_directory.h"

namespace varnok {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

const MimeEnvelope kEnvelope{std::nullopt, Instant(std::chrono::seconds(1709647629)), std::nullopt, "boundary"};

std::string messageText(const MailMessage& message) {
  Status status;
  const auto text = mimeMessage(message, kEnvelope, status);
  EXPECT_TRUE(text.has_value()) << status.message();
  return text.value_or("");
}

// As Python's parser reads it.
std::string asRead(const std::string& text) {
  const TemporaryDirectory directory;
  setContent(directory / "message", text);
  const std::string command = "/usr/bin/python3 " VARNOK_MAIL_TEST_DIR "/read_message.py " + directory / "message";
  std::FILE* output = ::popen(command.c_str(), "r");
  std::string read;
  for (int c = std::fgetc(output); c != EOF; c = std::fgetc(output))
    read.push_back(static_cast<char>(c));
  EXPECT_EQ(::pclose(output), 0);
  return read;
}

std::size_t longestLine(const std::string& text) {
  std::size_t longest = 0;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    longest = std::max(longest, end - start);
    start = end + 1;
  }
  return longest;
}

TEST(MimeMessage, IsReadAsItWasMeant) {
  const MailMessage message{
      {"ada@example.org", "bob@example.org"},
      "Varnok backup",
      "Dear Ada,\r\nsee below. \n\n.\nFrom here = on, Grüße " + std::string(100, 'x'),
      /*bodyIsHTML=*/false,
      {{std::string("BEGIN:VCARD\r\n\xFF\0", 15), "text/x-vcard;charset=UTF-8", "Varnok-2024.vcf"},
       {"", "not a type", "empty\\\"quoted\".csv"}}};
  const std::string text = messageText(message);
  EXPECT_EQ(asRead(text),
            "to: ['ada@example.org', 'bob@example.org']\n"
            "from: None\n"
            "subject: 'Varnok backup'\n"
            "date: 2024-03-05T14:07:09+00:00\n"
            "headers: ['Content-Type', 'Date', 'MIME-Version', 'Subject', 'To']\n"
            "part: text/plain utf-8 None\n"
            "  text: 'Dear Ada,\\nsee below. \\n\\n.\\nFrom here = on, Grüße " +
                std::string(100, 'x') +
                "\\n'\n"
                "part: text/x-vcard utf-8 'Varnok-2024.vcf'\n"
                "  disposition: attachment name: 'Varnok-2024.vcf'\n"
                "  bytes: b'BEGIN:VCARD\\r\\n\\xff\\x00'\n"
                "part: application/octet-stream None 'empty_\"quoted\".csv'\n"
                "  disposition: attachment name: 'empty_\"quoted\".csv'\n"
                "  bytes: b''\n");
  EXPECT_LE(longestLine(text), 78U);
}

TEST(MimeMessage, NamesAndSubjectsBeyondASCIIAreKept) {
  std::string name = "Yedek-Ünlü ";
  for (int i = 0; i < 12; ++i)
    name += "コンタクト";
  name += ".vcf";
  const std::string subject = "Rehber yedeği " + name;
  const std::string text = messageText({{"ada@example.org"}, subject, "<b>é</b>", true, {{"x", "text/csv", name}}});
  const std::string read = asRead(text);
  EXPECT_THAT(read, HasSubstr("subject: '" + subject + "'\n"));
  EXPECT_THAT(read, HasSubstr("part: text/html utf-8 None\n  text: '<b>é</b>\\n'\n"));
  EXPECT_THAT(read, HasSubstr("part: text/csv None '" + name + "'\n"));
  EXPECT_THAT(read, Not(HasSubstr("defect")));
  EXPECT_LE(longestLine(text), 78U);
}

TEST(MimeMessage, NothingSmugglesInAHeader) {
  const std::string injected = std::string("a\r\nBcc: eve@example.org\n\nbody\0", 31);
  const std::string text =
      messageText({{"ada@example.org"}, injected, "b", false, {{"x", "text/csv\nX-Eve: 1", injected}}});
  const std::string read = asRead(text);
  EXPECT_THAT(read, HasSubstr("headers: ['Content-Type', 'Date', 'MIME-Version', 'Subject', 'To']"));
  EXPECT_THAT(text, Not(HasSubstr("\nBcc")));
  EXPECT_THAT(text, Not(HasSubstr("\nX-Eve")));
}

TEST(MimeMessage, ASubjectThatLooksEncodedIsTakenAsItStands) {
  const std::string subject = "=?UTF-8?B?QmFja3Vw?=";
  EXPECT_THAT(asRead(messageText({{"ada@example.org"}, subject, "b", false, {}})),
              HasSubstr("subject: '" + subject + "'"));
}

class RefusedAddresses : public ::testing::TestWithParam<std::string> {};

TEST_P(RefusedAddresses, GiveNoMessage) {
  Status status;
  EXPECT_EQ(mimeMessage({{"ada@example.org", GetParam()}, "s", "b", false, {}}, kEnvelope, status), std::nullopt);
  EXPECT_EQ(status.code(), Status::Code::invalidArgument);
  EXPECT_THAT(status.message(), Not(HasSubstr("\n")));
}

INSTANTIATE_TEST_SUITE_P(, RefusedAddresses,
                         ::testing::Values("", "bob@example.org\nBcc: eve@example.org",
                                           "bob@example.org, eve@example.org", "Bob <bob@example.org>", "-oQ/tmp",
                                           std::string("bob\0@example.org", 16)));

}  // namespace
}  // namespace varnok
