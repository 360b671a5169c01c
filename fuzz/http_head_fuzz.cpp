// Any bytes as what comes over a connection: however they are cut, the same
// requests come out; nothing in them can end a line; their paths stay in their
// folder.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "web/http/http_date.h"
#include "web/http/http_exchange.h"
#include "web/http/http_guard.h"
#include "web/http/http_range.h"
#include "web/http/http_request_parser.h"
#include "web/http/http_uri.h"

namespace varnok {
namespace {

// Small limits, so that inputs reach them.
HTTPLimits smallLimits() {
  HTTPLimits limits;
  limits.requestLine = 100;
  limits.head = 500;
  limits.fields = 8;
  return limits;
}

void require(bool condition) {
  if (!condition) std::abort();
}

void check(const HTTPRequest& request) {
  require(!request.method.empty() && !request.uri.empty() && request.fields.size() <= smallLimits().fields);
  for (const auto& [name, value] : request.fields)
    require(!name.empty() && (name + value).find_first_of(std::string_view("\r\n\0", 3)) == std::string::npos);
  isForThisHost(request, {"kitchen"});
  isFromThisSite(request);
  if (const auto date = request.field("If-Modified-Since")) parseHTTPDate(*date);
  constexpr std::uint64_t kSize = 1000;
  const auto ranges = parseRangeField(request.field("Range").value_or(""), kSize);
  for (const HTTPByteRange& range : ranges.value_or(std::vector<HTTPByteRange>()))
    require(range.length > 0 && range.first < kSize && range.length <= kSize - range.first);
  if (const auto path = decodedPathOfURI(request.uri)) {
    const std::string full = standardizedPath("/web" + *path);
    require(full.find("/../") == std::string::npos && !full.ends_with("/.."));
    require(isInsideFolder(full, "/web") == (full + "/").starts_with("/web/"));
  }
}

std::string describe(HTTPRequestParser& parser) {
  check(parser.request());
  std::string text = parser.request().method + " " + parser.request().uri;
  for (const auto& [name, value] : parser.request().fields)
    text.append("\n").append(name).append(":").append(value);
  return text + "\n" + std::to_string(parser.bodyLength()) + (parser.keepAlive() ? " keep\n" : " close\n");
}

// Everything that the connection's reader would be told.
template <typename NextSize>
std::string read(std::string_view bytes, NextSize nextSize) {
  HTTPRequestParser parser(smallLimits());
  std::string outcome;
  std::string waiting;
  bool inBody = false;
  while (!bytes.empty()) {
    const std::size_t size = std::min(nextSize(), bytes.size());
    waiting += bytes.substr(0, size);
    bytes.remove_prefix(size);
    for (;;) {
      const std::size_t used = parser.parse(waiting);
      require(used <= waiting.size());
      if (parser.state() == HTTPRequestParser::State::failed) return outcome + std::to_string(parser.status());
      if (!inBody && parser.state() != HTTPRequestParser::State::head) outcome += describe(parser);
      inBody = parser.state() != HTTPRequestParser::State::head;
      outcome += parser.bodyPiece();
      waiting.erase(0, used);
      if (parser.state() == HTTPRequestParser::State::done) {
        parser.reset();
        inBody = false;
        if (waiting.empty()) break;
      } else if (used == 0) {
        break;
      }
    }
  }
  return outcome;
}

}  // namespace
}  // namespace varnok

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace varnok;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::string whole = read(bytes, [&] { return bytes.size(); });
  require(read(bytes, [] { return std::size_t{1}; }) == whole);
  // Pieces whose sizes come from the input itself.
  std::size_t next = 0;
  const auto uneven = [&] { return std::size_t{1} + static_cast<unsigned char>(bytes[next++ % bytes.size()]) % 40U; };
  require(read(bytes, uneven) == whole);
  return 0;
}
