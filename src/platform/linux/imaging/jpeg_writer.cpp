#include "platform/linux/imaging/jpeg_writer.h"

#include <cstddef>
#include <cstdlib>

#include "platform/linux/imaging/jpeg_error_trap.h"

namespace varnok {

namespace {

class JPEGWriter {
 public:
  JPEGWriter() { jpeg_.err = trap_.manager(); }
  ~JPEGWriter() {
    jpeg_destroy_compress(&jpeg_);
    std::free(bytes_);
  }
  JPEGWriter(const JPEGWriter&) = delete;
  JPEGWriter& operator=(const JPEGWriter&) = delete;

  bool write(const Image& image, int setting) {
    return trap_.guarded([&] {
      jpeg_create_compress(&jpeg_);
      jpeg_mem_dest(&jpeg_, &bytes_, &size_);
      jpeg_.image_width = static_cast<JDIMENSION>(image.size.width);
      jpeg_.image_height = static_cast<JDIMENSION>(image.size.height);
      jpeg_.input_components = 3;
      jpeg_.in_color_space = JCS_RGB;
      jpeg_set_defaults(&jpeg_);
      jpeg_set_quality(&jpeg_, setting, /*force_baseline=*/TRUE);
      jpeg_.optimize_coding = TRUE;
      jpeg_start_compress(&jpeg_, /*write_all_tables=*/TRUE);
      writeRows(image);
      jpeg_finish_compress(&jpeg_);
    });
  }

  std::string bytes() const { return {reinterpret_cast<const char*>(bytes_), size_}; }

 private:
  void writeRows(const Image& image) {
    const std::size_t stride = static_cast<std::size_t>(image.size.width) * 3;
    while (jpeg_.next_scanline < jpeg_.image_height) {
      // The library takes its rows as writable and only reads them.
      auto* row = const_cast<JSAMPROW>(image.rgb.data() + jpeg_.next_scanline * stride);
      jpeg_write_scanlines(&jpeg_, &row, 1);
    }
  }

  JPEGErrorTrap trap_;
  jpeg_compress_struct jpeg_{};
  unsigned char* bytes_ = nullptr;  // The library's, by malloc.
  unsigned long size_ = 0;
};

}  // namespace

std::optional<std::string> writeJPEG(const Image& image, int setting) {
  JPEGWriter writer;
  if (!writer.write(image, setting)) return std::nullopt;
  return writer.bytes();
}

}  // namespace varnok
