#include "platform/linux/desktop/xdg_document_hand_over.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/linux/posix/temporary_directory.h"
#include "platform/linux/posix/thread_task_runner.h"
#include "platform/testing/fake_services.h"
#include "platform/testing/recording_presenter.h"

namespace varnok {
namespace {

struct HandOver : testing::Test {
  TemporaryDirectory directory;
  ThreadTaskRunner tasks;
  RecordingPresenter presenter;
  FakeTextCatalog texts;
  FakeDeveloperLog log;

  // A program that opens files, as a shell script.
  std::string opener(const std::string& script) {
    const std::string path = directory.path() + "/opener";
    setContent(path, "#!/bin/sh\n" + script + "\n");
    ::chmod(path.c_str(), 0700);
    return path;
  }
  XdgDocumentHandOver handOver(const std::string& program) { return {program, tasks, presenter, texts, log}; }
};

TEST_F(HandOver, GivesTheFileToTheProgram) {
  const std::string opened = directory.path() + "/opened";
  const XdgDocumentHandOver through = handOver(opener("printf %s \"$1\" > '" + opened + "'; cat; echo noise >&2"));
  const Status status = through.handOver("/docs/Ada's backup.vcf");
  EXPECT_TRUE(status.ok()) << status.message();
  EXPECT_EQ(contentOf(opened), "/docs/Ada's backup.vcf");
}

TEST_F(HandOver, SaysWhatWentWrong) {
  EXPECT_EQ(handOver(opener("exit 3")).handOver("/a.vcf").message(), directory.path() + "/opener ended with status 3");
  EXPECT_EQ(handOver("no-such-program").handOver("/a.vcf").code(), Status::Code::notFound);
}

TEST_F(HandOver, TellsTheUserWhenNothingTookTheFile) {
  XdgDocumentHandOver through = handOver(opener("exit 3"));
  through.presentOptionsMenu("/a.vcf");
  tasks.runUntil([&] { return tasks.idle(); });
  ASSERT_EQ(presenter.alerts.size(), 1U);
  EXPECT_EQ(presenter.alerts.front().message, "HAND_OVER_FAILED");
  EXPECT_EQ(log.lines.size(), 1U);
}

}  // namespace
}  // namespace varnok
