// JPEGReader: the rows of a JPEG file. Grey, RGB, YCbCr, CMYK and YCCK, sequential
// and progressive; the colour profile is ignored. The decoder reduces the picture
// itself while it undoes the transform (by eighths), which is most of the speed.
//
// A file that ends early or is damaged in the middle gives a picture as far as
// the decoder can guess one: its warnings are not failures.

#pragma once

#include <memory>
#include <string_view>

#include "platform/linux/imaging/row_source.h"

namespace varnok {

std::unique_ptr<RowSource> openJPEG(std::string_view bytes);

}  // namespace varnok
