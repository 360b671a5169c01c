// RowSource: a picture file being read, row by row in the order the file stores
// them, so that a large picture never lies in memory whole unless its format
// leaves no choice.
//
// Lifetime. The bytes must outlive the source. One source reads one picture
// once: readHeader(), start(), then readRow() for each row.
//
// Threads. A source belongs to one thread; different sources are independent.
//
// Failure. Each step answers nothing or false when the bytes do not allow it;
// after that the source can only be destroyed. Running out of memory for the
// program's own buffers throws std::bad_alloc.

#pragma once

#include <cstdint>
#include <optional>

#include "platform/image_codec.h"
#include "platform/linux/imaging/exif.h"

namespace varnok {

struct PictureHeader {
  ImageSize size;  // As stored, before the orientation.
  Orientation orientation;
  // The file gives all rows coarsely before it gives any of them finely
  // (interlaced PNG, progressive JPEG): decoding holds the whole picture.
  bool heldWhole = false;
};

class RowSource {
 public:
  virtual ~RowSource() = default;

  virtual std::optional<PictureHeader> readHeader() = 0;

  // Chooses the size in which rows come: that of the file, or a reduced one that
  // the format gives for less work and that is no smaller than `target` in either
  // direction. Answers that size.
  virtual std::optional<ImageSize> start(ImageSize target) = 0;

  // Writes three bytes a pixel for the width that start() answered.
  virtual bool readRow(std::uint8_t* rgb) = 0;
};

}  // namespace varnok
