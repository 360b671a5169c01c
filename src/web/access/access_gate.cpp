#include "web/access/access_gate.h"

#include <algorithm>

#include <fmt/format.h>

#include "platform/check.h"
#include "platform/text_key.h"
#include "web/http/http_data_response.h"
#include "web/http/http_redirect_response.h"

namespace varnok {
namespace {

constexpr std::uint32_t kCodes = 1'000'000;
constexpr int kMostTries = 5;
constexpr double kRefusalSeconds = 30;
constexpr std::string_view kCookieName = "varnok_access=";

// Stands by itself: a browser that is not let in gets nothing else. Texts have a
// direction each, so that any language reads right.
constexpr std::string_view kPage = R"(<!DOCTYPE html>
<html>
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>{name}</title>
<style>
:root {{ color-scheme: light dark; font: 1.0625rem/1.5 system-ui, sans-serif; }}
body {{ display: grid; min-height: 100vh; margin: 0; place-items: center; }}
form {{ display: grid; gap: 1rem; width: min(20rem, 90vw); text-align: center; }}
h1, p {{ margin: 0; }}
input {{ font: 600 2rem/1.5 ui-monospace, monospace; letter-spacing: .25em; text-align: center; min-width: 0; }}
button {{ font: inherit; padding: .6rem; }}
</style>
</head>
<body>
<main>
<form method="post" action="{path}">
<h1 dir="auto">{title}</h1>
<p dir="auto" id="info">{info}</p>
<p dir="auto" role="alert">{problem}</p>
<input name="code" dir="ltr" inputmode="numeric" autocomplete="one-time-code" maxlength="6" pattern="[0-9]{{6}}" required autofocus aria-label="{title}" aria-describedby="info">
<button dir="auto">{button}</button>
</form>
</main>
</body>
</html>
)";

class PageResponse : public HTTPDataResponse {
 public:
  PageResponse(int status, std::string page) : HTTPDataResponse(std::move(page)), status_(status) {}

  int status() const override { return status_; }
  HTTPFields httpHeaders() const override {
    HTTPFields fields{{"Content-Type", "text/html; charset=utf-8"},
                      {"Cache-Control", "no-store"},
                      {"Content-Security-Policy",
                       "default-src 'none'; style-src 'unsafe-inline'; form-action 'self'; base-uri 'none'; "
                       "frame-ancestors 'none'"}};
    if (status_ == 429) fields.emplace_back("Retry-After", fmt::format("{}", kRefusalSeconds));
    return fields;
  }

 private:
  int status_;
};

// To the first page, with the cookie that opens it.
class AdmissionResponse : public HTTPRedirectResponse {
 public:
  explicit AdmissionResponse(std::string cookie) : HTTPRedirectResponse("/"), cookie_(std::move(cookie)) {}

  HTTPFields httpHeaders() const override {
    HTTPFields fields = HTTPRedirectResponse::httpHeaders();
    fields.emplace_back("Set-Cookie", cookie_ + "; Path=/; HttpOnly; SameSite=Strict");
    fields.emplace_back("Cache-Control", "no-store");
    return fields;
  }

 private:
  std::string cookie_;
};

// Takes as long for a secret that differs late as for one that differs early.
bool equalSecrets(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  unsigned difference = 0;
  for (std::size_t i = 0; i < a.size(); ++i)
    difference |= static_cast<unsigned>(a[i] ^ b[i]);
  return difference == 0;
}

}  // namespace

AccessGate::AccessGate(RandomSource& random, const Clock& clock, const TextCatalog& texts)
    : clock_(clock), texts_(texts), code_(fmt::format("{:06}", random.next() % kCodes)), cookie_(kCookieName) {
  for (int i = 0; i < 4; ++i)
    cookie_ += fmt::format("{:08x}", random.next());
}

bool AccessGate::admits(const HTTPRequest& request) const {
  for (const auto& [name, value] : request.fields) {
    if (!equalsIgnoringCase(name, "Cookie")) continue;
    std::string_view rest = value;
    while (!rest.empty()) {
      const std::size_t end = std::min(rest.find(';'), rest.size());
      std::string_view cookie = rest.substr(0, end);
      cookie.remove_prefix(std::min(cookie.find_first_not_of(' '), cookie.size()));
      if (equalSecrets(cookie, cookie_)) return true;
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
  }
  return false;
}

AccessGate::Verdict AccessGate::judge(std::string_view code) {
  const std::scoped_lock lock(mutex_);
  if (wrongTries_ >= kMostTries) {
    const double waited = clock_.now() - refusedSince_;
    // A clock that was set back does not keep anybody out for longer.
    if (waited >= 0 && waited < kRefusalSeconds) return Verdict::refused;
    wrongTries_ = 0;
  }
  if (equalSecrets(code, code_)) {
    wrongTries_ = 0;
    return Verdict::right;
  }
  if (++wrongTries_ == kMostTries) refusedSince_ = clock_.now();
  return Verdict::wrong;
}

std::unique_ptr<HTTPResponse> AccessGate::form() const {
  return page(403, "");
}

std::unique_ptr<HTTPResponse> AccessGate::answer(std::string_view body) {
  constexpr std::string_view kField = "code=";
  const std::string_view code = body.starts_with(kField) ? body.substr(kField.size()) : std::string_view();
  switch (judge(code)) {
    case Verdict::right: return std::make_unique<AdmissionResponse>(cookie_);
    case Verdict::wrong: return page(403, text_key::ACCESS_CODE_WRONG);
    case Verdict::refused: return page(429, text_key::ACCESS_CODE_WAIT);
  }
  VARNOK_UNREACHABLE();
}

std::unique_ptr<HTTPResponse> AccessGate::page(int status, std::string_view problemKey) const {
  using fmt::arg;
  const std::string name = texts_.text(text_key::Varnok);
  const std::string title = texts_.text(text_key::ACCESS_CODE);
  const std::string info = texts_.text(text_key::ACCESS_CODE_INFO);
  const std::string problem = problemKey.empty() ? std::string() : texts_.text(problemKey);
  const std::string button = texts_.text(text_key::OK);
  return std::make_unique<PageResponse>(
      status, fmt::format(kPage, arg("name", name), arg("path", kPath), arg("title", title), arg("info", info),
                          arg("problem", problem), arg("button", button)));
}

}  // namespace varnok
