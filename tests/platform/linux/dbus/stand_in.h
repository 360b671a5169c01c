// What the tests of the desktop's services share. They run under private_bus.py.

#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/developer_log.h"
#include "platform/linux/posix/posix_io.h"
#include "platform/linux/posix/thread_task_runner.h"

namespace varnok {

using namespace std::chrono_literals;

// Only what hangs reaches it.
constexpr std::chrono::seconds kPatience{20};

// A program whose lines are read and that is sent lines.
class ChildProgram {
 public:
  explicit ChildProgram(std::vector<std::string> arguments) {
    int in[2];
    int out[2];
    if (::pipe2(in, O_CLOEXEC) != 0 || ::pipe2(out, O_CLOEXEC) != 0) std::abort();
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
      pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    child_ = ::fork();
    if (child_ == 0) {
      ::dup2(in[0], 0);
      ::dup2(out[1], 1);
      ::execv(pointers.front(), pointers.data());
      ::_exit(127);
    }
    ::close(in[0]);
    ::close(out[1]);
    input_.reset(in[1]);
    output_.reset(out[0]);
  }
  ChildProgram(const ChildProgram&) = delete;
  ChildProgram& operator=(const ChildProgram&) = delete;
  ~ChildProgram() {
    input_.reset();
    ::waitpid(child_, nullptr, 0);
  }

  pid_t id() const { return child_; }

  // The next line; "(nothing)" when none comes in time.
  std::string line(std::chrono::milliseconds limit = kPatience) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (text_.find('\n') == std::string::npos) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
      pollfd waited{output_.get(), POLLIN, 0};
      char piece[1024];
      if (left.count() <= 0 || ::poll(&waited, 1, static_cast<int>(left.count())) <= 0) return "(nothing)";
      const ssize_t got = ::read(output_.get(), piece, sizeof piece);
      if (got <= 0) return "(nothing)";
      text_.append(piece, static_cast<std::size_t>(got));
    }
    const std::size_t end = text_.find('\n');
    std::string line = text_.substr(0, end);
    text_.erase(0, end + 1);
    return line;
  }

  // Its answer to `command`.
  std::string tell(const std::string& command) {
    EXPECT_EQ(writeAll(input_.get(), command + "\n"), 0);
    return line();
  }

 private:
  pid_t child_ = 0;
  FileDescriptor input_;
  FileDescriptor output_;
  std::string text_;
};

// A service of the desktop: see stand_in.py.
class StandIn : public ChildProgram {
 public:
  explicit StandIn(const std::string& kind, const std::string& name = "")
      : ChildProgram({"/usr/bin/python3", "-B", VARNOK_DBUS_TEST_DIR "/stand_in.py", kind, name}) {
    EXPECT_EQ(line(), "ready") << kind;
  }
};

class SharedLog : public DeveloperLog {
 public:
  void write(std::string_view line) override {
    const std::lock_guard lock(mutex_);
    text_.append(line).append("\n");
  }
  std::string text() {
    const std::lock_guard lock(mutex_);
    return text_;
  }
  bool has(std::string_view words) { return text().find(words) != std::string::npos; }

 private:
  std::mutex mutex_;
  std::string text_;
};

inline std::string contentOf(const std::string& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

// A folder of programs that go before all others, and the desktop's lists of
// applications; both are empty again for the next test.
class DesktopTest : public testing::Test {
 protected:
  DesktopTest() {
    std::filesystem::create_directories(programs_);
    std::filesystem::create_directories(data_ + "/applications");
    ::setenv("PATH", (programs_ + ":" + path_).c_str(), 1);
  }
  ~DesktopTest() override {
    ::setenv("PATH", path_.c_str(), 1);
    for (const std::string& folder : {programs_, data_ + "/applications", std::string(std::getenv("XDG_CONFIG_HOME"))})
      std::filesystem::remove_all(folder);
  }

  static std::string home() { return std::getenv("HOME"); }

  void program(const std::string& name, const std::string& script) const {
    const std::string path = programs_ + "/" + name;
    std::ofstream(path) << "#!/bin/sh\n" << script << "\n";
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
  }

  // `id` opens the types of files named, with `command`.
  void application(const std::string& id, const std::string& command, const std::string& types) const {
    std::ofstream(data_ + "/applications/" + id + ".desktop")
        << "[Desktop Entry]\nType=Application\nName=" << id << "\nExec=" << command << "\nMimeType=" << types << "\n";
    std::ofstream(data_ + "/applications/mimeinfo.cache") << "[MIME Cache]\n";
    const std::string configuration = std::getenv("XDG_CONFIG_HOME");
    std::filesystem::create_directories(configuration);
    std::ofstream list(configuration + "/mimeapps.list");
    list << "[Default Applications]\n";
    std::istringstream names(types);
    for (std::string type; std::getline(names, type, ';');)
      list << type << "=" << id << ".desktop\n";
  }

  // False when `done` is not true in time. Runs what is posted meanwhile.
  bool await(const std::function<bool()>& done) {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (!done()) {
      if (std::chrono::steady_clock::now() > deadline) return false;
      const auto again = std::make_shared<bool>(false);
      tasks_.mainThreadAfter(10ms, [again] { *again = true; });
      tasks_.runUntil([&] { return *again || done(); });
    }
    return true;
  }

  const std::string path_ = std::getenv("PATH");
  const std::string programs_ = home() + "/programs";
  const std::string data_ = std::getenv("XDG_DATA_HOME");
  SharedLog log_;
  std::optional<ThreadTaskRunner> running_{std::in_place};
  ThreadTaskRunner& tasks_ = *running_;
};

}  // namespace varnok
