#include "platform/linux/imaging/png_reader.h"

#include <png.h>

#include <csetjmp>
#include <cstddef>
#include <cstring>
#include <vector>

namespace varnok {

namespace {

using namespace std::string_view_literals;

// Ancillary chunks that no picture needs can be compressed to a thousandth.
constexpr std::size_t kMaxChunkBytes = std::size_t{1} << 20;

std::uint8_t onWhite(unsigned value, unsigned alpha) {
  return static_cast<std::uint8_t>((value * alpha + 255 * (255 - alpha) + 127) / 255);
}

// The library leaves by longjmp after an error, which runs no destructor: what is
// passed to guarded() calls the library and touches plain values only.
class PNGReader : public RowSource {
 public:
  explicit PNGReader(std::string_view bytes) : rest_(bytes) {
    png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, &PNGReader::leave, &PNGReader::ignore);
    if (png_ != nullptr) info_ = png_create_info_struct(png_);
  }
  ~PNGReader() override { png_destroy_read_struct(&png_, &info_, nullptr); }
  PNGReader(const PNGReader&) = delete;
  PNGReader& operator=(const PNGReader&) = delete;

  std::optional<PictureHeader> readHeader() override {
    if (info_ == nullptr || !guarded([this] { readInfo(); })) return std::nullopt;
    PictureHeader header;
    header.size = size();
    header.orientation = orientation();
    header.heldWhole = interlaced();
    return header;
  }

  std::optional<ImageSize> start(ImageSize /*target*/) override {
    if (!guarded([this] { convertToBytes(); })) return std::nullopt;
    stride_ = png_get_rowbytes(png_, info_);
    pixels_.resize(stride_ * (interlaced() ? png_get_image_height(png_, info_) : 1));
    if (interlaced() && !readWhole()) return std::nullopt;
    return size();
  }

  bool readRow(std::uint8_t* rgb) override {
    if (interlaced()) {
      layOnWhite(pixels_.data() + stride_ * row_++, rgb);
      return true;
    }
    if (!guarded([this] { png_read_row(png_, pixels_.data(), nullptr); })) return false;
    layOnWhite(pixels_.data(), rgb);
    return true;
  }

 private:
  // Whether `body` ended without an error.
  template <typename Body>
  bool guarded(const Body& body) {
    if (setjmp(png_jmpbuf(png_)) != 0) return false;
    body();
    return true;
  }

  [[noreturn]] static void leave(png_structp png, png_const_charp /*message*/) { png_longjmp(png, 1); }
  static void ignore(png_structp /*png*/, png_const_charp /*warning*/) {}

  static void readBytes(png_structp png, png_bytep out, std::size_t count) {
    auto& rest = static_cast<PNGReader*>(png_get_io_ptr(png))->rest_;
    if (rest.size() < count) png_error(png, "truncated");
    std::memcpy(out, rest.data(), count);
    rest.remove_prefix(count);
  }

  void readInfo() {
    png_set_read_fn(png_, this, &PNGReader::readBytes);
    png_set_user_limits(png_, kMaxPNGSide, kMaxPNGSide);
    png_set_chunk_malloc_max(png_, kMaxChunkBytes);
    // Everything but the picture itself is skipped, and the orientation kept.
    png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
    png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_ALWAYS, reinterpret_cast<png_const_bytep>("eXIf"), 1);
    png_read_info(png_, info_);
  }

  void convertToBytes() {
    png_set_expand(png_);  // Palette to RGB, few bits to eight, a transparent colour to alpha.
    png_set_scale_16(png_);
    png_set_gray_to_rgb(png_);
    png_set_interlace_handling(png_);
    png_read_update_info(png_, info_);
  }

  bool readWhole() {
    std::vector<png_bytep> rows(png_get_image_height(png_, info_));
    for (std::size_t y = 0; y < rows.size(); ++y)
      rows[y] = pixels_.data() + stride_ * y;
    png_bytepp first = rows.data();
    return guarded([&] { png_read_image(png_, first); });
  }

  void layOnWhite(const std::uint8_t* pixel, std::uint8_t* rgb) const {
    const std::size_t channels = png_get_channels(png_, info_);
    if (channels == 3) {
      std::memcpy(rgb, pixel, stride_);
      return;
    }
    for (const std::uint8_t* const end = pixel + stride_; pixel < end; pixel += channels) {
      for (std::size_t channel = 0; channel < 3; ++channel)
        *rgb++ = onWhite(pixel[channel], pixel[3]);
    }
  }

  // From an eXIf chunk before the picture, where every writer puts it.
  Orientation orientation() const {
    png_unknown_chunkp chunks = nullptr;
    const int count = png_get_unknown_chunks(png_, info_, &chunks);
    for (int i = 0; i < count; ++i) {
      if (reinterpret_cast<const char*>(chunks[i].name) != "eXIf"sv) continue;
      return exifOrientation({reinterpret_cast<const char*>(chunks[i].data), chunks[i].size});
    }
    return {};
  }

  ImageSize size() const {
    return {static_cast<int>(png_get_image_width(png_, info_)), static_cast<int>(png_get_image_height(png_, info_))};
  }

  bool interlaced() const { return png_get_interlace_type(png_, info_) != PNG_INTERLACE_NONE; }

  std::string_view rest_;  // Bytes not yet read.
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
  std::size_t stride_ = 0;            // Bytes of a row of pixels_.
  std::vector<std::uint8_t> pixels_;  // One row, or all when interlaced.
  std::size_t row_ = 0;               // The next one to give, when interlaced.
};

}  // namespace

std::unique_ptr<RowSource> openPNG(std::string_view bytes) {
  return std::make_unique<PNGReader>(bytes);
}

}  // namespace varnok
