// VCardLineReader: bytes, cut anywhere, into the logical lines of a vCard file.
//
//   physical line  ends with LF, CRLF or CR, mixed as they may be
//   logical line   one physical line and those that continue it:
//                  - a line that begins with a blank or a tab;
//                  - the line after a quoted-printable one that ends with "=";
//                  - a bare line of base64 text after a base64 line.
//
// Empty lines end the logical line and are not handed on. A line that lies in
// one piece and is not continued is handed on where it lies, without a copy.

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "import/vcard_line.h"

namespace varnok {

// What opens or closes a card. Blanks around it and a byte order mark before
// it do not count, nor does the case.
enum class VCardEdge { none, begin, end };
VCardEdge vCardEdgeOf(std::string_view line);

class VCardLineReader {
 public:
  class Sink {
   public:
    virtual ~Sink() = default;
    // `number` counts physical lines from 1. `text` is valid during the call.
    virtual void line(std::size_t number, std::string_view text) = 0;
  };

  // A line of more than `maxLineBytes` is handed on cut down to one byte more:
  // enough to be refused for its length.
  VCardLineReader(Sink& sink, std::size_t maxLineBytes) : sink_(sink), keptBytes_(maxLineBytes + 1) {}

  void feed(std::string_view bytes);
  void finish();

  // Whether the blank that begins a continued line belongs to the text, as it
  // does in version 2.1, or was put in by the folding.
  void setFoldKeepsBlank(bool keeps) { foldKeepsBlank_ = keeps; }

 private:
  void physicalLine(std::string_view text);
  bool continuesHeldLine(std::string_view next);
  void extendHeldLine(std::string_view more);
  void ownHeldLine();
  VCardEncoding heldEncoding();
  void passHeldLine();
  void append(std::string& line, std::string_view more) const;

  Sink& sink_;
  std::size_t keptBytes_;
  bool foldKeepsBlank_ = false;
  bool skipLineFeed_ = false;  // The last byte was a CR: an LF next is part of that line end.
  std::string partial_;        // A physical line whose end is yet to come.
  std::size_t lineCount_ = 0;

  // The logical line that the next physical line may continue.
  bool holds_ = false;
  std::size_t heldNumber_ = 0;
  std::string_view held_;  // Into the bytes being fed, or heldText_.
  std::string heldText_;
  std::optional<VCardEncoding> heldEncoding_;
};

}  // namespace varnok
