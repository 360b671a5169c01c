#include "web/http/http_async_file_response.h"

#include <algorithm>

namespace varnok {
namespace {

constexpr std::uint64_t kBlockSize = 65'536;  // Bytes.

}  // namespace

bool HTTPAsyncFileResponse::read(std::string& piece) {
  const std::size_t size = std::min(kBlockSize, file_.length() - offset_);
  const std::size_t before = piece.size();
  piece.resize(before + size);
  if (!file_.read(offset_, piece.data() + before, size)) return false;
  offset_ += size;
  return true;
}

}  // namespace varnok
