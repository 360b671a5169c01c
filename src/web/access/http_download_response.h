#pragma once

#include <string>
#include <utility>

#include "web/http/http_file_response.h"

namespace varnok {

// A backup on its way to the browser, which is to keep it and not to show it.
class HttpDownloadResponse : public HTTPFileResponse {
 public:
  HttpDownloadResponse(const std::string& path, std::string fileName)
      : HTTPFileResponse(path), fileName_(std::move(fileName)) {}

  // Quirk: every backup is said to be a vCard, also a CSV file or an archive.
  HTTPFields httpHeaders() const override {
    return {{"Content-Type", "text/x-vcard"},
            {"Content-Disposition", "inline; filename=" + fileName_},
            {"Pragma", "public"},
            {"Expires", "0"},
            {"Cache-Control", "must-revalidate, post-check=0, pre-check=0"}};
  }

 private:
  std::string fileName_;
};

}  // namespace varnok
