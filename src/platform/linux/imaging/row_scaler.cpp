#include "platform/linux/imaging/row_scaler.h"

#include <algorithm>
#include <cmath>

namespace varnok {

namespace {

constexpr std::size_t kChannels = 3;

// What a sum starts with, so that cutting off its fraction rounds it.
constexpr float kHalf = 0.5F;

// The most spans that share one old position.
std::size_t mostOverlapping(const std::vector<FilterAxis::Span>& spans) {
  std::size_t most = 1;
  std::size_t end = 0;
  for (std::size_t i = 0; i < spans.size(); ++i) {
    while (end < spans.size() && spans[end].first <= spans[i].last)
      ++end;
    most = std::max(most, end - i);
  }
  return most;
}

}  // namespace

FilterAxis::FilterAxis(int from, int to) {
  const double step = static_cast<double>(from) / to;
  const double radius = std::max(1.0, step);
  spans.reserve(static_cast<std::size_t>(to));
  for (int i = 0; i < to; ++i) {
    const double centre = (i + 0.5) * step - 0.5;
    const auto weightAt = [&](int old) { return 1.0 - std::abs(old - centre) / radius; };
    Span span{std::max(0, static_cast<int>(std::ceil(centre - radius))),
              std::min(from - 1, static_cast<int>(std::floor(centre + radius))), weights.size()};
    // A weight of nothing costs as much as any other.
    while (span.first < span.last && weightAt(span.first) <= 0)
      ++span.first;
    while (span.last > span.first && weightAt(span.last) <= 0)
      --span.last;
    double sum = 0;
    for (int old = span.first; old <= span.last; ++old)
      sum += weightAt(old);
    for (int old = span.first; old <= span.last; ++old)
      weights.push_back(static_cast<float>(weightAt(old) / sum));
    spans.push_back(span);
  }
}

RowScaler::RowScaler(ImageSize from, ImageSize to)
    : columns_(from.width, to.width),
      rows_(from.height, to.height),
      line_(static_cast<std::size_t>(to.width) * kChannels),
      openCount_(mostOverlapping(rows_.spans)),
      open_(openCount_ * line_.size(), kHalf) {
  image_.size = to;
  image_.rgb.resize(line_.size() * static_cast<std::size_t>(to.height));
}

void RowScaler::scaleAcross(const std::uint8_t* rgb) {
  float* out = line_.data();
  for (const FilterAxis::Span& span : columns_.spans) {
    const std::uint8_t* pixel = rgb + static_cast<std::size_t>(span.first) * kChannels;
    const float* weight = columns_.weights.data() + span.weights;
    float red = 0;
    float green = 0;
    float blue = 0;
    for (int old = span.first; old <= span.last; ++old, ++weight, pixel += kChannels) {
      red += *weight * static_cast<float>(pixel[0]);
      green += *weight * static_cast<float>(pixel[1]);
      blue += *weight * static_cast<float>(pixel[2]);
    }
    out[0] = red;
    out[1] = green;
    out[2] = blue;
    out += kChannels;
  }
}

void RowScaler::push(const std::uint8_t* rgb) {
  scaleAcross(rgb);
  for (std::size_t y = firstOpen_; y < rows_.spans.size() && rows_.spans[y].first <= pushed_; ++y) {
    const FilterAxis::Span& span = rows_.spans[y];
    const float weight = rows_.weights[span.weights + static_cast<std::size_t>(pushed_ - span.first)];
    float* sum = openRow(y);
    for (std::size_t i = 0; i < line_.size(); ++i)
      sum[i] += weight * line_[i];
    if (span.last == pushed_) finishRow(y);
  }
  ++pushed_;
}

void RowScaler::finishRow(std::size_t y) {
  float* sum = openRow(y);
  std::uint8_t* out = image_.rgb.data() + y * line_.size();
  for (std::size_t i = 0; i < line_.size(); ++i) {
    out[i] = static_cast<std::uint8_t>(std::min(sum[i], 255.0F));
  }
  std::fill_n(sum, line_.size(), kHalf);
  firstOpen_ = y + 1;
}

}  // namespace varnok
