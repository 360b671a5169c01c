// HTTPSender: puts replies on a socket that does not block.
//
// Small pieces are gathered, so that a reply leaves in one call, and so do the
// replies to requests that came together. Files go from the kernel's cache to
// the socket without passing through this process.

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "web/http/http_reply.h"

namespace varnok {

class HTTPSender {
 public:
  enum class Result {
    whole,
    blocked,   // The socket takes no more now.
    turnOver,  // Much has been sent; others may want the thread.
    failed,    // The connection is broken, or the body cannot be had.
  };

  // `beforeLongWork` is called before a stream is read. SIGPIPE must be blocked
  // or ignored.
  HTTPSender(int socket, std::function<void()> beforeLongWork)
      : socket_(socket), beforeLongWork_(std::move(beforeLongWork)) {}

  // Text that goes out before anything that is sent later.
  std::string& gathered() { return gathered_; }
  bool isFull() const;

  // The reply whose head has been gathered.
  void begin(HTTPReply reply);
  const HTTPReply& reply() const { return reply_; }

  // Sends or gathers the rest of the body; call again after anything but `whole`
  // and `failed`.
  Result send();
  // Sends what is gathered. The reply, if all of it is gathered, may be dropped.
  Result flush() { return flush({}, /*more=*/false); }

  void drop() { reply_ = {}; }

  std::uint64_t bodyBytes() const { return bodyBytes_; }  // Of this reply.

  // Whether the socket has taken some since this was last asked.
  bool hasProgressed() { return std::exchange(hasProgressed_, false); }

 private:
  Result send(const HTTPSegment& segment);
  Result sendBytes(std::string_view bytes);
  Result sendFile(const HTTPFileSegment& file);
  Result sendStream(const HTTPStreamSegment& stream);
  bool readStream(const HTTPStreamSegment& stream);
  Result flush(std::string_view behind, bool more);
  Result afterCall(std::int64_t sent);
  void gather(std::string_view bytes);

  const int socket_;
  std::function<void()> beforeLongWork_;
  HTTPReply reply_;
  std::size_t segment_ = 0;        // The one being sent,
  std::uint64_t segmentSent_ = 0;  // and the bytes of it that have been sent or gathered.
  bool streamEnded_ = false;
  std::uint64_t bodyBytes_ = 0;
  std::uint64_t turn_ = 0;  // Bytes sent in this call.
  std::string gathered_;
  std::size_t gatheredSent_ = 0;
  bool hasProgressed_ = false;
};

}  // namespace varnok
