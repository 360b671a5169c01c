#include "web/http/http_data_response.h"

#include <utility>

namespace varnok {

HTTPDataResponse::HTTPDataResponse(std::string data, bool isJSON) : data_(std::move(data)), isJSON_(isJSON) {}

HTTPFields HTTPDataResponse::httpHeaders() const {
  if (!isJSON_) return {};
  return {{"Content-Type", "application/json"}, {"Accept", "application/json"}};
}

HTTPErrorResponse::HTTPErrorResponse(int status, HTTPFields fields) : status_(status), fields_(std::move(fields)) {}

}  // namespace varnok
