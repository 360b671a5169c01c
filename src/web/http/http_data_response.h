#pragma once

#include <string>

#include "web/http/http_response.h"

namespace varnok {

// Bytes in memory.
class HTTPDataResponse : public HTTPResponse {
 public:
  // With `isJSON` both "Content-Type" and "Accept" say "application/json".
  explicit HTTPDataResponse(std::string data, bool isJSON = false);

  HTTPFields httpHeaders() const override;
  HTTPBody body() override { return std::string_view(data_); }

 private:
  std::string data_;
  bool isJSON_;
};

// No body: a status and the fields that explain it.
class HTTPErrorResponse : public HTTPResponse {
 public:
  explicit HTTPErrorResponse(int status, HTTPFields fields = {});

  int status() const override { return status_; }
  HTTPFields httpHeaders() const override { return fields_; }
  HTTPBody body() override { return std::string_view(); }

 private:
  int status_;
  HTTPFields fields_;
};

}  // namespace varnok
