#include "backup/files/zip_container.h"

#include <minizip/zip.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/check.h"

namespace varnok {
namespace {

constexpr unsigned kNameIsUTF8 = 1U << 11U;

// Made on a Unix, format version 2.0: readers then take the name as it stands
// and the attributes as a file mode.
constexpr unsigned kUnix = 3U << 8U;
constexpr unsigned kMadeBy = kUnix | 20U;
constexpr unsigned kRegularFile0644 = 0100644U << 16U;

constexpr std::size_t kEndRecordSize = 22;
constexpr std::uint64_t kFullCount = 0xFFFF;
constexpr std::uint64_t kFullOffset = 0xFFFFFFFF;

void appendNumber(std::string& bytes, std::uint64_t number, int size) {
  for (int i = 0; i < size; ++i)
    bytes += static_cast<char>(number >> (8 * i) & 0xFFU);
}

// Where the central directory lies, and how many entries it has.
struct Directory {
  std::uint64_t entries = 0;
  std::uint64_t size = 0;
  std::uint64_t offset = 0;

  bool needsZip64() const { return entries >= kFullCount || offset >= kFullOffset; }
};

// The zip64 end record and its locator.
void appendZip64Records(std::string& bytes, const Directory& directory) {
  constexpr unsigned kVersion = 45;  // Of the format: 4.5, the first with these records.
  bytes += "PK\6\6";
  appendNumber(bytes, 44, 8);  // Size of the rest of this record.
  appendNumber(bytes, kUnix | kVersion, 2);
  appendNumber(bytes, kVersion, 2);  // Needed to read it.
  appendNumber(bytes, 0, 4);         // This disk.
  appendNumber(bytes, 0, 4);         // The directory's disk.
  appendNumber(bytes, directory.entries, 8);
  appendNumber(bytes, directory.entries, 8);
  appendNumber(bytes, directory.size, 8);
  appendNumber(bytes, directory.offset, 8);
  bytes += "PK\6\7";
  appendNumber(bytes, 0, 4);
  appendNumber(bytes, directory.offset + directory.size, 8);  // Of the record above.
  appendNumber(bytes, 1, 4);                                  // Disks.
}

// The end record. A number that does not fit is all ones here.
void appendEndRecord(std::string& bytes, const Directory& directory) {
  const std::uint64_t entries = std::min(directory.entries, kFullCount);
  bytes += "PK\5\6";
  appendNumber(bytes, 0, 4);  // Disks.
  appendNumber(bytes, entries, 2);
  appendNumber(bytes, entries, 2);
  appendNumber(bytes, directory.size, 4);
  appendNumber(bytes, std::min(directory.offset, kFullOffset), 4);
  appendNumber(bytes, 0, 2);  // Length of the comment.
}

// The size of the central directory at the start of `end`, from the end record
// at its end.
std::uint64_t directorySize(std::string_view end) {
  const std::string_view field = end.substr(end.size() - kEndRecordSize + 12, 4);
  std::uint64_t size = 0;
  for (std::size_t i = field.size(); i > 0; --i)
    size = size << 8U | static_cast<unsigned char>(field[i - 1]);
  return size;
}

std::size_t shortAt(std::string_view bytes, std::size_t offset) {
  return static_cast<std::size_t>(static_cast<unsigned char>(bytes[offset]) |
                                  static_cast<unsigned char>(bytes[offset + 1]) << 8);
}

// Says in every record of the directory that a Unix made it; the library forgets
// it for entries that begin beyond 4 GiB.
void restoreMaker(std::string& directory) {
  constexpr std::size_t kRecordSize = 46;
  std::size_t at = 0;
  while (at + kRecordSize <= directory.size()) {
    directory[at + 5] = static_cast<char>(kUnix >> 8U);
    at += kRecordSize + shortAt(directory, at + 28) + shortAt(directory, at + 30) + shortAt(directory, at + 32);
  }
}

Status recordFailed() {
  return {Status::Code::inputOutput, "the archive's records cannot be made"};
}

}  // namespace

// The end of the file that may still change, for minizip to write and seek in.
class ZipContainer::Output {
 public:
  explicit Output(std::unique_ptr<AtomicFile> file) : file_(std::move(file)) {}

