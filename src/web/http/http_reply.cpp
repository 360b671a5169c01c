#include "web/http/http_reply.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <iterator>
#include <optional>
#include <utility>

#include "web/http/http_range.h"

namespace varnok {
namespace {

struct Reason {
  int status;
  std::string_view phrase;
};

constexpr Reason kReasons[] = {
    {200, "OK"},
    {206, "Partial Content"},
    {301, "Moved Permanently"},
    {302, "Found"},
    {303, "See Other"},
    {304, "Not Modified"},
    {400, "Bad Request"},
    {401, "Unauthorized"},
    {403, "Forbidden"},
    {404, "Not Found"},
    {405, "Method Not Allowed"},
    {408, "Request Timeout"},
    {411, "Length Required"},
    {413, "Content Too Large"},
    {414, "URI Too Long"},
    {416, "Range Not Satisfiable"},
    {417, "Expectation Failed"},
    {429, "Too Many Requests"},
    {431, "Request Header Fields Too Large"},
    {500, "Internal Server Error"},
    {503, "Service Unavailable"},
};

std::string_view reasonOf(int status) {
  for (const Reason& reason : kReasons) {
    if (reason.status == status) return reason.phrase;
  }
  return "Unknown";
}

void appendNumber(std::string& text, std::uint64_t number) {
  char digits[20];
  const auto result = std::to_chars(std::begin(digits), std::end(digits), number);
  text.append(digits, result.ptr);
}

bool isControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

void appendField(std::string& head, std::string_view name, std::string_view value) {
  head.append(name).append(": ");
  if (std::ranges::none_of(value, isControl)) {
    head += value;
  } else {
    std::ranges::remove_copy_if(value, std::back_inserter(head), isControl);
  }
  head += "\r\n";
}

std::uint64_t sizeOf(const HTTPBody& body) {
  if (const auto* bytes = std::get_if<std::string_view>(&body)) return bytes->size();
  return std::get<HTTPFileBody>(body).length;
}

HTTPSegment segmentOf(const HTTPBody& body, const HTTPByteRange& range) {
  if (const auto* bytes = std::get_if<std::string_view>(&body)) return bytes->substr(range.first, range.length);
  return HTTPFileSegment{std::get<HTTPFileBody>(body).descriptor, range.first, range.length};
}

bool listNames(std::string_view list, std::string_view entityTag) {
  while (!list.empty()) {
    const std::size_t comma = list.find(',');
    std::string_view tag = list.substr(0, comma);
    list.remove_prefix(comma == std::string_view::npos ? list.size() : comma + 1);
    tag.remove_prefix(std::min(tag.find_first_not_of(" \t"), tag.size()));
    tag = tag.substr(0, tag.find_last_not_of(" \t") + 1);
    if (tag.starts_with("W/")) tag.remove_prefix(2);
    if (tag == entityTag || tag == "*") return true;
  }
  return false;
}

bool isUnchanged(const HTTPRequest& request, const HTTPValidators& validators) {
  if (const auto tags = request.field("If-None-Match")) return listNames(*tags, validators.entityTag);
  const auto since = request.field("If-Modified-Since");
  const auto date = since ? parseHTTPDate(*since) : std::nullopt;
  return date && validators.modified <= *date;
}

// If-Range: the client has a part of a body, which is of use only when the body
// is still the same.
bool rangeApplies(const HTTPRequest& request, const std::optional<HTTPValidators>& validators) {
  const auto condition = request.field("If-Range");
  if (!condition) return true;
  return validators && (*condition == validators->entityTag || *condition == httpDate(validators->modified));
}

std::string contentRange(const HTTPByteRange& range, std::uint64_t size) {
  std::string text = "bytes ";
  appendNumber(text, range.first);
  text += '-';
  appendNumber(text, range.first + range.length - 1);
  text += '/';
  appendNumber(text, size);
  return text;
}

// One that no body contains by chance.
std::string newBoundary(const void* seed) {
  static std::atomic<std::uint64_t> count{0};
  std::uint64_t mixed = std::hash<const void*>()(seed) + ++count;
  std::string boundary = "part";
  for (int i = 0; i < 2; ++i) {
    mixed = (mixed ^ (mixed >> 31)) * 0x9E3779B97F4A7C15;
    appendNumber(boundary, mixed);
  }
  return boundary;
}

// Puts the head of one reply together.
class ReplyMaker {
 public:
  ReplyMaker(const HTTPRequest& request, std::unique_ptr<HTTPResponse> response, bool keepAlive)
      : request_(request), isHead_(request.method == "HEAD") {
    reply_.keepAlive = keepAlive;
    reply_.response = std::move(response);
    reply_.status = reply_.response->status();
    fields_ = reply_.response->httpHeaders();
    takeConnectionField();
  }

  HTTPReply make(HTTPDateNow& date, std::string& output) && {
    chooseBody();
    writeHead(date, output);
    if (isHead_) reply_.segments.clear();
    return std::move(reply_);
  }

 private:
  void takeConnectionField();
  void chooseBody();
  bool chooseRanges(const HTTPBody& body);
  void chooseStream(HTTPBodyStream& stream);
  void addParts(const HTTPBody& body, const std::vector<HTTPByteRange>& ranges);
  void writeHead(HTTPDateNow& date, std::string& head);
  void writeProtections(std::string& head) const;
  std::optional<std::string_view> field(std::string_view name) const;

