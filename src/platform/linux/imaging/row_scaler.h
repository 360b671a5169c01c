// RowScaler: redraws a picture into another size while its rows arrive. A
// triangle filter: bilinear when enlarging, and when reducing each new pixel is
// the weighted mean of all the old ones it covers.
//
// Memory is a few rows of the new size, whatever the size of the old picture.

#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "platform/image_codec.h"

namespace varnok {

// For each new position along one axis, the old positions it is made of.
struct FilterAxis {
  struct Span {
    int first = 0;
    int last = 0;
    std::size_t weights = 0;  // Index of the weight of `first`.
  };
  std::vector<Span> spans;
  std::vector<float> weights;  // Those of one span add up to 1.

  FilterAxis(int from, int to);
};

class RowScaler {
 public:
  // Sizes of at least one pixel each way.
  RowScaler(ImageSize from, ImageSize to);

  // The next row of the old picture, from.width pixels of three bytes. To be
  // called from.height times.
  void push(const std::uint8_t* rgb);

  // The new picture; complete after the last push().
  Image take() { return std::move(image_); }

 private:
  void scaleAcross(const std::uint8_t* rgb);
  float* openRow(std::size_t y) { return open_.data() + y % openCount_ * line_.size(); }
  void finishRow(std::size_t y);

  FilterAxis columns_;
  FilterAxis rows_;
  Image image_;
  std::vector<float> line_;    // The row just pushed, in the new width.
  std::size_t openCount_;      // Rows of the new picture that one old row can add to.
  std::vector<float> open_;    // Their sums so far, used in rotation.
  std::size_t firstOpen_ = 0;  // The first row of the new picture that is not finished.
  int pushed_ = 0;
};

}  // namespace varnok
