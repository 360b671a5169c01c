#include "platform/image_codec.h"

namespace varnok {

ImageType imageTypeOf(std::string_view bytes) {
  using namespace std::string_view_literals;
  if (bytes.starts_with("\xFF\xD8\xFF"sv)) return ImageType::jpeg;
  if (bytes.starts_with("\x89PNG\r\n\x1A\n"sv)) return ImageType::png;
  return ImageType::other;
}

}  // namespace varnok
