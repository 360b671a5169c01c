#include "web/http/http_request.h"

#include <algorithm>

namespace varnok {
namespace {

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

std::string lowerCased(std::string_view text) {
  std::string result(text);
  std::ranges::transform(result, result.begin(), lower);
  return result;
}

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, lower, lower);
}

std::optional<std::string_view> HTTPRequest::field(std::string_view name) const {
  for (const auto& [key, value] : fields) {
    if (equalsIgnoringCase(key, name)) return value;
  }
  return std::nullopt;
}

}  // namespace varnok
