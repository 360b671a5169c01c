#include "platform/linux/mail/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <system_error>

#include "platform/linux/posix/posix_io.h"

namespace varnok {
namespace {

using SteadyTime = std::chrono::steady_clock::time_point;

constexpr std::size_t kMostErrorText = 500;

// Above the standard three, so that giving the child its own cannot overwrite it.
FileDescriptor aboveStandard(int fd) {
  if (fd < 0 || fd > 2) return FileDescriptor(fd);
  const FileDescriptor low(fd);
  return FileDescriptor(::fcntl(fd, F_DUPFD_CLOEXEC, 3));
}

// A file in memory instead of a pipe: a child that closes its input early, or
// reads none of it, can then neither block us nor send us a signal.
FileDescriptor inputFile(std::string_view input, int& error) {
  FileDescriptor file = aboveStandard(::memfd_create("message", MFD_CLOEXEC));
  error = file.valid() ? writeAll(file.get(), input) : errno;
  if (error == 0 && ::lseek(file.get(), 0, SEEK_SET) != 0) error = errno;
  return file;
}

class SpawnSettings {
 public:
  SpawnSettings(int input, int errorOutput) {
    ::posix_spawn_file_actions_init(&actions_);
    ::posix_spawn_file_actions_adddup2(&actions_, input, 0);
    ::posix_spawn_file_actions_addopen(&actions_, 1, "/dev/null", O_WRONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions_, errorOutput, 2);
    ::posix_spawn_file_actions_addclosefrom_np(&actions_, 3);
    ::posix_spawnattr_init(&attributes_);
    // A group of its own, to end it with what it starts; and no signal that this
    // program ignores or holds back.
    ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    ::posix_spawnattr_setpgroup(&attributes_, 0);
    sigset_t signals;
    ::sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&attributes_, &signals);
    ::sigfillset(&signals);
    ::posix_spawnattr_setsigdefault(&attributes_, &signals);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;
  ~SpawnSettings() {
    ::posix_spawn_file_actions_destroy(&actions_);
    ::posix_spawnattr_destroy(&attributes_);
  }

  // The errno of a failure, 0 when done.
  int spawn(const std::vector<std::string>& arguments, pid_t& child) const {
    std::vector<std::string> copies = arguments;
    std::vector<char*> pointers;
    pointers.reserve(copies.size() + 1);
    for (std::string& argument : copies)
      pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    return ::posix_spawnp(&child, pointers.front(), &actions_, &attributes_, pointers.data(), environ);
  }

 private:
  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
};

// Takes what is there of the child's error text; false at its end.
bool drain(int fd, std::string& text) {
  char piece[4096];
  const ssize_t got = ::read(fd, piece, sizeof piece);
  if (got < 0) return errno == EINTR || errno == EAGAIN;
  const std::size_t room = kMostErrorText - text.size();
  text.append(piece, std::min(static_cast<std::size_t>(got), room));
  return got > 0;
}

int millisecondsUntil(SteadyTime deadline) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
  return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 1'000'000));
}

// False when `child` has not ended by the deadline.
bool awaitEnd(pid_t child, int errorOutput, SteadyTime deadline, std::string& errorText) {
  // Not by its wrapper, whose header some versions of the C library left unusable in C++.
  const FileDescriptor end(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
  if (!end.valid()) return false;
  pollfd watched[] = {{end.get(), POLLIN, 0}, {errorOutput, POLLIN, 0}};
  for (;;) {
    const int ready = ::poll(watched, 2, millisecondsUntil(deadline));
    if (ready < 0 && errno != EINTR) return false;
    if (ready > 0 && watched[1].revents != 0 && !drain(errorOutput, errorText)) watched[1].fd = -1;
    if (ready > 0 && watched[0].revents != 0) return true;
    if (std::chrono::steady_clock::now() >= deadline) return false;
  }
}

std::string described(int status) {
  if (WIFEXITED(status)) return "ended with status " + std::to_string(WEXITSTATUS(status));
  if (WIFSIGNALED(status)) return "was ended by signal " + std::to_string(WTERMSIG(status));
  return "ended in an unknown way";
}

// As the end of a line: the first line of what the program wrote.
std::string afterColon(std::string text) {
  text.resize(std::min(text.find('\n'), text.size()));
  std::replace_if(
      text.begin(), text.end(), [](unsigned char c) { return std::iscntrl(c) != 0; }, ' ');
  return text.empty() ? text : ": " + text;
}

// The status of a child that has ended or is about to; -1 when it is not known.
int statusOf(pid_t child) {
  int status = 0;
  pid_t waited = 0;
  do {
    waited = ::waitpid(child, &status, 0);
  } while (waited < 0 && errno == EINTR);
  return waited == child ? status : -1;
}

bool succeeded(int status) {
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

Status waitFor(pid_t child, const std::string& program, int errorOutput, std::chrono::milliseconds timeLimit) {
  std::string errorText;
  const bool ended = awaitEnd(child, errorOutput, std::chrono::steady_clock::now() + timeLimit, errorText);
  // Not yet waited for, so the number is still the child's own.
  if (!ended) ::kill(-child, SIGKILL);
  const int status = statusOf(child);
  if (!ended) return {Status::Code::unavailable, program + " did not end in time" + afterColon(errorText)};
  if (succeeded(status)) return {};
  drain(errorOutput, errorText);  // What came with the end.
  return {Status::Code::unavailable, program + " " + described(status) + afterColon(errorText)};
}

}  // namespace

Status runProgram(const std::vector<std::string>& arguments, std::string_view input,
                  std::chrono::milliseconds timeLimit) {
  const std::string& program = arguments.front();
  int error = 0;
  const FileDescriptor standardInput = inputFile(input, error);
  if (error != 0) return statusOfErrno(error, "prepare the input of", program);
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return statusOfErrno(errno, "start", program);
  const FileDescriptor errorOutput = aboveStandard(ends[0]);
  FileDescriptor childsErrorOutput = aboveStandard(ends[1]);
  pid_t child = 0;
  error = SpawnSettings(standardInput.get(), childsErrorOutput.get()).spawn(arguments, child);
  if (error != 0) return statusOfErrno(error, "start", program);
  childsErrorOutput.reset();
  return waitFor(child, program, errorOutput.get(), timeLimit);
}

Status launchProgram(const std::vector<std::string>& arguments, std::chrono::milliseconds time) {
  const std::string& program = arguments.front();
  const FileDescriptor nothing = aboveStandard(::open("/dev/null", O_RDWR | O_CLOEXEC));
  if (!nothing.valid()) return statusOfErrno(errno, "open", "/dev/null");
  pid_t child = 0;
  const int error = SpawnSettings(nothing.get(), nothing.get()).spawn(arguments, child);
  if (error != 0) return statusOfErrno(error, "start", program);
  std::string noText;
  if (!awaitEnd(child, -1, std::chrono::steady_clock::now() + time, noText)) return {};
  const int status = statusOf(child);
  return succeeded(status) ? Status() : Status(Status::Code::unavailable, program + " " + described(status));
}

}  // namespace varnok