  zlib_filefunc64_def functions() { return {&open, &read, &write, &tell, &seek, &close, &error, this}; }

  std::string& held() { return held_; }
  std::uint64_t heldFrom() const { return written_; }

  // Hands what is held back over to the file.
  Status release() {
    Status status = file_->append(held_);
    written_ += held_.size();
    held_.clear();
    position_ = 0;
    return status;
  }
  Status commit() { return file_->commit(); }

 private:
  static Output& self(void* output) { return *static_cast<Output*>(output); }

  static void* open(void* output, const void* /*name*/, int /*mode*/) { return output; }
  static uLong read(void* /*output*/, void* /*stream*/, void* /*bytes*/, uLong /*size*/) { return 0; }
  static uLong write(void* output, void* /*stream*/, const void* bytes, uLong size) {
    self(output).put({static_cast<const char*>(bytes), size});
    return size;
  }
  static ZPOS64_T tell(void* output, void* /*stream*/) { return self(output).written_ + self(output).position_; }
  static long seek(void* output, void* /*stream*/, ZPOS64_T offset, int origin) {
    return origin == ZLIB_FILEFUNC_SEEK_SET && self(output).goTo(offset) ? 0 : -1;
  }
  static int close(void* /*output*/, void* /*stream*/) { return 0; }
  static int error(void* /*output*/, void* /*stream*/) { return 0; }

  void put(std::string_view bytes) {
    const std::size_t overwritten = std::min(bytes.size(), held_.size() - position_);
    held_.replace(position_, overwritten, bytes);
    position_ += bytes.size();
  }
  bool goTo(std::uint64_t offset) {
    if (offset < written_ || offset > written_ + held_.size()) return false;
    position_ = static_cast<std::size_t>(offset - written_);
    return true;
  }

  std::unique_ptr<AtomicFile> file_;
  std::uint64_t written_ = 0;  // Bytes given to the file.
  std::string held_;           // Those behind them.
  std::size_t position_ = 0;   // In held_.
};

ZipContainer::ZipContainer(std::unique_ptr<AtomicFile> file) : output_(std::make_unique<Output>(std::move(file))) {
  zlib_filefunc64_def functions = output_->functions();
  zip_ = zipOpen2_64(output_.get(), APPEND_STATUS_CREATE, nullptr, &functions);
  VARNOK_CHECK(zip_ != nullptr);  // Only memory can be missing.
}

ZipContainer::~ZipContainer() {
  if (zip_ != nullptr) zipClose(zip_, nullptr);  // Its records end in memory.
}

Status ZipContainer::add(const ZipEntry& entry) {
  zip_fileinfo information{};
  information.dosDate = entry.dosDate;
  information.external_fa = kRegularFile0644;
  const bool made =
      zipOpenNewFileInZip4_64(zip_, entry.name.c_str(), &information, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED,
                              Z_DEFAULT_COMPRESSION, /*raw=*/1, -MAX_WBITS, MAX_MEM_LEVEL, Z_DEFAULT_STRATEGY, nullptr,
                              0, kMadeBy, kNameIsUTF8, /*zip64=*/0) == ZIP_OK &&
      zipWriteInFileInZip(zip_, entry.bytes.data(), static_cast<unsigned>(entry.bytes.size())) == ZIP_OK &&
      zipCloseFileInZipRaw64(zip_, entry.size, entry.crc32) == ZIP_OK;
  if (!made) return recordFailed();
  ++entries_;
  return output_->release();
}

// The library stops counting at 65,535 entries and then writes no zip64 records,
// so what stands behind the directory is written anew.
Status ZipContainer::finish() {
  Directory directory{entries_, 0, output_->heldFrom()};
  if (zipClose(std::exchange(zip_, nullptr), nullptr) != ZIP_OK) return recordFailed();
  std::string& end = output_->held();
  directory.size = directorySize(end);
  end.resize(static_cast<std::size_t>(directory.size));
  restoreMaker(end);
  if (directory.needsZip64()) appendZip64Records(end, directory);
  appendEndRecord(end, directory);
  Status status = output_->release();
  return status.ok() ? output_->commit() : status;
}

}  // namespace varnok
