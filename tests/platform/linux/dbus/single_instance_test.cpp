#include "platform/linux/dbus/single_instance.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>

#include "platform/linux/mail/child_process.h"
#include "platform/linux/posix/temporary_directory.h"
#include "platform/linux/posix/thread_task_runner.h"
#include "platform/testing/fake_services.h"

namespace varnok {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using Kind = ApplicationRequest::Kind;

// A program that runs while the test does.
class Child {
 public:
  explicit Child(std::vector<std::string> words) {
    std::vector<char*> arguments;
    for (std::string& word : words)
      arguments.push_back(word.data());
    arguments.push_back(nullptr);
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) std::abort();
    pid_ = ::fork();
    if (pid_ == 0) {
      ::dup2(ends[1], STDOUT_FILENO);
      ::execvp(arguments[0], arguments.data());
      ::_exit(127);
    }
    ::close(ends[1]);
    for (char c = 0; ::read(ends[0], &c, 1) == 1 && c != '\n';)
      firstLine_ += c;
    ::close(ends[0]);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() { end(); }

  void end() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
    pid_ = 0;
  }
  void stop() const { ::kill(pid_, SIGSTOP); }

  const std::string& firstLine() const { return firstLine_; }  // Of what it says.

 private:
  ::pid_t pid_ = 0;
  std::string firstLine_;
};

class Instances : public testing::Test {
 protected:
  Instances() {
    ::unsetenv("DESKTOP_STARTUP_ID");
    ::setenv("XDG_ACTIVATION_TOKEN", "leave", /*overwrite=*/1);
    useBus(bus.firstLine());
  }

  static std::string configuration(const std::string& folder) {
    setContent(folder + "/bus.conf",
               "<busconfig><type>session</type><listen>unix:dir=" + folder +
                   "</listen><policy context=\"default\"><allow send_destination=\"*\"/><allow eavesdrop=\"true\"/>"
                   "<allow own=\"*\"/></policy></busconfig>");
    return folder + "/bus.conf";
  }

  static void useBus(const std::string& address) {
    ::setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), /*overwrite=*/1);
  }

  // The same bus by another name: this process has a connection for each.
  void useSecondConnection() { useBus(bus.firstLine().substr(0, bus.firstLine().find(','))); }

  std::unique_ptr<SingleInstance> instance() {
    return std::make_unique<SingleInstance>(tasks, log, [this](const ApplicationRequest& request) {
      EXPECT_TRUE(tasks.isMainThread());
      received.push_back(request);
    });
  }

  // As another program asks.
  static Status ask(const std::string& method, const std::string& arguments) {
    return runProgram({"/bin/sh", "-c",
                       "/usr/bin/gdbus call --session --timeout 5 --dest io.varnok.Varnok --object-path "
                       "/io/varnok/Varnok --method org.freedesktop.Application." +
                           method + " " + arguments + " >&2"},
                      "", 20s);
  }

  void receive(std::size_t count) {
    ASSERT_TRUE(tasks.runUntil([&] { return received.size() >= count; }));
  }

  TemporaryDirectory directory;
  Child bus{{"dbus-daemon", "--nofork", "--print-address", "--config-file=" + configuration(directory.path())}};
  ThreadTaskRunner tasks;
  FakeDeveloperLog log;
  std::vector<ApplicationRequest> received;
};

TEST_F(Instances, AreOneAndTheSecondHandsItsRequestOver) {
  const auto first = instance();
  ASSERT_EQ(first->start({}), SingleInstance::Role::first);
  useSecondConnection();
  for (const ApplicationRequest& request : {ApplicationRequest{Kind::activate, {}, "", "t1"},
                                            ApplicationRequest{Kind::open, {"db-x://1/token?a=%20", "b"}, "", "t2"},
                                            ApplicationRequest{Kind::action, {}, kReminderAction, "t3"}}) {
    received.clear();
    EXPECT_EQ(instance()->start(request), SingleInstance::Role::second);
    receive(1);
    EXPECT_THAT(received, ElementsAre(request));
  }
  received.clear();
  EXPECT_EQ(instance()->start({}), SingleInstance::Role::second);
  receive(1);
  EXPECT_EQ(received[0].activationToken, "leave");  // Of the desktop that started it.
}

TEST_F(Instances, TakeRequestsOfOtherPrograms) {
  const auto first = instance();
  ASSERT_EQ(first->start({}), SingleInstance::Role::first);
  EXPECT_TRUE(ask("Activate", "\"{'desktop-startup-id': <'old'>, 'x': <1>}\"").ok());
  EXPECT_TRUE(ask("Open", "\"['file:///a', 'b']\" '{}'").ok());
  EXPECT_TRUE(ask("ActivateAction", "unknown '[<1>]' \"{'activation-token': <7>}\"").ok());
  receive(3);
  EXPECT_THAT(received, ElementsAre(ApplicationRequest{Kind::activate, {}, "", "old"},
                                    ApplicationRequest{Kind::open, {"file:///a", "b"}, "", ""},
                                    ApplicationRequest{Kind::action, {}, "unknown", ""}));
  EXPECT_FALSE(ask("Open", "'a'").ok());
  EXPECT_FALSE(ask("Quit", "").ok());
}

TEST_F(Instances, GiveTheirNameBack) {
  auto first = instance();
  ASSERT_EQ(first->start({}), SingleInstance::Role::first);
  ASSERT_TRUE(ask("Activate", "'{}'").ok());
  first.reset();
  EXPECT_FALSE(ask("Activate", "'{}'").ok());
  ASSERT_TRUE(tasks.runUntil([this] { return tasks.idle(); }));
  EXPECT_TRUE(received.empty());  // What came before the end and was not looked at.
  useSecondConnection();
  EXPECT_EQ(instance()->start({}), SingleInstance::Role::first);
}

TEST_F(Instances, WithoutABusRunOnTheirOwn) {
  ::unsetenv("DBUS_SESSION_BUS_ADDRESS");
  ::unsetenv("XDG_RUNTIME_DIR");
  EXPECT_EQ(instance()->start({}), SingleInstance::Role::alone);
  for (const std::string& address : {std::string("unix:path=/nowhere"), std::string("nonsense")}) {
    useBus(address);
    EXPECT_EQ(instance()->start({}), SingleInstance::Role::alone) << address;
  }
  EXPECT_EQ(log.lines.size(), 3U);
}

TEST_F(Instances, DoNotWaitForEverForABusOrAnInstance) {
  const auto begin = std::chrono::steady_clock::now();
  {
    const Child other({"/usr/bin/python3", "-c",
                       "import dbus, time\n"
                       "dbus.SessionBus().request_name('io.varnok.Varnok')\n"
                       "print('here', flush=True)\n"
                       "time.sleep(100)"});
    ASSERT_EQ(other.firstLine(), "here");
    EXPECT_EQ(instance()->start({}), SingleInstance::Role::alone);
  }
  useSecondConnection();
  bus.stop();
  EXPECT_EQ(instance()->start({}), SingleInstance::Role::alone);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 20s);
}

TEST_F(Instances, OutliveTheirBus) {
  auto first = instance();
  ASSERT_EQ(first->start({}), SingleInstance::Role::first);
  bus.end();
  first.reset();
  EXPECT_TRUE(received.empty());
}

}  // namespace
}  // namespace varnok