  const HTTPRequest& request_;
  bool isHead_;
  HTTPReply reply_;
  HTTPFields fields_;
  std::optional<HTTPValidators> validators_;
  std::optional<std::uint64_t> length_ = 0;  // Nothing: chunked, or until the connection ends.
  bool chunked_ = false;
};

std::optional<std::string_view> ReplyMaker::field(std::string_view name) const {
  for (const auto& [key, value] : fields_) {
    if (equalsIgnoringCase(key, name)) return value;
  }
  return std::nullopt;
}

// The server says itself whether the connection goes on; a response may end it.
void ReplyMaker::takeConnectionField() {
  const auto removed =
      std::erase_if(fields_, [](const auto& entry) { return equalsIgnoringCase(entry.first, "Connection"); });
  if (removed > 0) reply_.keepAlive = false;
}

void ReplyMaker::chooseBody() {
  const bool isRead = isHead_ || request_.method == "GET";
  validators_ = reply_.status == 200 ? reply_.response->validators() : std::nullopt;
  if (isRead && validators_ && isUnchanged(request_, *validators_)) {
    reply_.status = 304;
    length_.reset();
    return;
  }
  const HTTPBody body = reply_.response->body();
  if (auto* const* stream = std::get_if<HTTPBodyStream*>(&body)) return chooseStream(**stream);
  if (!isHead_ && isRead && reply_.status == 200 && chooseRanges(body)) return;
  length_ = sizeOf(body);
  if (*length_ > 0) reply_.segments.push_back(segmentOf(body, {0, *length_}));
}

void ReplyMaker::chooseStream(HTTPBodyStream& stream) {
  length_ = stream.length();
  chunked_ = !length_ && request_.minorVersion > 0;
  if (!length_ && !chunked_) reply_.keepAlive = false;
  reply_.segments.emplace_back(HTTPStreamSegment{&stream, chunked_});
}

bool ReplyMaker::chooseRanges(const HTTPBody& body) {
  const auto asked = request_.field("Range");
  if (!asked || !rangeApplies(request_, validators_)) return false;
  const std::uint64_t size = sizeOf(body);
  const auto ranges = parseRangeField(*asked, size);
  if (!ranges) return false;
  if (ranges->empty()) {
    reply_.status = 416;
    std::string range = "bytes */";
    appendNumber(range, size);
    fields_ = {{"Content-Range", std::move(range)}};
    return true;
  }
  reply_.status = 206;
  if (ranges->size() > 1) {
    addParts(body, *ranges);
  } else {
    fields_.emplace_back("Content-Range", contentRange(ranges->front(), size));
    length_ = ranges->front().length;
    reply_.segments.push_back(segmentOf(body, ranges->front()));
  }
  return true;
}

void ReplyMaker::addParts(const HTTPBody& body, const std::vector<HTTPByteRange>& ranges) {
  const std::string boundary = newBoundary(reply_.response.get());
  const std::string type(field("Content-Type").value_or(""));
  std::uint64_t total = 0;
  const auto addText = [&](std::string text) {
    total += text.size();
    reply_.segments.emplace_back(std::move(text));
  };
  for (const HTTPByteRange& range : ranges) {
    std::string head = (total == 0 ? "--" : "\r\n--") + boundary + "\r\n";
    if (!type.empty()) appendField(head, "Content-Type", type);
    appendField(head, "Content-Range", contentRange(range, sizeOf(body)));
    addText(head += "\r\n");
    reply_.segments.push_back(segmentOf(body, range));
    total += range.length;
  }
  addText("\r\n--" + boundary + "--\r\n");
  length_ = total;
  std::erase_if(fields_, [](const auto& entry) { return equalsIgnoringCase(entry.first, "Content-Type"); });
  fields_.emplace_back("Content-Type", "multipart/byteranges; boundary=" + boundary);
}

// What carries no content type may be shown as a page: not within a page of
// another site. Such pages rely on the browser's guess at their type, JSON must
// not be guessed at.
void ReplyMaker::writeProtections(std::string& head) const {
  const auto type = field("Content-Type");
  if (!type) {
    appendField(head, "X-Frame-Options", "DENY");
  } else if (*type == "application/json") {
    appendField(head, "X-Content-Type-Options", "nosniff");
    appendField(head, "Cache-Control", "no-store");
  }
}

void ReplyMaker::writeHead(HTTPDateNow& date, std::string& head) {
  head += "HTTP/1.1 ";
  appendNumber(head, static_cast<std::uint64_t>(reply_.status));
  head.append(" ").append(reasonOf(reply_.status)).append("\r\nDate: ");
  date.appendTo(head);
  head += "\r\nAccept-Ranges: bytes\r\n";
  for (const auto& [name, value] : fields_)
    appendField(head, name, value);
  if (reply_.status < 400) writeProtections(head);
  if (validators_ && reply_.status != 416) {
    appendField(head, "ETag", validators_->entityTag);
    appendField(head, "Last-Modified", httpDate(validators_->modified));
    // Without it a browser would guess how long the page may be kept.
    if (!field("Cache-Control")) appendField(head, "Cache-Control", "no-cache");
  }
  if (length_) {
    head += "Content-Length: ";
    appendNumber(head, *length_);
    head += "\r\n";
  } else if (chunked_) {
    head += "Transfer-Encoding: chunked\r\n";
  }
  if (!reply_.keepAlive) {
    head += "Connection: close\r\n";
  } else if (request_.minorVersion == 0) {
    head += "Connection: keep-alive\r\n";
  }
  head += "\r\n";
}

}  // namespace

HTTPReply makeReply(const HTTPRequest& request, std::unique_ptr<HTTPResponse> response, bool keepAlive,
                    HTTPDateNow& date, std::string& output) {
  return ReplyMaker(request, std::move(response), keepAlive).make(date, output);
}

}  // namespace varnok
