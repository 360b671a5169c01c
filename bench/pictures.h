// Pictures for benchmarks, the same on every machine: soft colours with a grain,
// so that they are as large and as slow to decode as photos are. And the work on
// them at the level of C, in one thread.

#pragma once

#include <string>
#include <string_view>

#include "platform/image_codec.h"

namespace varnok {

std::string makeJPEG(ImageSize size, unsigned seed);
std::string makePNG(ImageSize size, unsigned seed);

// Decodes a JPEG (reduced by its own transform first) or PNG, redraws it so that
// the longer side is `side` pixels, encodes it as JPEG of that quality. The
// number of bytes, 0 when it fails.
std::size_t reducePicture(std::string_view bytes, int side, int quality);

}  // namespace varnok
