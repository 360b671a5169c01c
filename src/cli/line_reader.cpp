#include "cli/line_reader.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace varnok {

LineReader::LineReader(std::function<void()> arrived)
    : arrived_(std::move(arrived)), stop_(eventfd(0, EFD_CLOEXEC)), thread_([this] { read(); }) {}

LineReader::~LineReader() {
  eventfd_write(stop_, 1);
  thread_.join();
  close(stop_);
}

std::optional<std::string> LineReader::take() {
  const std::scoped_lock lock(mutex_);
  if (lines_.empty()) return std::nullopt;
  std::string line = std::move(lines_.front());
  lines_.pop_front();
  return line;
}

bool LineReader::ready() const {
  const std::scoped_lock lock(mutex_);
  return ended_ || !lines_.empty();
}

void LineReader::read() {
  std::string bytes;
  std::array<char, 4096> buffer{};
  for (;;) {
    std::array<pollfd, 2> watched{
        {{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0}, {.fd = stop_, .events = POLLIN, .revents = 0}}};
    if (poll(watched.data(), watched.size(), -1) < 0 && errno != EINTR) break;
    if (watched[1].revents != 0) return;
    if (watched[0].revents == 0) continue;
    const ssize_t count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    bytes.append(buffer.data(), static_cast<std::size_t>(count));
    cutLines(bytes);
  }
  {
    const std::scoped_lock lock(mutex_);
    if (!bytes.empty()) lines_.push_back(std::move(bytes));
    ended_ = true;
  }
  arrived_();
}

void LineReader::cutLines(std::string& bytes) {
  bool found = false;
  for (std::size_t end = bytes.find('\n'); end != std::string::npos; end = bytes.find('\n')) {
    std::string line = bytes.substr(0, end);
    if (line.ends_with('\r')) line.pop_back();
    bytes.erase(0, end + 1);
    const std::scoped_lock lock(mutex_);
    lines_.push_back(std::move(line));
    found = true;
  }
  if (found) arrived_();
}

}  // namespace varnok
