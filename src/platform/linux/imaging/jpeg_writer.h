// Writing JPEG files. Any thread.

#pragma once

#include <optional>
#include <string>

#include "platform/image_codec.h"

namespace varnok {

// `setting` is the JPEG library's quality, 1 to 100. Colour is stored at half the
// resolution. Nothing for a picture that JPEG cannot hold (empty, or a side of
// more than 65500 pixels) or when memory runs out.
std::optional<std::string> writeJPEG(const Image& image, int setting);

}  // namespace varnok
