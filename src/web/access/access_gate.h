// AccessGate: lets in those who have typed the six digits that the device shows.
//
// A browser that is not let in gets the one page that asks for the code. Whoever
// sends the right one gets a cookie that holds until the gate goes; after five
// wrong ones every code is refused for half a minute, whoever sends it. Those who
// are in notice nothing of that.
//
// Threads. Any.

#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/clock.h"
#include "platform/random.h"
#include "platform/text_catalog.h"
#include "web/http/http_request.h"
#include "web/http/http_response.h"

namespace varnok {

class AccessGate {
 public:
  // Where the form sends the code.
  static constexpr std::string_view kPath = "/access";

  // Draws a code and a cookie. `clock` and `texts` must outlive the gate.
  AccessGate(RandomSource& random, const Clock& clock, const TextCatalog& texts);

  const std::string& code() const { return code_; }

  bool admits(const HTTPRequest& request) const;

  // The page that asks for the code, with status 403.
  std::unique_ptr<HTTPResponse> form() const;

  // The answer to a sent form, whose bytes are `body`.
  std::unique_ptr<HTTPResponse> answer(std::string_view body);

 private:
  enum class Verdict { right, wrong, refused };
  Verdict judge(std::string_view code);
  std::unique_ptr<HTTPResponse> page(int status, std::string_view problemKey) const;

  const Clock& clock_;
  const TextCatalog& texts_;
  std::string code_;
  std::string cookie_;
  std::mutex mutex_;
  int wrongTries_ = 0;
  double refusedSince_ = 0;  // Seconds since 1970; counts while wrongTries_ is at its limit.
};

}  // namespace varnok
