// UnicodeStream: a file's bytes, whichever Unicode encoding they are in, as
// bytes of one kind.
//
// The first bytes decide. UTF-16 in either order, with a byte order mark or
// with a B as its first letter (BEGIN), is turned into UTF-8; everything else
// passes as it is, less the mark of UTF-8. It may still hold another encoding
// or malformed text, which the layers above deal with value by value.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace varnok {

class UnicodeStream {
 public:
  // Calls `pass` with bytes, some times or never. What it is given is valid
  // during the call only.
  template <typename Pass>
  void feed(std::string_view bytes, Pass&& pass) {
    if (encoding_ == Encoding::unknown && !recognise(bytes)) return;
    if (!start_.empty()) {
      passOn(start_, pass);
      start_.clear();
    }
    passOn(bytes, pass);
  }

  template <typename Pass>
  void finish(Pass&& pass) {
    decideOnStart();
    passOn(start_, pass);
    start_.clear();
  }

  // Whether the bytes were UTF-16: what is passed on is then valid UTF-8,
  // whatever the text says about its own encoding.
  bool isTranscoded() const { return encoding_ == Encoding::littleEndian || encoding_ == Encoding::bigEndian; }

 private:
  enum class Encoding { unknown, bytes, littleEndian, bigEndian };

  static constexpr std::size_t kSliceBytes = 65536;  // What is transcoded at a time.

  template <typename Pass>
  void passOn(std::string_view bytes, Pass&& pass) {
    if (!isTranscoded()) {
      if (!bytes.empty()) pass(bytes);
      return;
    }
    while (!bytes.empty()) {
      const std::string_view slice = bytes.substr(0, kSliceBytes);
      transcode(slice);
      if (!text_.empty()) pass(std::string_view(text_));
      bytes.remove_prefix(slice.size());
    }
  }

  // Moves bytes into start_ until they suffice; false while they do not.
  bool recognise(std::string_view& bytes);
  void decideOnStart();
  void transcode(std::string_view bytes);
  void addUnit(char32_t unit);

  Encoding encoding_ = Encoding::unknown;
  std::string start_;  // The first bytes, until the encoding is known and they are passed on.
  std::string text_;
  int oddByte_ = -1;            // The first half of a UTF-16 unit, or -1.
  char32_t highSurrogate_ = 0;  // Waits for its other half, or 0.
};

}  // namespace varnok
