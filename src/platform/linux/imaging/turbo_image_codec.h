// TurboImageCodec: JPEG and PNG through libjpeg-turbo and libpng.
//
// A picture is read row by row and redrawn into the target while it arrives; a
// JPEG is reduced by its own transform first. A 12-megapixel photo takes well
// under a tenth of a second and a few megabytes. Colour profiles and gamma are
// ignored: contact photos are sRGB with hardly an exception.
//
// Quality. 0.0 is the JPEG library's setting 25, where a face 960 pixels high is
// plainly itself in some 15 to 25 kB; below 15 skin falls into blocks and changes
// its colour. 1.0 is setting 95, above which files grow and nothing shows. What
// lies between is in proportion. Colour is stored at half the resolution
// throughout.
//
// Threads. Holds nothing but its limits; any number of calls at once.
//
// Failure. A truncated or damaged JPEG gives as much picture as can be decoded; a
// damaged PNG gives nothing. Nothing throws.

#pragma once

#include "platform/image_codec.h"

namespace varnok {

struct ImageLimits {
  // Pixels of any picture. Above this is no contact photo, and decoding takes
  // seconds; cameras' full resolution of 108 megapixels still passes.
  std::int64_t pixels = 120'000'000;
  // Pixels of a picture that decoding holds in memory whole (interlaced PNG,
  // progressive JPEG), at up to 8 bytes each: a third of a gigabyte at the worst.
  std::int64_t pixelsHeldWhole = 40'000'000;
};

class TurboImageCodec : public ImageCodec {
 public:
  explicit TurboImageCodec(ImageLimits limits = {}) : limits_(limits) {}

  std::optional<ImageSize> sizeOf(std::string_view bytes) const override;
  // A side of `target` below one pixel counts as one: a long strip reduced in
  // proportion would otherwise vanish.
  std::optional<Image> decode(std::string_view bytes, ImageSize target) const override;
  std::optional<std::string> encodeJPEG(const Image& image, double quality) const override;

 private:
  ImageLimits limits_;
};

}  // namespace varnok
