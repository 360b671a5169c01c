// Exif: the orientation that a camera notes beside its picture.

#pragma once

#include <cstdint>
#include <string_view>

namespace varnok {

// How a stored picture is turned upright. The upright pixel (x, y) is the stored
// pixel at (x, y), or at (y, x) when `transposed`, counted from the other side
// along each axis that is mirrored.
struct Orientation {
  bool transposed = false;  // Width and height change places.
  bool mirrorColumns = false;
  bool mirrorRows = false;

  bool operator==(const Orientation&) const = default;
};

// Reads tag 0x0112 from `tiff`, the Exif block from its byte order mark on. The
// picture as stored when the block is damaged, has no such tag, or the tag holds
// none of the eight values. Any bytes may be passed.
Orientation exifOrientation(std::string_view tiff);

}  // namespace varnok
