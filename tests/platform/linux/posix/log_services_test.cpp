#include "platform/linux/posix/log_services.h"

#include <gtest/gtest.h>

#include "platform/linux/posix/developer_log_file.h"
#include "platform/linux/posix/temporary_directory.h"

namespace varnok {
namespace {

class RecordingLog : public DeveloperLog {
 public:
  std::string text;
  void write(std::string_view line) override { text.append(line).append("\n"); }
};

TEST(LogServices, WriteWhatTheyWereAsked) {
  RecordingLog log;
  LogFeedbackService feedback(log);
  feedback.initialize({.site = "feedback.example", .forumIdentifier = 7, .showsForum = true, .customFields = {}});
  feedback.setCustomFields({{"Device Data", "VNK V1.0"}});
  LogIdleTimer timer(log);
  timer.setIdleTimerDisabled(false);
  timer.setIdleTimerDisabled(true);
  timer.setIdleTimerDisabled(true);
  timer.setIdleTimerDisabled(false);
  EXPECT_EQ(log.text,
            "Feedback site feedback.example, forum 7\n"
            "Feedback contact us off, forum on, post an idea off\n"
            "Device Data: VNK V1.0\n"
            "Idle timer off\n"
            "Idle timer on\n");
}

TEST(FileDeveloperLog, MakesTheFileAtTheFirstLine) {
  const TemporaryDirectory directory;
  FileDeveloperLog log(directory / "state/log");
  EXPECT_FALSE(std::filesystem::exists(directory / "state"));
  log.write("one {} %s\ntwo");
  const std::string content = contentOf(directory / "state/log/varnok.log");
  EXPECT_NE(content.find(" one {} %s two\n"), std::string::npos) << content;
}

TEST(FileDeveloperLog, KeepsThreeFiles) {
  const TemporaryDirectory directory;
  FileDeveloperLog log(directory.path());
  for (int i = 0; i < 50; ++i)
    log.write(std::string(100'000, 'x'));
  std::uintmax_t size = 0;
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(directory.path())) {
    size += entry.file_size();
    ++files;
  }
  EXPECT_EQ(files, 3);
  EXPECT_LE(size, 3U << 20);
}

TEST(FileDeveloperLog, DropsLinesWhenThereIsNoPlaceForThem) {
  FileDeveloperLog log("/dev/null/log");
  log.write("one");
  log.write("two");
}

}  // namespace
}  // namespace varnok
