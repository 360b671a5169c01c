#include "web/http/http_file_response.h"

#include <utility>

namespace varnok {
namespace {

bool isJSON(std::string_view path) {
  return path.ends_with("json");
}

}  // namespace

HTTPFields fieldsForPath(std::string_view path) {
  if (isJSON(path)) return {{"Content-Type", "application/json"}, {"Accept", "application/json"}};
  if (path.ends_with("css")) return {{"Content-Type", "text/css"}};
  return {};
}

std::optional<HTTPValidators> validatorsForPath(std::string_view path, const HTTPFile& file) {
  if (isJSON(path)) return std::nullopt;
  return file.validators();
}

HTTPFileResponse::HTTPFileResponse(const std::string& path) : file_(HTTPFile::open(path)), path_(path) {}

HTTPFileResponse::HTTPFileResponse(HTTPFile file, std::string path) : file_(std::move(file)), path_(std::move(path)) {}

HTTPFields HTTPFileResponse::httpHeaders() const {
  return fieldsForPath(path_);
}

std::optional<HTTPValidators> HTTPFileResponse::validators() const {
  return validatorsForPath(path_, file_);
}

}  // namespace varnok
