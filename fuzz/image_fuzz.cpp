// Any bytes as a picture: its size, then the picture drawn small.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/linux/imaging/turbo_image_codec.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr varnok::ImageSize kTarget{24, 16};
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const varnok::TurboImageCodec codec({.pixels = 1 << 16, .pixelsHeldWhole = 1 << 16});
  const auto pictureSize = codec.sizeOf(bytes);
  const auto image = codec.decode(bytes, kTarget);
  if (pictureSize && (pictureSize->width < 1 || pictureSize->height < 1)) std::abort();
  if (image && (!pictureSize || image->size != kTarget)) std::abort();
  if (image && !codec.encodeJPEG(*image, 0.0)) std::abort();
  return 0;
}
