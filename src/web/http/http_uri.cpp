#include "web/http/http_uri.h"

#include "web/http/http_request.h"

namespace varnok {
namespace {

constexpr std::string_view kScheme = "http://";

bool hasScheme(std::string_view uri) {
  return equalsIgnoringCase(uri.substr(0, kScheme.size()), kScheme);
}

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

std::optional<std::string_view> authorityOfURI(std::string_view uri) {
  if (!hasScheme(uri)) return std::nullopt;
  uri.remove_prefix(kScheme.size());
  return uri.substr(0, uri.find_first_of("/?#"));
}

std::optional<std::string> decodedPathOfURI(std::string_view uri) {
  if (const auto authority = authorityOfURI(uri)) {
    uri.remove_prefix(kScheme.size() + authority->size());
    if (uri.empty() || uri.front() != '/') return "/";
  }
  uri = uri.substr(0, uri.find_first_of("?#"));
  if (uri.empty() || uri.front() != '/') return std::nullopt;
  std::string path;
  path.reserve(uri.size());
  for (std::size_t i = 0; i < uri.size(); ++i) {
    char c = uri[i];
    if (c == '%') {
      const int high = i + 2 < uri.size() ? hexDigit(uri[i + 1]) : -1;
      const int low = i + 2 < uri.size() ? hexDigit(uri[i + 2]) : -1;
      if (high < 0 || low < 0) return std::nullopt;
      c = static_cast<char>(high * 16 + low);
      i += 2;
    }
    if (c == '\0') return std::nullopt;
    path += c;
  }
  return path;
}

std::string standardizedPath(std::string_view path) {
  std::string result;
  while (!path.empty()) {
    const std::size_t slash = path.find('/');
    const std::string_view component = path.substr(0, slash);
    path.remove_prefix(slash == std::string_view::npos ? path.size() : slash + 1);
    if (component.empty() || component == ".") continue;
    if (component == "..") {
      result.resize(result.empty() ? 0 : result.rfind('/'));
    } else {
      result.append("/").append(component);
    }
  }
  return result.empty() ? "/" : result;
}

bool isInsideFolder(std::string_view path, std::string_view folder) {
  if (folder.empty()) return false;
  if (folder == "/") return true;
  return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

}  // namespace varnok
