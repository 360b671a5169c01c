#pragma once

#include <string>
#include <utility>

#include "web/http/http_response.h"

namespace varnok {

// 302 to another path of this server.
class HTTPRedirectResponse : public HTTPResponse {
 public:
  explicit HTTPRedirectResponse(std::string path) : path_(std::move(path)) {}

  int status() const override { return 302; }
  HTTPFields httpHeaders() const override { return {{"Location", path_}}; }
  HTTPBody body() override { return std::string_view(); }

 private:
  std::string path_;
};

}  // namespace varnok
