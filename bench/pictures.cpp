#include "bench/pictures.h"

#include <cstdio>
// After <cstdio>, which it needs.
#include <jpeglib.h>
#include <png.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

namespace varnok {
namespace {

constexpr std::size_t kChannels = 3;
constexpr int kPhotoQuality = 85;
constexpr unsigned kGrain = 12;  // Steps of 255.

Image paint(ImageSize size, unsigned seed) {
  std::minstd_rand chance(seed + 1);
  Image image{size, {}};
  image.rgb.reserve(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) * kChannels);
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      const double light = 110 + 70 * std::sin(x * 9.0 / size.width + seed) * std::cos(y * 7.0 / size.height);
      const auto grain = static_cast<double>(chance() % kGrain);
      for (const double shift : {0.0, 20.0, 45.0})
        image.rgb.push_back(static_cast<std::uint8_t>(light + shift / 2 + grain));
    }
  }
  return image;
}

std::string encode(const Image& image, int quality) {
  jpeg_compress_struct codec{};
  jpeg_error_mgr errors{};
  codec.err = jpeg_std_error(&errors);
  jpeg_create_compress(&codec);
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&codec, &bytes, &size);
  codec.image_width = static_cast<JDIMENSION>(image.size.width);
  codec.image_height = static_cast<JDIMENSION>(image.size.height);
  codec.input_components = kChannels;
  codec.in_color_space = JCS_RGB;
  jpeg_set_defaults(&codec);
  jpeg_set_quality(&codec, quality, TRUE);
  jpeg_start_compress(&codec, TRUE);
  while (codec.next_scanline < codec.image_height) {
    auto* row = const_cast<JSAMPLE*>(image.rgb.data()) + kChannels * codec.image_width * codec.next_scanline;
    jpeg_write_scanlines(&codec, &row, 1);
  }
  jpeg_finish_compress(&codec);
  jpeg_destroy_compress(&codec);
  std::string result(reinterpret_cast<char*>(bytes), size);
  std::free(bytes);
  return result;
}

// Not smaller than `side` on its longer side, where the picture is not.
Image decodeJPEG(std::string_view bytes, int side) {
  jpeg_decompress_struct codec{};
  jpeg_error_mgr errors{};
  codec.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&codec);
  jpeg_mem_src(&codec, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
  jpeg_read_header(&codec, TRUE);
  const auto longer = static_cast<int>(std::max(codec.image_width, codec.image_height));
  codec.scale_denom = 8;
  codec.scale_num = 1;
  while (codec.scale_num < 8 && longer * static_cast<int>(codec.scale_num) < side * 8)
    ++codec.scale_num;
  jpeg_start_decompress(&codec);
  Image image{{static_cast<int>(codec.output_width), static_cast<int>(codec.output_height)}, {}};
  const std::size_t stride = codec.output_width * kChannels;
  image.rgb.resize(stride * codec.output_height);
  while (codec.output_scanline < codec.output_height) {
    JSAMPLE* row = image.rgb.data() + codec.output_scanline * stride;
    jpeg_read_scanlines(&codec, &row, 1);
  }
  jpeg_finish_decompress(&codec);
  jpeg_destroy_decompress(&codec);
  return image;
}

Image decodePNG(std::string_view bytes) {
  png_image codec{};
  codec.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_memory(&codec, bytes.data(), bytes.size()) == 0) return {};
  codec.format = PNG_FORMAT_RGB;
  Image image{{static_cast<int>(codec.width), static_cast<int>(codec.height)}, {}};
  image.rgb.resize(PNG_IMAGE_SIZE(codec));
  png_image_finish_read(&codec, nullptr, image.rgb.data(), 0, nullptr);
  return image;
}

// Each pixel from its four neighbours, in whole numbers.
Image redraw(const Image& from, ImageSize size) {
  constexpr int kOne = 256;
  Image to{size, {}};
  to.rgb.resize(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) * kChannels);
  std::uint8_t* out = to.rgb.data();
  const auto stride = static_cast<std::size_t>(from.size.width) * kChannels;
  for (int y = 0; y < size.height; ++y) {
    const int v = y * (from.size.height - 1) * kOne / std::max(1, size.height - 1);
    const int nextRow = v / kOne + 1 < from.size.height ? 1 : 0;
    const std::uint8_t* upper = from.rgb.data() + static_cast<std::size_t>(v / kOne) * stride;
    const std::uint8_t* lower = upper + static_cast<std::size_t>(nextRow) * stride;
    for (int x = 0; x < size.width; ++x) {
      const int u = x * (from.size.width - 1) * kOne / std::max(1, size.width - 1);
      const std::size_t left = static_cast<std::size_t>(u / kOne) * kChannels;
      const std::size_t right = u / kOne + 1 < from.size.width ? left + kChannels : left;
      for (std::size_t c = 0; c < kChannels; ++c) {
        const int top = upper[left + c] * (kOne - u % kOne) + upper[right + c] * (u % kOne);
        const int bottom = lower[left + c] * (kOne - u % kOne) + lower[right + c] * (u % kOne);
        *out++ = static_cast<std::uint8_t>((top * (kOne - v % kOne) + bottom * (v % kOne)) / (kOne * kOne));
      }
    }
  }
  return to;
}

}  // namespace

std::string makeJPEG(ImageSize size, unsigned seed) {
  return encode(paint(size, seed), kPhotoQuality);
}

std::string makePNG(ImageSize size, unsigned seed) {
  const Image image = paint(size, seed);
  png_image codec{};
  codec.version = PNG_IMAGE_VERSION;
  codec.width = static_cast<png_uint_32>(size.width);
  codec.height = static_cast<png_uint_32>(size.height);
  codec.format = PNG_FORMAT_RGB;
  png_alloc_size_t length = 0;
  png_image_write_to_memory(&codec, nullptr, &length, 0, image.rgb.data(), 0, nullptr);
  std::string bytes(length, '\0');
  png_image_write_to_memory(&codec, bytes.data(), &length, 0, image.rgb.data(), 0, nullptr);
  return bytes;
}

std::size_t reducePicture(std::string_view bytes, int side, int quality) {
  const Image image = imageTypeOf(bytes) == ImageType::png ? decodePNG(bytes) : decodeJPEG(bytes, side);
  if (image.rgb.empty()) return 0;
  const int longer = std::max(image.size.width, image.size.height);
  const auto scaled = [&](int length) { return std::max(1, length * side / longer); };
  return encode(redraw(image, {scaled(image.size.width), scaled(image.size.height)}), quality).size();
}

}  // namespace varnok
