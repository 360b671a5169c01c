#include "web/http/http_sender.h"

#include <sys/sendfile.h>
#include <sys/socket.h>
#include <sys/uio.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <utility>

namespace varnok {
namespace {

// Bytes.
constexpr std::size_t kGathered = 65'536;
constexpr std::uint64_t kLargeFile = 1 << 20;
constexpr std::uint64_t kOneTurn = 4 << 20;

void appendChunk(std::string& output, std::string_view piece) {
  std::array<char, 16> size{};
  const auto result = std::to_chars(size.begin(), size.end(), piece.size(), 16);
  output.append(size.begin(), result.ptr).append("\r\n").append(piece).append("\r\n");
}

}  // namespace

bool HTTPSender::isFull() const {
  return gathered_.size() >= kGathered;
}

void HTTPSender::begin(HTTPReply reply) {
  reply_ = std::move(reply);
  segment_ = 0;
  segmentSent_ = 0;
  streamEnded_ = false;
  bodyBytes_ = 0;
  hasProgressed_ = true;
}

HTTPSender::Result HTTPSender::send() {
  turn_ = 0;
  while (segment_ < reply_.segments.size()) {
    if (const Result result = send(reply_.segments[segment_]); result != Result::whole) return result;
    ++segment_;
    segmentSent_ = 0;
  }
  return Result::whole;
}

HTTPSender::Result HTTPSender::send(const HTTPSegment& segment) {
  if (const auto* text = std::get_if<std::string>(&segment)) return sendBytes(*text);
  if (const auto* bytes = std::get_if<std::string_view>(&segment)) return sendBytes(*bytes);
  if (const auto* file = std::get_if<HTTPFileSegment>(&segment)) return sendFile(*file);
  return sendStream(std::get<HTTPStreamSegment>(segment));
}

void HTTPSender::gather(std::string_view bytes) {
  gathered_ += bytes;
  segmentSent_ += bytes.size();
  bodyBytes_ += bytes.size();
}

HTTPSender::Result HTTPSender::sendBytes(std::string_view bytes) {
  while (segmentSent_ < bytes.size()) {
    const std::string_view rest = bytes.substr(segmentSent_);
    if (gathered_.size() + rest.size() <= kGathered) {
      gather(rest);
    } else if (const Result result = flush(rest, /*more=*/false); result != Result::whole) {
      return result;
    }
  }
  return Result::whole;
}

HTTPSender::Result HTTPSender::sendFile(const HTTPFileSegment& file) {
  if (const Result result = flush({}, /*more=*/true); result != Result::whole) return result;
  // The disk may have to be waited for.
  if (file.length >= kLargeFile && beforeLongWork_) beforeLongWork_();
  while (segmentSent_ < file.length) {
    if (turn_ >= kOneTurn) return Result::turnOver;
    auto offset = static_cast<off_t>(file.offset + segmentSent_);
    const std::uint64_t size = std::min(file.length - segmentSent_, kOneTurn);
    const ssize_t sent = ::sendfile(socket_, file.descriptor, &offset, size);
    // The file has been cut short.
    if (sent == 0) return Result::failed;
    if (const Result result = afterCall(sent); result != Result::whole) return result;
    if (sent > 0) segmentSent_ += static_cast<std::uint64_t>(sent);
    if (sent > 0) bodyBytes_ += static_cast<std::uint64_t>(sent);
  }
  return Result::whole;
}

HTTPSender::Result HTTPSender::sendStream(const HTTPStreamSegment& stream) {
  for (;;) {
    if (gathered_.size() >= kGathered) {
      if (const Result result = flush(); result != Result::whole) return result;
    }
    if (streamEnded_) return Result::whole;
    if (turn_ >= kOneTurn) return Result::turnOver;
    if (!readStream(stream)) return Result::failed;
  }
}

// False when the body breaks off.
bool HTTPSender::readStream(const HTTPStreamSegment& stream) {
  if (beforeLongWork_) beforeLongWork_();
  std::string piece;
  if (!stream.stream->read(piece)) return false;
  streamEnded_ = piece.empty();
  if (streamEnded_) {
    if (stream.chunked) gathered_ += "0\r\n\r\n";
    return stream.stream->length().value_or(segmentSent_) == segmentSent_;
  }
  if (stream.chunked) {
    appendChunk(gathered_, piece);
  } else {
    gathered_ += piece;
  }
  segmentSent_ += piece.size();
  bodyBytes_ += piece.size();
  return true;
}

// What a call has sent, or why it has not.
HTTPSender::Result HTTPSender::afterCall(std::int64_t sent) {
  if (sent >= 0) {
    hasProgressed_ = true;
    turn_ += static_cast<std::uint64_t>(sent);
    return Result::whole;
  }
  if (errno == EINTR) return Result::whole;
  return errno == EAGAIN || errno == EWOULDBLOCK ? Result::blocked : Result::failed;
}

// What is gathered, then `behind`, which belongs to the body. `more`: something
// follows at once that may share a packet.
HTTPSender::Result HTTPSender::flush(std::string_view behind, bool more) {
  while (gatheredSent_ < gathered_.size() || !behind.empty()) {
    const std::size_t first = gathered_.size() - gatheredSent_;
    std::array<iovec, 2> parts{iovec{gathered_.data() + gatheredSent_, first},
                               iovec{const_cast<char*>(behind.data()), behind.size()}};
    msghdr message{};
    message.msg_iov = parts.data();
    message.msg_iovlen = parts.size();
    const ssize_t sent = ::sendmsg(socket_, &message, MSG_NOSIGNAL | (more ? MSG_MORE : 0));
    if (const Result result = afterCall(sent); result != Result::whole) return result;
    const std::size_t count = sent > 0 ? static_cast<std::size_t>(sent) : 0;
    const std::size_t ofBehind = count - std::min(count, first);
    gatheredSent_ += count - ofBehind;
    behind.remove_prefix(ofBehind);
    segmentSent_ += ofBehind;
    bodyBytes_ += ofBehind;
  }
  gathered_.clear();
  gatheredSent_ = 0;
  return Result::whole;
}

}  // namespace varnok
