// PNGReader: the rows of a PNG file of every colour type, depth and interlacing,
// transparent pixels laid on white. Gamma and colour profile are ignored.
//
// A damaged or truncated file gives nothing: its checksums tell, and what is
// left of it would be a torn picture.

#pragma once

#include <memory>
#include <string_view>

#include "platform/linux/imaging/row_source.h"

namespace varnok {

// The most pixels along one side, which bounds the memory of a row.
constexpr int kMaxPNGSide = 65535;

std::unique_ptr<RowSource> openPNG(std::string_view bytes);

}  // namespace varnok
