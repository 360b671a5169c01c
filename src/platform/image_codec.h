// ImageCodec: decoding, reducing and encoding of contact photos. Any thread.
//
// Quality 0.0 is the bottom of this scale, which keeps a face recognisable; see
// the backend for the codec's own setting.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace varnok {

enum class ImageType { jpeg, png, other };

// What the first bytes say. Never looks further than the signature.
ImageType imageTypeOf(std::string_view bytes);

struct ImageSize {
  int width = 0;  // Pixels.
  int height = 0;

  bool operator==(const ImageSize&) const = default;
};

// A decoded picture, upright, opaque.
struct Image {
  ImageSize size;
  std::vector<std::uint8_t> rgb;  // Three bytes a pixel, rows from the top, no padding.
};

class ImageCodec {
 public:
  virtual ~ImageCodec() = default;

  // The size of the upright picture, from its header alone. Nothing when the
  // header cannot be read or promises more pixels than the codec decodes.
  virtual std::optional<ImageSize> sizeOf(std::string_view bytes) const = 0;

  // The picture redrawn into `target`. Orientation is honoured, transparent
  // pixels lie on white. Nothing when the bytes are no picture that this codec
  // decodes, or are too large; never fails in another way.
  virtual std::optional<Image> decode(std::string_view bytes, ImageSize target) const = 0;

  // `quality` from 0.0 to 1.0. Nothing when memory runs out.
  virtual std::optional<std::string> encodeJPEG(const Image& image, double quality) const = 0;
};

}  // namespace varnok
