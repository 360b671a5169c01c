#include "web/http/http_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <iterator>
#include <utility>

namespace varnok {
namespace {

void appendHex(std::string& text, std::uint64_t number) {
  char digits[16];
  const auto result = std::to_chars(std::begin(digits), std::end(digits), number, 16);
  text.append(digits, result.ptr);
}

// Changes with every change of the file: unlike the time of modification, the one
// of the inode's change cannot be set back.
std::string entityTagOf(const struct stat& state) {
  std::string tag = "\"";
  appendHex(tag, state.st_ino);
  tag += '-';
  appendHex(tag, static_cast<std::uint64_t>(state.st_size));
  tag += '-';
  appendHex(tag, static_cast<std::uint64_t>(state.st_ctim.tv_sec) * 1'000'000'000 +
                     static_cast<std::uint64_t>(state.st_ctim.tv_nsec));
  return tag += '"';
}

}  // namespace

HTTPFile::HTTPFile(int descriptor) : descriptor_(descriptor) {
  struct stat state {};
  if (descriptor_ < 0) return;
  if (::fstat(descriptor_, &state) != 0 || !S_ISREG(state.st_mode)) {
    ::close(std::exchange(descriptor_, -1));
    return;
  }
  length_ = static_cast<std::uint64_t>(state.st_size);
  validators_ = {entityTagOf(state), state.st_mtim.tv_sec};
}

HTTPFile::HTTPFile(HTTPFile&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)),
      length_(other.length_),
      validators_(std::move(other.validators_)) {}

HTTPFile& HTTPFile::operator=(HTTPFile&& other) noexcept {
  std::swap(descriptor_, other.descriptor_);
  std::swap(length_, other.length_);
  std::swap(validators_, other.validators_);
  return *this;
}

HTTPFile::~HTTPFile() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

// Without O_NONBLOCK a pipe of that name would wait for its other end.
HTTPFile HTTPFile::open(const std::string& path) {
  return HTTPFile(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
}

bool HTTPFile::read(std::uint64_t offset, char* to, std::size_t size) const {
  while (size > 0) {
    const ssize_t count = ::pread(descriptor_, to, size, static_cast<off_t>(offset));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    to += count;
    offset += static_cast<std::uint64_t>(count);
    size -= static_cast<std::size_t>(count);
  }
  return true;
}

}  // namespace varnok
