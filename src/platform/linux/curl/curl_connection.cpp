#include "platform/linux/curl/curl_connection.h"

#include <curl/curl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace varnok {
namespace {

constexpr std::size_t kMostCollected = 16U << 20U;
constexpr long kUploadBuffer = 256L << 10U;  // Bytes.

struct FailureOfCode {
  CURLcode code;
  HttpResponse::Failure failure;
};
constexpr std::array kFailures{
    FailureOfCode{CURLE_OK, HttpResponse::Failure::none},
    FailureOfCode{CURLE_ABORTED_BY_CALLBACK, HttpResponse::Failure::cancelled},
    FailureOfCode{CURLE_COULDNT_RESOLVE_PROXY, HttpResponse::Failure::unreachable},
    FailureOfCode{CURLE_COULDNT_RESOLVE_HOST, HttpResponse::Failure::unreachable},
    FailureOfCode{CURLE_COULDNT_CONNECT, HttpResponse::Failure::unreachable},
    FailureOfCode{CURLE_PEER_FAILED_VERIFICATION, HttpResponse::Failure::untrusted},
    FailureOfCode{CURLE_SSL_CACERT_BADFILE, HttpResponse::Failure::untrusted},
    FailureOfCode{CURLE_WRITE_ERROR, HttpResponse::Failure::sinkRefused},
    FailureOfCode{CURLE_SSL_CONNECT_ERROR, HttpResponse::Failure::broken},
    FailureOfCode{CURLE_OPERATION_TIMEDOUT, HttpResponse::Failure::broken},
    FailureOfCode{CURLE_PARTIAL_FILE, HttpResponse::Failure::broken},
    FailureOfCode{CURLE_GOT_NOTHING, HttpResponse::Failure::broken},
    FailureOfCode{CURLE_SEND_ERROR, HttpResponse::Failure::broken},
    FailureOfCode{CURLE_RECV_ERROR, HttpResponse::Failure::broken},
};

HttpResponse::Failure failureOf(CURLcode code) {
  const auto* found = std::ranges::find(kFailures, code, &FailureOfCode::code);
  return found == kFailures.end() ? HttpResponse::Failure::other : found->failure;
}

// What one request's callbacks share.
struct Exchange {
  const HttpRequest& request;
  const std::stop_token& stop;
  HttpResponse response;
  std::uint64_t fileSent = 0;
  bool fileFailed = false;
};

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

std::size_t takeHeader(char* data, std::size_t size, std::size_t count, void* user) {
  auto& head = static_cast<Exchange*>(user)->response.head;
  const std::string_view line(data, size * count);
  if (line.starts_with("HTTP/")) head.headers.clear();  // An interim answer came before.
  const std::size_t colon = line.find(':');
  if (colon != std::string_view::npos) {
    std::string name(line.substr(0, colon));
    std::ranges::transform(name, name.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    head.headers[name] = trimmed(line.substr(colon + 1));
  }
  return line.size();
}

std::size_t readFile(char* buffer, std::size_t size, std::size_t count, void* user) {
  auto& exchange = *static_cast<Exchange*>(user);
  const FilePiece& file = exchange.request.file;
  const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(size * count, file.size - exchange.fileSent));
  if (wanted == 0) return 0;
  ssize_t got = 0;
  do {
    got = ::pread(file.fd, buffer, wanted, static_cast<off_t>(file.offset + exchange.fileSent));
  } while (got < 0 && errno == EINTR);
  if (got <= 0) {
    exchange.fileFailed = true;
    return CURL_READFUNC_ABORT;
  }
  exchange.fileSent += static_cast<std::uint64_t>(got);
  return static_cast<std::size_t>(got);
}

int seekFile(void* user, curl_off_t offset, int origin) {
  if (origin != SEEK_SET) return CURL_SEEKFUNC_CANTSEEK;
  static_cast<Exchange*>(user)->fileSent = static_cast<std::uint64_t>(offset);
  return CURL_SEEKFUNC_OK;
}

int progressed(void* user, curl_off_t /*toReceive*/, curl_off_t /*received*/, curl_off_t /*toSend*/, curl_off_t sent) {
  const auto& exchange = *static_cast<Exchange*>(user);
  if (exchange.stop.stop_requested()) return 1;
  if (exchange.request.sent) exchange.request.sent(static_cast<std::uint64_t>(sent));
  return 0;
}

bool succeeded(long status) {
  return status >= 200 && status < 300;
}

}  // namespace

std::string HttpHead::header(const std::string& name) const {
  const auto found = headers.find(name);
  return found == headers.end() ? std::string() : found->second;
}

