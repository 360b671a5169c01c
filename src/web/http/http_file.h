#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "web/http/http_response.h"

namespace varnok {

// An open regular file whose length is fixed at the moment of opening; or none.
class HTTPFile {
 public:
  HTTPFile() = default;
  // Takes over `descriptor`; it is closed at once when it is no regular file.
  explicit HTTPFile(int descriptor);
  HTTPFile(const HTTPFile&) = delete;
  HTTPFile& operator=(const HTTPFile&) = delete;
  HTTPFile(HTTPFile&& other) noexcept;
  HTTPFile& operator=(HTTPFile&& other) noexcept;
  ~HTTPFile();

  // Opens for reading, following links; not valid when that fails.
  static HTTPFile open(const std::string& path);

  bool valid() const { return descriptor_ >= 0; }
  int descriptor() const { return descriptor_; }
  std::uint64_t length() const { return length_; }
  const HTTPValidators& validators() const { return validators_; }

  // Reads from `offset` until `size` bytes are there; false when the file ends
  // before or cannot be read.
  bool read(std::uint64_t offset, char* to, std::size_t size) const;

 private:
  int descriptor_ = -1;
  std::uint64_t length_ = 0;
  HTTPValidators validators_;
};

}  // namespace varnok
