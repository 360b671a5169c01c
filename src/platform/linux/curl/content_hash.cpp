#include "platform/linux/curl/content_hash.h"

#include <openssl/evp.h>

#include <algorithm>
#include <array>

#include "platform/check.h"

namespace varnok {

// OpenSSL fails here only when it cannot be used at all.
class ContentHash::Digest {
 public:
  Digest() : context_(EVP_MD_CTX_new()) { begin(); }
  Digest(const Digest&) = delete;
  Digest& operator=(const Digest&) = delete;
  ~Digest() { EVP_MD_CTX_free(context_); }

  void update(std::string_view bytes) { VARNOK_CHECK(EVP_DigestUpdate(context_, bytes.data(), bytes.size()) == 1); }

  // And begins the next one.
  std::string finish() {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned size = 0;
    VARNOK_CHECK(EVP_DigestFinal_ex(context_, digest.data(), &size) == 1);
    begin();
    return {digest.begin(), digest.begin() + size};
  }

 private:
  void begin() { VARNOK_CHECK(EVP_DigestInit_ex(context_, EVP_sha256(), nullptr) == 1); }

  EVP_MD_CTX* context_;
};

std::string sha256(std::string_view bytes) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned size = 0;
  VARNOK_CHECK(EVP_Digest(bytes.data(), bytes.size(), digest.data(), &size, EVP_sha256(), nullptr) == 1);
  return {digest.begin(), digest.begin() + size};
}

std::string hexText(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += kDigits[byte >> 4U];
    text += kDigits[byte & 0xFU];
  }
  return text;
}

std::string base64URL(std::string_view bytes) {
  constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
  std::string text;
  unsigned bits = 0;
  unsigned held = 0;
  for (const char c : bytes) {
    bits = (bits << 8U) | static_cast<unsigned char>(c);
    for (held += 8; held >= 6; held -= 6)
      text += kAlphabet[(bits >> (held - 6)) & 0x3FU];
  }
  if (held > 0) text += kAlphabet[(bits << (6 - held)) & 0x3FU];
  return text;
}

ContentHash::ContentHash() : block_(std::make_unique<Digest>()) {}

ContentHash::~ContentHash() = default;

void ContentHash::update(std::string_view bytes) {
  while (!bytes.empty()) {
    const std::string_view part = bytes.substr(0, kHashBlock - inBlock_);
    block_->update(part);
    inBlock_ += part.size();
    bytes.remove_prefix(part.size());
    if (inBlock_ == kHashBlock) endBlock();
  }
}

const std::string& ContentHash::finishBlocks() {
  if (inBlock_ > 0) endBlock();
  return digests_;
}

void ContentHash::endBlock() {
  digests_ += block_->finish();
  inBlock_ = 0;
}

}  // namespace varnok