class CurlConnection::Handle {
 public:
  Handle() {
    static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
    curl_ = initialised == CURLE_OK ? curl_easy_init() : nullptr;
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() {
    curl_slist_free_all(headers_);
    curl_easy_cleanup(curl_);
  }

  HttpResponse perform(const Settings& settings, const HttpRequest& request, const std::stop_token& stop) {
    Exchange exchange{request, stop, {}};
    if (curl_ == nullptr) {
      exchange.response.failure = HttpResponse::Failure::other;
      exchange.response.error = "libcurl cannot be used";
      return exchange.response;
    }
    curl_easy_reset(curl_);  // Keeps the connection.
    std::array<char, CURL_ERROR_SIZE> error{};
    option(CURLOPT_ERRORBUFFER, error.data());
    applySettings(settings);
    applyRequest(request, exchange);
    const CURLcode code = curl_easy_perform(curl_);
    exchange.response.failure = exchange.fileFailed ? HttpResponse::Failure::readFailed : failureOf(code);
    if (code != CURLE_OK) exchange.response.error = error[0] == '\0' ? curl_easy_strerror(code) : error.data();
    curl_easy_getinfo(curl_, CURLINFO_RESPONSE_CODE, &exchange.response.head.status);
    return std::move(exchange.response);
  }

 private:
  template <typename Value>
  void option(CURLoption name, Value value) {
    curl_easy_setopt(curl_, name, value);
  }

  void applySettings(const Settings& settings) {
    option(CURLOPT_NOSIGNAL, 1L);
    option(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    option(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    option(CURLOPT_PROTOCOLS_STR, settings.plainAllowed ? "http,https" : "https");
    option(CURLOPT_CONNECTTIMEOUT, static_cast<long>(settings.connectLimit.count()));
    option(CURLOPT_TIMEOUT, static_cast<long>(settings.wholeLimit.count()));
    option(CURLOPT_LOW_SPEED_LIMIT, 1L);
    option(CURLOPT_LOW_SPEED_TIME, static_cast<long>(settings.stallLimit.count()));
    option(CURLOPT_UPLOAD_BUFFERSIZE, kUploadBuffer);
    if (!settings.caFile.empty()) option(CURLOPT_CAINFO, settings.caFile.c_str());
    if (settings.direct) option(CURLOPT_PROXY, "");
  }

  void applyRequest(const HttpRequest& request, Exchange& exchange) {
    option(CURLOPT_URL, request.url.c_str());
    curl_slist_free_all(std::exchange(headers_, nullptr));
    for (const std::string& header : request.headers)
      headers_ = curl_slist_append(headers_, header.c_str());
    headers_ = curl_slist_append(headers_, "Expect:");  // Otherwise a large body waits for leave to come.
    option(CURLOPT_HTTPHEADER, headers_);
    option(CURLOPT_HEADERFUNCTION, &takeHeader);
    option(CURLOPT_HEADERDATA, &exchange);
    option(CURLOPT_WRITEFUNCTION, &Handle::takeBody);
    exchange_ = &exchange;
    option(CURLOPT_WRITEDATA, this);
    option(CURLOPT_NOPROGRESS, 0L);
    option(CURLOPT_XFERINFOFUNCTION, &progressed);
    option(CURLOPT_XFERINFODATA, &exchange);
    if (request.method == HttpRequest::Method::head) {
      option(CURLOPT_NOBODY, 1L);
      return;
    }
    option(CURLOPT_POST, 1L);
    if (request.file.fd < 0) {
      option(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
      option(CURLOPT_POSTFIELDS, request.body.data());
      return;
    }
    option(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.file.size));
    option(CURLOPT_READFUNCTION, &readFile);
    option(CURLOPT_READDATA, &exchange);
    option(CURLOPT_SEEKFUNCTION, &seekFile);
    option(CURLOPT_SEEKDATA, &exchange);
  }

  static std::size_t takeBody(char* data, std::size_t size, std::size_t count, void* user) {
    auto& handle = *static_cast<Handle*>(user);
    Exchange& exchange = *handle.exchange_;
    const std::string_view bytes(data, size * count);
    HttpHead& head = exchange.response.head;
    curl_easy_getinfo(handle.curl_, CURLINFO_RESPONSE_CODE, &head.status);
    if (exchange.request.sink && succeeded(head.status)) {
      return exchange.request.sink(head, bytes) ? bytes.size() : 0;
    }
    std::string& body = exchange.response.body;
    body.append(bytes.substr(0, kMostCollected - std::min(kMostCollected, body.size())));
    return bytes.size();
  }

  CURL* curl_ = nullptr;
  curl_slist* headers_ = nullptr;
  Exchange* exchange_ = nullptr;  // Of the request under way.
};

CurlConnection::CurlConnection(Settings settings)
    : settings_(std::move(settings)), handle_(std::make_unique<Handle>()) {}

CurlConnection::~CurlConnection() = default;

HttpResponse CurlConnection::perform(const HttpRequest& request, const std::stop_token& stop) {
  return handle_->perform(settings_, request, stop);
}

}  // namespace varnok
