// ZipContainer: the zip format around entries that are deflated already.
//
// Bytes reach the file in order, so that it need not be one that can be sought
// in: an entry is held back until its sizes stand in its header, the central
// directory until the zip64 records stand behind it.
//
// Threads. One at a time. Destroyed without finish(): nothing appears.

#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/file_system.h"

namespace varnok {

struct ZipEntry {
  std::string name;         // UTF-8, without "/" and control characters.
  std::uint32_t dosDate{};  // The date-time word as it is written.
  std::string bytes;        // As given, later deflated.
  std::uint64_t size = 0;   // Of the bytes as given, and their checksum.
  std::uint32_t crc32 = 0;
};

class ZipContainer {
 public:
  explicit ZipContainer(std::unique_ptr<AtomicFile> file);
  ZipContainer(const ZipContainer&) = delete;
  ZipContainer& operator=(const ZipContainer&) = delete;
  ~ZipContainer();

  // Appends an entry with deflated bytes. After a failure no call but the
  // destructor makes sense.
  Status add(const ZipEntry& entry);

  // Writes the central directory and gives the file its final name.
  Status finish();

 private:
  class Output;

  std::unique_ptr<Output> output_;
  void* zip_ = nullptr;  // minizip's handle; null after finish().
  std::uint64_t entries_ = 0;
};

}  // namespace varnok
