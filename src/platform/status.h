// Status: whether something could be done, and if not, why.
//
// A Status must be looked at. Where the rule is to carry on, ignore() takes the
// reason in words. What merely is not there is a std::optional, never a Status.

#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace varnok {

class [[nodiscard]] Status {
 public:
  enum class Code {
    ok,
    notFound,
    invalidArgument,
    accessDenied,
    inputOutput,
    noSpace,
    corrupt,
    newerVersion,  // Written by a newer version of this program.
    busy,          // Another process or handle holds it.
    cancelled,
    unavailable,  // The service that would do it is not there.
  };

  Status() = default;
  // `message` is one line for a person: what could not be done, and the cause.
  Status(Code code, std::string message) : code_(code), message_(std::move(message)) {}

  bool ok() const { return code_ == Code::ok; }
  Code code() const { return code_; }
  const std::string& message() const { return message_; }

  void ignore(std::string_view /*reason*/) const {}

 private:
  Code code_ = Code::ok;
  std::string message_;
};

}  // namespace varnok
