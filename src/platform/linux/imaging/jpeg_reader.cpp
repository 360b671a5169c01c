#include "platform/linux/imaging/jpeg_reader.h"

#include <cstddef>
#include <vector>

#include "platform/linux/imaging/jpeg_error_trap.h"

namespace varnok {

namespace {

using namespace std::string_view_literals;

constexpr unsigned kMarkerLength = 65533;  // Bytes; the most a marker holds.
constexpr auto kExifSignature = "Exif\0\0"sv;

// Ordinary progressive files have about ten scans. Each costs time for the whole
// picture however few bytes it takes, so a small file of thousands could keep a
// processor busy for hours.
constexpr int kMaxScans = 64;

// The orientation from the first Exif marker that was saved.
Orientation orientationOf(const jpeg_decompress_struct& jpeg) {
  for (const jpeg_marker_struct* marker = jpeg.marker_list; marker != nullptr; marker = marker->next) {
    const std::string_view data(reinterpret_cast<const char*>(marker->data), marker->data_length);
    if (data.starts_with(kExifSignature)) return exifOrientation(data.substr(kExifSignature.size()));
  }
  return {};
}

class JPEGReader : public RowSource {
 public:
  explicit JPEGReader(std::string_view bytes) : bytes_(bytes) {
    jpeg_.err = trap_.manager();
    progress_.progress_monitor = [](j_common_ptr codec) {
      const auto* jpeg = reinterpret_cast<j_decompress_ptr>(codec);
      if (jpeg->input_scan_number > kMaxScans) codec->err->error_exit(codec);
    };
  }
  // Does nothing to a decompressor that could not be made.
  ~JPEGReader() override { jpeg_destroy_decompress(&jpeg_); }
  JPEGReader(const JPEGReader&) = delete;
  JPEGReader& operator=(const JPEGReader&) = delete;

  std::optional<PictureHeader> readHeader() override {
    const bool read = trap_.guarded([this] {
      jpeg_create_decompress(&jpeg_);
      jpeg_.progress = &progress_;
      jpeg_mem_src(&jpeg_, reinterpret_cast<const unsigned char*>(bytes_.data()), bytes_.size());
      jpeg_save_markers(&jpeg_, JPEG_APP0 + 1, kMarkerLength);
      jpeg_read_header(&jpeg_, TRUE);
    });
    if (!read) return std::nullopt;
    PictureHeader header;
    header.size = {static_cast<int>(jpeg_.image_width), static_cast<int>(jpeg_.image_height)};
    header.orientation = orientationOf(jpeg_);
    header.heldWhole = jpeg_has_multiple_scans(&jpeg_) == TRUE;
    return header;
  }

  std::optional<ImageSize> start(ImageSize target) override {
    if (!trap_.guarded([&] { startReduced(target); })) return std::nullopt;
    if (hasInk()) ink_.resize(std::size_t{jpeg_.output_width} * 4);
    return ImageSize{static_cast<int>(jpeg_.output_width), static_cast<int>(jpeg_.output_height)};
  }

  bool readRow(std::uint8_t* rgb) override {
    JSAMPROW row = hasInk() ? ink_.data() : rgb;
    if (!trap_.guarded([&] { jpeg_read_scanlines(&jpeg_, &row, 1); })) return false;
    if (hasInk()) printInk(rgb);
    return true;
  }

 private:
  bool hasInk() const { return jpeg_.out_color_space == JCS_CMYK; }

  void startReduced(ImageSize target) {
    const bool printed = jpeg_.jpeg_color_space == JCS_CMYK || jpeg_.jpeg_color_space == JCS_YCCK;
    jpeg_.out_color_space = printed ? JCS_CMYK : JCS_RGB;
    jpeg_.scale_denom = 8;
    for (jpeg_.scale_num = 1; jpeg_.scale_num < jpeg_.scale_denom; ++jpeg_.scale_num) {
      jpeg_calc_output_dimensions(&jpeg_);
      if (static_cast<int>(jpeg_.output_width) >= target.width &&
          static_cast<int>(jpeg_.output_height) >= target.height) {
        break;
      }
    }
    jpeg_start_decompress(&jpeg_);
  }

  // Programs that sign with Adobe's marker store ink inverted, 0 being full; that
  // is nearly every CMYK file there is.
  void printInk(std::uint8_t* rgb) const {
    const unsigned flip = jpeg_.saw_Adobe_marker == TRUE ? 0U : 255U;
    for (std::size_t i = 0; i < ink_.size(); i += 4) {
      const unsigned black = ink_[i + 3] ^ flip;
      for (std::size_t channel = 0; channel < 3; ++channel) {
        *rgb++ = static_cast<std::uint8_t>(((ink_[i + channel] ^ flip) * black + 127) / 255);
      }
    }
  }

  std::string_view bytes_;
  JPEGErrorTrap trap_;
  jpeg_progress_mgr progress_{};
  jpeg_decompress_struct jpeg_{};
  std::vector<std::uint8_t> ink_;  // One row of cyan, magenta, yellow, black.
};

}  // namespace

std::unique_ptr<RowSource> openJPEG(std::string_view bytes) {
  return std::make_unique<JPEGReader>(bytes);
}

}  // namespace varnok
