#pragma once

#include <string>

#include "web/http/http_file.h"
#include "web/http/http_response.h"

namespace varnok {

// A file that is read in blocks, away from the thread that serves the other
// connections. Adds no fields. Follows links.
class HTTPAsyncFileResponse : public HTTPResponse, protected HTTPBodyStream {
 public:
  explicit HTTPAsyncFileResponse(const std::string& path) : file_(HTTPFile::open(path)) {}

  bool exists() const override { return file_.valid(); }
  HTTPBody body() override { return static_cast<HTTPBodyStream*>(this); }

 protected:
  std::optional<std::uint64_t> length() const override { return file_.length(); }
  bool read(std::string& piece) override;

 private:
  HTTPFile file_;
  std::uint64_t offset_ = 0;
};

}  // namespace varnok
