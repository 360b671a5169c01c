// Digests of the Dropbox service: its content hash, and what a sign-in needs.
//
// The content hash of a file is the SHA-256 of the SHA-256 digests of its blocks
// of 4 MiB, the last of which may be shorter; an empty file has no block.

#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace varnok {

constexpr std::size_t kHashBlock = 4U << 20U;  // Bytes.

// 32 raw bytes.
std::string sha256(std::string_view bytes);

std::string hexText(std::string_view bytes);

// The alphabet that needs no escapes in a URL, without padding.
std::string base64URL(std::string_view bytes);

// Takes a file's bytes in any pieces.
class ContentHash {
 public:
  ContentHash();
  ContentHash(const ContentHash&) = delete;
  ContentHash& operator=(const ContentHash&) = delete;
  ~ContentHash();

  void update(std::string_view bytes);

  // The digests of the blocks so far, the unfinished one included. Nothing may
  // be added afterwards.
  const std::string& finishBlocks();

  // As the service writes it, 64 digits in lower case.
  std::string finish() { return hexText(sha256(finishBlocks())); }

 private:
  void endBlock();

  class Digest;
  std::unique_ptr<Digest> block_;
  std::size_t inBlock_ = 0;  // Bytes.
  std::string digests_;
};

}  // namespace varnok
