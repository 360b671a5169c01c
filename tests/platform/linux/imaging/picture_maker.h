// Small pictures for tests, written through the image libraries themselves, so
// that each test says which feature of the format it means.

#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "platform/image_codec.h"

namespace varnok {

struct Colour {
  int red = 0;
  int green = 0;
  int blue = 0;
};

Colour pixelAt(const Image& image, int x, int y);

Image paint(ImageSize size, const std::function<Colour(int x, int y)>& colourAt);

// Left half `left`, right half `right`.
Image paintHalves(ImageSize size, Colour left, Colour right);

// An Exif block of one entry, from the byte order mark on.
std::string exifBlock(int orientation, bool bigEndian = false);

enum class JPEGColours { grey, rgb, ycc, cmyk, ycck };

struct JPEGSpec {
  JPEGColours colours = JPEGColours::ycc;
  bool progressive = false;
  bool adobe = true;  // CMYK: inverted ink under Adobe's marker, else plain ink without.
  std::string exif = {};
};

std::string makeJPEG(const Image& image, const JPEGSpec& spec = {});

// `left` and `right` are the raw bytes of one pixel (of eight, at one bit a
// pixel), in the form that `colourType` and `depth` say.
struct PNGSpec {
  int colourType = 0;  // PNG_COLOR_TYPE_...
  int depth = 8;       // Bits of one sample.
  std::string left;
  std::string right;
  bool interlaced = false;
  std::string palette = {};       // Three bytes an entry.
  std::string paletteAlpha = {};  // One byte an entry.
  std::string exif = {};
};

// A picture of 16 by 16: left half, right half.
std::string makePNG(const PNGSpec& spec);

// Changes the size that the header promises, checksum included.
std::string withPNGSize(std::string png, std::uint32_t width, std::uint32_t height);
std::string withJPEGSize(std::string jpeg, std::uint16_t width, std::uint16_t height);

}  // namespace varnok
