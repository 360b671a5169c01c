#include "platform/linux/curl/dropbox_service.h"

#include <arpa/inet.h>
#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <condition_variable>
#include <memory>
#include <optional>

#include <fmt/format.h>

#include "platform/linux/curl/dropbox_json.h"

namespace varnok {
namespace {

// Who asks for a longer pause is not waited for.
constexpr std::chrono::minutes kLongestPause{5};

// Of what the service says of an error, in characters.
constexpr std::size_t kMostOfAnError = 200;

using Failure = HttpResponse::Failure;

struct FailureText {
  Failure failure;
  Status::Code code;
  std::string_view text;
};
constexpr std::array kFailureTexts{
    FailureText{Failure::unreachable, Status::Code::unavailable, "Dropbox cannot be reached"},
    FailureText{Failure::untrusted, Status::Code::accessDenied, "Whoever answered is not Dropbox"},
    FailureText{Failure::broken, Status::Code::unavailable, "The connection to Dropbox breaks again and again"},
    FailureText{Failure::readFailed, Status::Code::inputOutput, "The file to be sent cannot be read"},
    FailureText{Failure::sinkRefused, Status::Code::inputOutput, "What Dropbox sent could not be taken"},
};

// A part of the service's "error_summary", such as "path/not_found/.".
struct ErrorText {
  std::string_view summary;
  Status::Code code;
  std::string_view text;
};
constexpr std::array kErrorTexts{
    ErrorText{"lookup_failed", Status::Code::inputOutput, "Dropbox has lost the upload on its way; try again"},
    ErrorText{"not_found", Status::Code::notFound, "Dropbox has no file or folder of that name"},
    ErrorText{"not_folder", Status::Code::notFound, "On Dropbox that is not a folder"},
    ErrorText{"not_file", Status::Code::notFound, "On Dropbox that is not a file"},
    ErrorText{"insufficient_space", Status::Code::noSpace, "The Dropbox account is full"},
    ErrorText{"malformed_path", Status::Code::invalidArgument, "Dropbox does not accept that name"},
    ErrorText{"disallowed_name", Status::Code::invalidArgument, "Dropbox does not accept that name"},
    ErrorText{"conflict", Status::Code::invalidArgument, "On Dropbox something else has that name"},
    ErrorText{"no_write_permission", Status::Code::accessDenied, "Dropbox does not allow writing there"},
    ErrorText{"restricted_content", Status::Code::accessDenied, "Dropbox does not give that file out"},
    ErrorText{"content_hash_mismatch", Status::Code::corrupt, "The file arrived damaged at Dropbox"},
};

bool isLoopback(const std::string& host) {
  in_addr address{};
  if (::inet_pton(AF_INET, host.c_str(), &address) == 1) return ntohl(address.s_addr) >> 24U == IN_LOOPBACKNET;
  return host == "localhost" || host == "[::1]";
}

// One line that a terminal and a log can hold.
std::string oneLine(std::string_view text) {
  std::string line(text.substr(0, kMostOfAnError));
  std::ranges::replace_if(
      line, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, ' ');
  return line;
}

Status cancelled() {
  return {Status::Code::cancelled, "The transfer was cancelled"};
}

Status statusOfFailure(const HttpResponse& response) {
  if (response.failure == Failure::cancelled) return cancelled();
  const auto* found = std::ranges::find(kFailureTexts, response.failure, &FailureText::failure);
  const bool known = found != kFailureTexts.end();
  std::string text(known ? found->text : "The request to Dropbox failed");
  text += ": " + oneLine(response.error);
  return {known ? found->code : Status::Code::inputOutput, std::move(text)};
}

// Of an answer that came whole.
Status statusOfAnswer(const HttpResponse& response, const boost::json::value& json) {
  const long code = response.head.status;
  if (code >= 200 && code < 300) return {};
  const std::string summary = textAt(json, "error_summary");
  switch (code) {
    case 401:
      return {Status::Code::unavailable, "Dropbox does not accept the sign-in any more; link the account again"};
    case 429: return {Status::Code::busy, "Dropbox asks for less; try again later"};
    default: break;
  }
  if (code >= 500) return {Status::Code::unavailable, fmt::format("Dropbox has trouble itself ({})", code)};
  const auto* found = std::ranges::find_if(
      kErrorTexts, [&](const ErrorText& entry) { return summary.find(entry.summary) != std::string::npos; });
  if (found != kErrorTexts.end()) return {found->code, std::string(found->text)};
  return {
      code == 403 ? Status::Code::accessDenied : Status::Code::inputOutput,
      fmt::format("Dropbox refused the request ({}): {}", code, oneLine(summary.empty() ? response.body : summary))};
}

DropboxAnswer answerOf(HttpResponse response) {
  DropboxAnswer answer;
  answer.response = std::move(response);
  if (answer.response.failure != Failure::none) {
    answer.status = statusOfFailure(answer.response);
    return answer;
  }
  answer.json = parsedJson(answer.response.body);
  answer.status = statusOfAnswer(answer.response, answer.json);
  return answer;
}

bool failsForTheMoment(const DropboxAnswer& answer) {
  if (answer.response.failure == Failure::broken) return true;
  if (answer.response.failure != Failure::none) return false;
  const long code = answer.response.head.status;
  const std::string summary = textAt(answer.json, "error_summary");
  return code == 429 || code >= 500 || summary.find("too_many_write_operations") != std::string::npos ||
         summary.find("content_hash_mismatch") != std::string::npos;
}

// What the service asks for; nothing where it does not say.
std::optional<std::chrono::milliseconds> pauseAskedFor(const HttpHead& head) {
  const std::string text = head.header("retry-after");
  int seconds = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  if (error != std::errc() || seconds < 0) return std::nullopt;
  return std::chrono::seconds(seconds);
}

// False when it was asked to stop.
bool pauseFor(std::chrono::milliseconds time, const std::stop_token& stop) {
  std::mutex mutex;
  std::unique_lock lock(mutex);
  std::condition_variable_any ended;
  ended.wait_for(lock, stop, time, [] { return false; });
  return !stop.stop_requested();
}

}  // namespace

DropboxAddresses dropboxAddresses(const std::string& base, const std::string& caFile, Status& status) {
  DropboxAddresses addresses;
  addresses.caFile = caFile;
  status = {};
  if (base.empty()) return addresses;
  const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> url(curl_url(), &curl_url_cleanup);
  const auto part = [&](CURLUPart which) {
    char* text = nullptr;
    std::string copy;
    if (curl_url_get(url.get(), which, &text, 0) == CURLUE_OK) copy = text;
    curl_free(text);
    return copy;
  };
  const bool parsed = curl_url_set(url.get(), CURLUPART_URL, base.c_str(), 0) == CURLUE_OK;
  addresses.onThisMachine = parsed && isLoopback(part(CURLUPART_HOST));
  const std::string scheme = part(CURLUPART_SCHEME);
  if (!parsed || (scheme != "https" && !(scheme == "http" && addresses.onThisMachine))) {
    status = {Status::Code::invalidArgument,
              "VARNOK_DROPBOX_API is not an https address, nor an http one of this machine: " + oneLine(base)};
    return addresses;
  }
  addresses.api = base.substr(0, base.find_last_not_of('/') + 1);
  addresses.content = addresses.api;
  addresses.page = addresses.api + "/oauth2/authorize";
  return addresses;
}

CurlConnection DropboxService::makeConnection() const {
  const DropboxAddresses& addresses = settings_.addresses;
  return CurlConnection(
      {.caFile = addresses.caFile, .plainAllowed = addresses.onThisMachine, .direct = addresses.onThisMachine});
}

DropboxAnswer DropboxService::call(CurlConnection& connection, const std::function<HttpRequest()>& request,
                                   const std::stop_token& stop) {
  DropboxTries tries;
  return call(connection, request, stop, tries);
}

DropboxAnswer DropboxService::call(CurlConnection& connection, const std::function<HttpRequest()>& request,
                                   const std::stop_token& stop, DropboxTries& tries) {
  bool refreshed = false;
  for (;;) {
    std::string usedToken;
    DropboxAnswer answer = callOnce(connection, request(), stop, usedToken);
    if (answer.response.head.status == 401 && !refreshed) {
      refreshed = true;
      answer.status = refreshTokens(usedToken, stop);
      if (!answer.status.ok()) return answer;
      continue;
    }
    if (answer.status.ok() || !pausedForAnother(answer, tries, stop)) return answer;
  }
}

bool DropboxService::pausedForAnother(DropboxAnswer& answer, DropboxTries& tries, const std::stop_token& stop) const {
  if (!failsForTheMoment(answer) || !tries.another()) return false;
  const auto pause = pauseAskedFor(answer.response.head).value_or(settings_.firstPause * (1 << (tries.made() - 1)));
  if (pause > kLongestPause) {
    answer.status = {Status::Code::busy, fmt::format("Dropbox asks for a pause of {} minutes",
                                                     std::chrono::ceil<std::chrono::minutes>(pause).count())};
    return false;
  }
  if (pauseFor(pause, stop)) return true;
  answer.status = cancelled();
  return false;
}

DropboxAnswer DropboxService::callOnce(CurlConnection& connection, HttpRequest request, const std::stop_token& stop,
                                       std::string& usedToken) {
  DropboxAnswer answer;
  auto tokens = account_.tokens(answer.status);
  // Asking first saves an upload that would be refused when it is through.
  if (tokens && static_cast<double>(tokens->expires) <= clock_.now()) {
    answer.status = refreshTokens(tokens->accessToken, stop);
    if (answer.status.ok()) tokens = account_.tokens(answer.status);
  }
  if (!answer.status.ok()) {
    answer.response.failure = Failure::other;
    return answer;
  }
  usedToken = tokens->accessToken;
  request.headers.push_back("Authorization: Bearer " + usedToken);
  return answerOf(connection.perform(request, stop));
}

DropboxAnswer DropboxService::callJson(CurlConnection& connection, const std::string& name,
                                       const boost::json::value& argument, const std::stop_token& stop) {
  HttpRequest request;
  request.url = settings_.addresses.api + "/2/" + name;
  request.headers = {"Content-Type: application/json"};
  request.body = asciiJson(argument);
  return call(
      connection, [&request] { return request; }, stop);
}

HttpRequest DropboxService::contentRequest(const std::string& name, const boost::json::value& argument) const {
  HttpRequest request;
  request.url = settings_.addresses.content + "/2/" + name;
  request.headers = {"Dropbox-API-Arg: " + asciiJson(argument), "Content-Type: application/octet-stream"};
  return request;
}

Status DropboxService::askForTokens(const Fields& fields, DropboxTokens& tokens, const std::stop_token& stop) {
  HttpRequest request;
  request.url = settings_.addresses.api + "/oauth2/token";
  request.headers = {"Content-Type: application/x-www-form-urlencoded"};
  request.body = formEncoded(fields);
  CurlConnection connection = makeConnection();
  DropboxTries tries;
  DropboxAnswer answer;
  do {
    answer = answerOf(connection.perform(request, stop));
  } while (!answer.status.ok() && pausedForAnother(answer, tries, stop));
  if (textAt(answer.json, "error") == "invalid_grant") {
    tokens.refreshToken.clear();
    return {Status::Code::unavailable, "Dropbox does not accept the sign-in any more; link the account again"};
  }
  if (!answer.status.ok()) return answer.status;
  tokens.accessToken = textAt(answer.json, "access_token");
  if (tokens.accessToken.empty()) return {Status::Code::corrupt, "Dropbox gave no token"};
  const std::int64_t lifetime = numberAt(answer.json, "expires_in");
  tokens.expires = lifetime > 0 ? static_cast<std::int64_t>(clock_.now()) + lifetime : DropboxTokens::kNever;
  if (std::string token = textAt(answer.json, "refresh_token"); !token.empty()) tokens.refreshToken = std::move(token);
  if (std::string account = textAt(answer.json, "account_id"); !account.empty()) tokens.accountID = std::move(account);
  return {};
}

DropboxService::Fields DropboxService::refreshFields(const DropboxTokens& tokens) const {
  return {{"grant_type", "refresh_token"}, {"refresh_token", tokens.refreshToken}, {"client_id", settings_.appKey}};
}

Status DropboxService::link(const std::string& code, const std::string& verifier, const std::stop_token& stop) {
  DropboxTokens tokens;
  Status status = askForTokens({{"grant_type", "authorization_code"},
                                {"code", code},
                                {"code_verifier", verifier},
                                {"client_id", settings_.appKey},
                                {"redirect_uri", redirectAddress(settings_.appKey)}},
                               tokens, stop);
  if (!status.ok()) return status;
  if (tokens.refreshToken.empty()) return {Status::Code::corrupt, "Dropbox gave no token that lasts"};
  return account_.link(tokens);
}

Status DropboxService::refreshTokens(const std::string& usedToken, const std::stop_token& stop) {
  const std::scoped_lock lock(refreshing_);
  Status status;
  auto tokens = account_.tokens(status);
  if (!tokens || tokens->accessToken != usedToken) return status;
  status = askForTokens(refreshFields(*tokens), *tokens, stop);
  if (status.ok()) {
    account_.refresh(*tokens);
  } else if (tokens->refreshToken.empty()) {
    // The user has taken the permission back: what is kept is worth nothing.
    std::optional<DropboxTokens> worthless;
    account_.unlink(worthless).ignore("the next try comes to the same end");
    account_.clearKeyring();
  }
  return status;
}

void DropboxService::revoke(DropboxTokens tokens, const std::stop_token& stop) {
  if (static_cast<double>(tokens.expires) <= clock_.now()) {
    const Status status = askForTokens(refreshFields(tokens), tokens, stop);
    if (!status.ok()) return;
  }
  HttpRequest request;
  request.url = settings_.addresses.api + "/2/auth/token/revoke";
  request.headers = {"Authorization: Bearer " + tokens.accessToken};
  makeConnection().perform(request, stop);
}

}  // namespace varnok
