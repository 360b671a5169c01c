#include "web/http/http_connection.h"

#include <sys/stat.h>

#include "web/http/http_static_files.h"
#include "web/http/http_uri.h"

namespace varnok {
namespace {

enum class FileKind { none, directory, other };

FileKind kindOf(const std::string& path) {
  struct stat state {};
  if (::stat(path.c_str(), &state) != 0) return FileKind::none;
  return S_ISDIR(state.st_mode) ? FileKind::directory : FileKind::other;
}

}  // namespace

bool HTTPConnection::supportsMethod(const std::string& method, const std::string& /*path*/) {
  return method == "GET" || method == "HEAD" || method == "POST";
}

bool HTTPConnection::expectsRequestBodyFromMethod(const std::string& method, const std::string& /*path*/) {
  return method == "POST" || method == "PUT";
}

std::uint64_t HTTPConnection::largestBody(const std::string& /*method*/, const std::string& /*path*/) {
  return UINT64_MAX;
}

std::unique_ptr<HTTPResponse> HTTPConnection::refusal(const HTTPRequest& /*request*/) {
  return nullptr;
}

bool HTTPConnection::mayTakeLong(const std::string& method, const std::string& path) {
  return expectsRequestBodyFromMethod(method, path);
}

void HTTPConnection::prepareForBodyWithSize(std::uint64_t /*size*/) {}

void HTTPConnection::processDataChunk(std::string_view /*chunk*/) {}

std::unique_ptr<HTTPResponse> HTTPConnection::httpResponseForMethod(const std::string& /*method*/,
                                                                    const std::string& uri) {
  // One look at the disk is enough for a file that is kept.
  if (config_->files) {
    if (const auto path = fullPathOfURI(uri)) {
      if (auto response = config_->files->keptResponse(*path)) return response;
    }
  }
  const auto path = filePathForURI(uri);
  if (!path) return nullptr;
  if (config_->files) return config_->files->response(*path);
  return HTTPStaticFiles(config_->documentRoot).response(*path);
}

std::optional<std::string> HTTPConnection::fullPathOfURI(const std::string& uri) const {
  const auto decoded = decodedPathOfURI(uri);
  if (!decoded) return std::nullopt;
  std::string path = standardizedPath(config_->documentRoot + *decoded);
  if (!isInsideFolder(path, config_->documentRoot)) return std::nullopt;
  return path;
}

std::string HTTPConnection::pathOfURI(const std::string& uri) const {
  auto path = fullPathOfURI(uri);
  if (!path) return "";
  if (config_->documentRoot != "/") path->erase(0, config_->documentRoot.size());
  return path->empty() ? "/" : *path;
}

std::optional<std::string> HTTPConnection::filePathForURI(const std::string& uri) const {
  auto path = fullPathOfURI(uri);
  if (!path || kindOf(*path) != FileKind::directory) return path;
  for (const std::string& name : directoryIndexFileNames()) {
    std::string index = standardizedPath(*path + "/" + name);
    if (kindOf(index) != FileKind::none) return index;
  }
  return std::nullopt;
}

const std::vector<std::string>& HTTPConnection::directoryIndexFileNames() const {
  static const std::vector<std::string> kNames{"edit.html"};
  return kNames;
}

}  // namespace varnok
