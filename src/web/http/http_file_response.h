// HTTPFileResponse: a regular file, sent from its descriptor. Its length is fixed
// when it is opened. A file that was cut short since then ends the connection.

#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "web/http/http_file.h"
#include "web/http/http_response.h"

namespace varnok {

class HTTPFileResponse : public HTTPResponse {
 public:
  // Opens `path`, following links. exists() is false when that is not a regular
  // file or cannot be opened.
  explicit HTTPFileResponse(const std::string& path);

  // A file that is already open. `path` is only looked at for its extension.
  HTTPFileResponse(HTTPFile file, std::string path);

  bool exists() const override { return file_.valid(); }

  // Quirk: a path that ends in "json" gets "Content-Type" and also "Accept"
  // "application/json"; one that ends in "css" gets "text/css"; no other gets a
  // content type. The browser pages rely on it.
  HTTPFields httpHeaders() const override;

  std::optional<HTTPValidators> validators() const override;

  HTTPBody body() override { return HTTPFileBody{file_.descriptor(), file_.length()}; }

 private:
  HTTPFile file_;
  std::string path_;
};

// The fields that a file's name asks for, as httpHeaders() describes.
HTTPFields fieldsForPath(std::string_view path);

// None for JSON, which is made anew for each request.
std::optional<HTTPValidators> validatorsForPath(std::string_view path, const HTTPFile& file);

}  // namespace varnok
