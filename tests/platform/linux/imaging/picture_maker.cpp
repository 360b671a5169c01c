#include "platform/linux/imaging/picture_maker.h"

#include <cstdio>  // jpeglib.h needs it.

#include <jpeglib.h>
#include <png.h>
#include <zlib.h>

#include <cstdlib>
#include <vector>

namespace varnok {

namespace {

using namespace std::string_literals;

constexpr int kSide = 16;  // Pixels, of the PNG pictures.

std::string bigEndianBytes(std::uint32_t value, int length) {
  std::string bytes;
  for (int shift = 8 * (length - 1); shift >= 0; shift -= 8)
    bytes += static_cast<char>(value >> shift & 0xFF);
  return bytes;
}

std::string bytesIn(std::uint32_t value, int length, bool bigEndian) {
  const std::string bytes = bigEndianBytes(value, length);
  return bigEndian ? bytes : std::string(bytes.rbegin(), bytes.rend());
}

// One row in the form the compressor is given: three bytes a pixel, or four of ink.
std::string inputRow(const Image& image, int y, const JPEGSpec& spec, bool ink) {
  std::string row;
  for (int x = 0; x < image.size.width; ++x) {
    const Colour colour = pixelAt(image, x, y);
    for (const int value : {colour.red, colour.green, colour.blue}) {
      row += static_cast<char>(ink && !spec.adobe ? 255 - value : value);
    }
    if (ink) row += static_cast<char>(spec.adobe ? 255 : 0);
  }
  return row;
}

J_COLOR_SPACE storedSpace(JPEGColours colours) {
  switch (colours) {
    case JPEGColours::grey: return JCS_GRAYSCALE;
    case JPEGColours::rgb: return JCS_RGB;
    case JPEGColours::ycc: return JCS_YCbCr;
    case JPEGColours::cmyk: return JCS_CMYK;
    case JPEGColours::ycck: return JCS_YCCK;
  }
  return JCS_UNKNOWN;
}

std::string repeat(const std::string& piece, std::size_t length) {
  std::string bytes;
  while (bytes.size() < length)
    bytes += piece;
  return bytes;
}

void addPalette(png_structp png, png_infop info, const PNGSpec& spec) {
  std::vector<png_color> palette;
  for (std::size_t i = 0; i + 2 < spec.palette.size(); i += 3) {
    const auto at = [&](std::size_t k) { return static_cast<png_byte>(spec.palette[k]); };
    palette.push_back({at(i), at(i + 1), at(i + 2)});
  }
  if (!palette.empty()) png_set_PLTE(png, info, palette.data(), static_cast<int>(palette.size()));
  const std::vector<png_byte> alpha(spec.paletteAlpha.begin(), spec.paletteAlpha.end());
  if (!alpha.empty()) png_set_tRNS(png, info, alpha.data(), static_cast<int>(alpha.size()), nullptr);
}

}  // namespace

Colour pixelAt(const Image& image, int x, int y) {
  const std::size_t at = static_cast<std::size_t>(y * image.size.width + x) * 3;
  return {image.rgb[at], image.rgb[at + 1], image.rgb[at + 2]};
}

Image paint(ImageSize size, const std::function<Colour(int x, int y)>& colourAt) {
  Image image;
  image.size = size;
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      const Colour colour = colourAt(x, y);
      for (const int value : {colour.red, colour.green, colour.blue}) {
        image.rgb.push_back(static_cast<std::uint8_t>(value));
      }
    }
  }
  return image;
}

Image paintHalves(ImageSize size, Colour left, Colour right) {
  return paint(size, [&](int x, int) { return x < size.width / 2 ? left : right; });
}

std::string exifBlock(int orientation, bool bigEndian) {
  const auto number = [&](std::uint32_t value, int length) { return bytesIn(value, length, bigEndian); };
  return (bigEndian ? "MM"s : "II"s) + number(42, 2) + number(8, 4) + number(1, 2)       // One entry:
         + number(0x0112, 2) + number(3, 2) + number(1, 4)                               // orientation, short, one
         + number(static_cast<std::uint32_t>(orientation), 2) + "\0\0"s + number(0, 4);  // of this value.
}

