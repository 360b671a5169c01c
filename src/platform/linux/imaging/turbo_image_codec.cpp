#include "platform/linux/imaging/turbo_image_codec.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <memory>
#include <utility>

#include "platform/check.h"
#include "platform/linux/imaging/jpeg_reader.h"
#include "platform/linux/imaging/jpeg_writer.h"
#include "platform/linux/imaging/png_reader.h"
#include "platform/linux/imaging/row_scaler.h"

namespace varnok {

namespace {

constexpr int kLowestSetting = 25;  // Of the JPEG library's 1 to 100.
constexpr int kHighestSetting = 95;
constexpr std::size_t kChannels = 3;

std::unique_ptr<RowSource> openPicture(std::string_view bytes) {
  switch (imageTypeOf(bytes)) {
    case ImageType::jpeg: return openJPEG(bytes);
    case ImageType::png: return openPNG(bytes);
    case ImageType::other: return nullptr;
  }
  return nullptr;
}

std::int64_t pixelsIn(ImageSize size) {
  return std::int64_t{size.width} * size.height;
}

std::optional<PictureHeader> readHeader(RowSource* source, const ImageLimits& limits) {
  if (source == nullptr) return std::nullopt;
  const std::optional<PictureHeader> header = source->readHeader();
  if (!header) return std::nullopt;
  const std::int64_t limit = header->heldWhole ? std::min(limits.pixels, limits.pixelsHeldWhole) : limits.pixels;
  const std::int64_t pixels = pixelsIn(header->size);
  return pixels >= 1 && pixels <= limit ? header : std::nullopt;
}

ImageSize turned(ImageSize size, const Orientation& orientation) {
  return orientation.transposed ? ImageSize{size.height, size.width} : size;
}

Image upright(Image stored, const Orientation& orientation) {
  if (orientation == Orientation{}) return stored;
  Image image;
  image.size = turned(stored.size, orientation);
  image.rgb.resize(stored.rgb.size());
  std::uint8_t* out = image.rgb.data();
  for (int y = 0; y < image.size.height; ++y) {
    for (int x = 0; x < image.size.width; ++x, out += kChannels) {
      int column = orientation.transposed ? y : x;
      int row = orientation.transposed ? x : y;
      if (orientation.mirrorColumns) column = stored.size.width - 1 - column;
      if (orientation.mirrorRows) row = stored.size.height - 1 - row;
      const std::int64_t pixel = std::int64_t{row} * stored.size.width + column;
      std::copy_n(stored.rgb.data() + static_cast<std::size_t>(pixel) * kChannels, kChannels, out);
    }
  }
  return image;
}

std::optional<Image> redraw(RowSource& source, ImageSize target) {
  const std::optional<ImageSize> size = source.start(target);
  if (!size) return std::nullopt;
  RowScaler scaler(*size, target);
  std::vector<std::uint8_t> row(static_cast<std::size_t>(size->width) * kChannels);
  for (int y = 0; y < size->height; ++y) {
    if (!source.readRow(row.data())) return std::nullopt;
    scaler.push(row.data());
  }
  return scaler.take();
}

// What `work` answers, or nothing when memory runs out in it.
template <typename Work>
auto withoutThrowing(const Work& work) -> decltype(work()) {
  try {
    return work();
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace

std::optional<ImageSize> TurboImageCodec::sizeOf(std::string_view bytes) const {
  return withoutThrowing([&]() -> std::optional<ImageSize> {
    const auto header = readHeader(openPicture(bytes).get(), limits_);
    if (!header) return std::nullopt;
    return turned(header->size, header->orientation);
  });
}

std::optional<Image> TurboImageCodec::decode(std::string_view bytes, ImageSize target) const {
  return withoutThrowing([&]() -> std::optional<Image> {
    target = {std::max(target.width, 1), std::max(target.height, 1)};
    if (pixelsIn(target) > limits_.pixels) return std::nullopt;
    const std::unique_ptr<RowSource> source = openPicture(bytes);
    const auto header = readHeader(source.get(), limits_);
    if (!header) return std::nullopt;
    std::optional<Image> image = redraw(*source, turned(target, header->orientation));
    if (!image) return std::nullopt;
    return upright(*std::move(image), header->orientation);
  });
}

std::optional<std::string> TurboImageCodec::encodeJPEG(const Image& image, double quality) const {
  VARNOK_CHECK(image.rgb.size() == static_cast<std::size_t>(pixelsIn(image.size)) * kChannels);
  const double share = std::clamp(quality, 0.0, 1.0);
  const auto setting = static_cast<int>(std::lround(kLowestSetting + (kHighestSetting - kLowestSetting) * share));
  return withoutThrowing([&] { return writeJPEG(image, setting); });
}

}  // namespace varnok
