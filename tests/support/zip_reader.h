// Reads a zip archive back, with zlib: what each entry is called and holds.

#pragma once

#include <zlib.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/check.h"

namespace varnok {

inline std::uint64_t numberAt(std::string_view bytes, std::size_t offset, std::size_t size) {
  std::uint64_t number = 0;
  for (std::size_t i = size; i > 0; --i)
    number = number << 8U | static_cast<unsigned char>(bytes.at(offset + i - 1));
  return number;
}

struct ReadEntry {
  std::string name;
  std::string bytes;
  std::uint64_t flags = 0;
  std::uint64_t dateTime = 0;

  bool operator==(const ReadEntry&) const = default;
};

inline std::string inflated(std::string_view deflated, std::size_t size) {
  std::string bytes(size + 1, '\0');  // One more: the end is seen also of an empty one.
  std::string input(deflated);
  z_stream stream{};
  VARNOK_CHECK(inflateInit2(&stream, -MAX_WBITS) == Z_OK);
  stream.next_in = reinterpret_cast<Bytef*>(input.data());
  stream.avail_in = static_cast<uInt>(input.size());
  stream.next_out = reinterpret_cast<Bytef*>(bytes.data());
  stream.avail_out = static_cast<uInt>(bytes.size());
  const bool whole = inflate(&stream, Z_FINISH) == Z_STREAM_END && stream.avail_in == 0 && stream.total_out == size;
  inflateEnd(&stream);
  VARNOK_CHECK(whole);
  bytes.resize(size);
  return bytes;
}

// The entries in the order they were written, from one local header to the next.
inline std::vector<ReadEntry> readZip(std::string_view archive) {
  constexpr std::uint64_t kLocalHeader = 0x04034b50;
  std::vector<ReadEntry> entries;
  std::size_t at = 0;
  while (numberAt(archive, at, 4) == kLocalHeader) {
    const auto deflatedSize = static_cast<std::size_t>(numberAt(archive, at + 18, 4));
    const auto size = static_cast<std::size_t>(numberAt(archive, at + 22, 4));
    const auto nameSize = static_cast<std::size_t>(numberAt(archive, at + 26, 2));
    const std::size_t start = at + 30 + nameSize + static_cast<std::size_t>(numberAt(archive, at + 28, 2));
    ReadEntry entry{std::string(archive.substr(at + 30, nameSize)), inflated(archive.substr(start, deflatedSize), size),
                    numberAt(archive, at + 6, 2), numberAt(archive, at + 10, 4)};
    const auto sum = crc32(0, reinterpret_cast<const Bytef*>(entry.bytes.data()), static_cast<uInt>(size));
    VARNOK_CHECK(sum == numberAt(archive, at + 14, 4));
    entries.push_back(std::move(entry));
    at = start + deflatedSize;
  }
  return entries;
}

}  // namespace varnok