std::string makeJPEG(const Image& image, const JPEGSpec& spec) {
  const bool ink = spec.colours == JPEGColours::cmyk || spec.colours == JPEGColours::ycck;
  jpeg_compress_struct jpeg{};
  jpeg_error_mgr errors{};
  jpeg.err = jpeg_std_error(&errors);  // Ends the test program on an error.
  jpeg_create_compress(&jpeg);
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&jpeg, &bytes, &size);
  jpeg.image_width = static_cast<JDIMENSION>(image.size.width);
  jpeg.image_height = static_cast<JDIMENSION>(image.size.height);
  jpeg.input_components = ink ? 4 : 3;
  jpeg.in_color_space = ink ? JCS_CMYK : JCS_RGB;
  jpeg_set_defaults(&jpeg);
  jpeg_set_colorspace(&jpeg, storedSpace(spec.colours));
  if (ink) jpeg.write_Adobe_marker = spec.adobe ? TRUE : FALSE;
  jpeg_set_quality(&jpeg, 95, TRUE);
  if (spec.progressive) jpeg_simple_progression(&jpeg);
  jpeg_start_compress(&jpeg, TRUE);
  if (!spec.exif.empty()) {
    const std::string marker = "Exif\0\0"s + spec.exif;
    jpeg_write_marker(&jpeg, JPEG_APP0 + 1, reinterpret_cast<const JOCTET*>(marker.data()),
                      static_cast<unsigned>(marker.size()));
  }
  for (int y = 0; y < image.size.height; ++y) {
    std::string row = inputRow(image, y, spec, ink);
    auto* samples = reinterpret_cast<JSAMPROW>(row.data());
    jpeg_write_scanlines(&jpeg, &samples, 1);
  }
  jpeg_finish_compress(&jpeg);
  jpeg_destroy_compress(&jpeg);
  std::string file(reinterpret_cast<char*>(bytes), size);
  std::free(bytes);
  return file;
}

std::string makePNG(const PNGSpec& spec) {
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  std::string file;
  const auto append = [](png_structp codec, png_bytep data, std::size_t length) {
    static_cast<std::string*>(png_get_io_ptr(codec))->append(reinterpret_cast<char*>(data), length);
  };
  png_set_write_fn(png, &file, append, nullptr);
  png_set_IHDR(png, info, kSide, kSide, spec.depth, spec.colourType,
               spec.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
               PNG_FILTER_TYPE_DEFAULT);
  addPalette(png, info, spec);
  std::string exif = spec.exif;
  if (!exif.empty()) {
    png_set_eXIf_1(png, info, static_cast<png_uint_32>(exif.size()), reinterpret_cast<png_bytep>(exif.data()));
  }
  png_write_info(png, info);
  const std::size_t half = png_get_rowbytes(png, info) / 2;
  std::string row = repeat(spec.left, half) + repeat(spec.right, half);
  std::vector<png_bytep> rows(kSide, reinterpret_cast<png_bytep>(row.data()));
  png_write_image(png, rows.data());
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  return file;
}

std::string withPNGSize(std::string png, std::uint32_t width, std::uint32_t height) {
  constexpr std::size_t kType = 12;  // Offsets of IHDR's type, size and checksum.
  constexpr std::size_t kSize = 16;
  constexpr std::size_t kChecksum = 29;
  png.replace(kSize, 8, bigEndianBytes(width, 4) + bigEndianBytes(height, 4));
  const uLong checksum = crc32(0, reinterpret_cast<const Bytef*>(png.data() + kType), kChecksum - kType);
  return png.replace(kChecksum, 4, bigEndianBytes(static_cast<std::uint32_t>(checksum), 4));
}

std::string withJPEGSize(std::string jpeg, std::uint16_t width, std::uint16_t height) {
  std::size_t frame = jpeg.find("\xFF\xC0");
  if (frame == std::string::npos) frame = jpeg.find("\xFF\xC2");
  return jpeg.replace(frame + 5, 4, bigEndianBytes(height, 2) + bigEndianBytes(width, 2));
}

}  // namespace varnok
