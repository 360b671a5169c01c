// An ImageCodec whose pictures are text: "WxH" decodes, anything else does not.
// An encoded picture reads "jpeg WxH at Q".

#pragma once

#include <charconv>
#include <string>

#include "platform/image_codec.h"

namespace varnok {

class FakeImageCodec : public ImageCodec {
 public:
  std::optional<ImageSize> sizeOf(std::string_view bytes) const override {
    ImageSize size;
    const char* end = bytes.data() + bytes.size();
    const auto width = std::from_chars(bytes.data(), end, size.width);
    if (width.ec != std::errc() || width.ptr == end || *width.ptr != 'x') return std::nullopt;
    const auto height = std::from_chars(width.ptr + 1, end, size.height);
    return height.ec == std::errc() && height.ptr == end ? std::optional(size) : std::nullopt;
  }
  std::optional<Image> decode(std::string_view bytes, ImageSize target) const override {
    return sizeOf(bytes) ? std::optional(Image{target, {}}) : std::nullopt;
  }
  std::optional<std::string> encodeJPEG(const Image& image, double quality) const override {
    return "jpeg " + std::to_string(image.size.width) + "x" + std::to_string(image.size.height) + " at " +
           std::to_string(quality).substr(0, 3);
  }
};

}  // namespace varnok
