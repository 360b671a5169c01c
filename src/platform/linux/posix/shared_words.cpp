#include "platform/linux/posix/shared_words.h"

#include <linux/magic.h>
#include <sys/mman.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <iterator>

namespace varnok {
namespace {

// A multiple of every page size in use. Mapping beyond the end of the file is
// harmless as long as nothing there is touched, and saves mapping anew for each
// record.
constexpr std::uint64_t kMapStep = 65536;

// File systems that change a written block in place, without asking for space.
constexpr std::uint64_t kInPlace[] = {EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC, TMPFS_MAGIC};

bool changesInPlace(int fd) {
  struct statfs information {};
  if (::fstatfs(fd, &information) != 0) return false;
  const auto type = static_cast<std::uint64_t>(information.f_type);
  return std::find(std::begin(kInPlace), std::end(kInPlace), type) != std::end(kInPlace);
}

// What a call wrote is seen before what is read next. Between processes, which
// no sanitizer watches; GCC's only warns that it does not know fences.
void orderBetweenProcesses() {
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wtsan"
#endif
  std::atomic_thread_fence(std::memory_order_seq_cst);
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
}

}  // namespace

SharedWords::~SharedWords() {
  unmap();
}

void SharedWords::unmap() {
  if (map_ != nullptr) ::munmap(map_, size_);
  map_ = nullptr;
  size_ = 0;
}

void SharedWords::attach(int fd) {
  unmap();
  fd_ = fd;
  storable_ = changesInPlace(fd);
}

void SharedWords::reach(std::uint64_t end) {
  if (end <= size_) return;
  unmap();
  const std::uint64_t size = (end + kMapStep - 1) / kMapStep * kMapStep;
  void* map = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, fd_, 0);
  if (map == MAP_FAILED) return;  // Calls do the same work.
  map_ = static_cast<unsigned char*>(map);
  size_ = size;
}

std::uint64_t* SharedWords::wordAt(std::uint64_t offset) const {
  return reinterpret_cast<std::uint64_t*>(map_ + offset);  // Pages and offsets are aligned.
}

std::uint64_t SharedWords::read(std::uint64_t offset) const {
  if (map_ != nullptr) return std::atomic_ref(*wordAt(offset)).load(std::memory_order_seq_cst);
  std::uint64_t word = 0;
  if (::pread(fd_, &word, sizeof word, static_cast<off_t>(offset)) != sizeof word) return 0;
  return word;
}

bool SharedWords::write(std::uint64_t offset, std::uint64_t word) {
  if (map_ != nullptr && storable_) {
    std::atomic_ref(*wordAt(offset)).store(word, std::memory_order_seq_cst);
    return true;
  }
  const bool written = ::pwrite(fd_, &word, sizeof word, static_cast<off_t>(offset)) == sizeof word;
  orderBetweenProcesses();
  return written;
}

}  // namespace varnok
