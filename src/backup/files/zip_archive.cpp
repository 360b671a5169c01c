#include "backup/files/zip_archive.h"

#include <libdeflate.h>

#include <cstdint>
#include <limits>
#include <utility>

#include "backup/files/work_ahead.h"
#include "backup/files/zip_container.h"
#include "platform/check.h"

namespace varnok {
namespace {

constexpr int kDefaultLevel = 6;

// What may be inside before the oldest must be written: enough for all workers,
// little beside the photos that a backup holds.
constexpr std::size_t kMostEntries = 1024;
constexpr std::uint64_t kMostBytes = 8U << 20U;

// Bytes that are worth calling a worker.
constexpr std::uint64_t kWorkerShare = 32768;

// Without zip64 headers of its own an entry is smaller than 4 GiB, also when
// deflating makes it larger.
constexpr std::uint64_t kLargestEntry = std::numeric_limits<std::uint32_t>::max() - (1U << 20U);

// Keeps the state of the compression: making one costs more than deflating a
// small card.
class Deflater {
 public:
  Deflater() : compressor_(libdeflate_alloc_compressor(kDefaultLevel)) {
    VARNOK_CHECK(compressor_ != nullptr);  // Only memory can be missing.
  }
  Deflater(const Deflater&) = delete;
  Deflater& operator=(const Deflater&) = delete;
  ~Deflater() { libdeflate_free_compressor(compressor_); }

  void operator()(ZipEntry& entry) {
    const std::string& bytes = entry.bytes;
    entry.size = bytes.size();
    entry.crc32 = libdeflate_crc32(0, bytes.data(), bytes.size());
    const std::size_t bound = libdeflate_deflate_compress_bound(compressor_, bytes.size());
    if (room_.size() < bound) room_.resize(bound);
    const std::size_t size =
        libdeflate_deflate_compress(compressor_, bytes.data(), bytes.size(), room_.data(), room_.size());
    VARNOK_CHECK(size > 0);  // The bound is enough for anything.
    entry.bytes.assign(room_, 0, size);
  }

 private:
  libdeflate_compressor* compressor_;
  std::string room_;
};

// Quirk: not the DOS layout but the seconds since 1970, as they are. Programs
// that show it as a date show a wrong one.
std::uint32_t dateTimeWord(const Clock& clock) {
  return static_cast<std::uint32_t>(static_cast<std::int64_t>(clock.now()));
}

}  // namespace

class ZipArchive::Ahead : public WorkAhead<ZipEntry, Deflater> {
 public:
  explicit Ahead(TaskRunner& tasks) : WorkAhead(tasks, kWorkerShare) {}

  bool full() const { return jobs() >= kMostEntries || weight() >= kMostBytes; }
};

ZipArchive::ZipArchive(FileSystem& files, const Clock& clock, TaskRunner& tasks)
    : files_(files), clock_(clock), tasks_(tasks) {}

ZipArchive::~ZipArchive() = default;

bool ZipArchive::CreateZipFile2(const std::string& path) {
  Status status;
  std::unique_ptr<AtomicFile> file = files_.createAtomic(path, status);
  if (file == nullptr) return fail(std::move(status));
  container_ = std::make_unique<ZipContainer>(std::move(file));
  ahead_ = std::make_unique<Ahead>(tasks_);
  return true;
}

bool ZipArchive::addData(std::string bytes, std::string newName) {
  if (container_ == nullptr) return fail({Status::Code::invalidArgument, "the archive is not open: " + newName});
  const std::uint64_t size = bytes.size();
  if (size > kLargestEntry) return fail({Status::Code::invalidArgument, "too large for a zip: " + newName});
  ahead_->push({std::move(newName), dateTimeWord(clock_), std::move(bytes)}, size);
  while (const auto entry = ahead_->full() ? ahead_->take() : ahead_->takeReady()) {
    if (!write(*entry)) return false;
  }
  return true;
}

bool ZipArchive::CloseZipFile2() {
  if (container_ == nullptr) return fail({Status::Code::invalidArgument, "the archive is not open"});
  while (const auto entry = ahead_->take()) {
    if (!write(*entry)) return false;
  }
  Status status = container_->finish();
  if (!status.ok()) return fail(std::move(status));
  ahead_.reset();
  container_.reset();
  return true;
}

bool ZipArchive::write(const ZipEntry& entry) {
  Status status = container_->add(entry);
  return status.ok() || fail(std::move(status));
}

// Nothing more is written; what was is given up.
bool ZipArchive::fail(Status status) {
  if (status_.ok()) status_ = std::move(status);
  ahead_.reset();
  container_.reset();
  return false;
}

}  // namespace varnok
