// VCardReader: the people of a vCard file, one at a time, from bytes that come
// in pieces.
//
// What it reads. Versions 2.1, 3.0 and 4.0 as programs really write them, and
// everything that our own writer writes: docs/formats/vcard-import.md says
// which line becomes what. However the bytes are cut, the result is the same.
//
// Memory. One card, and at most a small multiple of the limit on its size. A
// file may be of any length.
//
// Lifetime. One reader reads one file. What it was given must outlive it.
//
// Threads. Any one thread; the sink is called during feed() and finish().
//
// Failure. There is none: what cannot be understood is left out, and a card
// that yields nobody is reported to skipped().

#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "contacts/contact_record.h"
#include "platform/clock.h"
#include "platform/text_codec.h"

namespace varnok {

struct VCardReaderOptions {
  // The encoding of text that is no valid UTF-8 and names no CHARSET but that.
  // Our own zip backups hold such text in some languages. When empty, bad bytes
  // become U+FFFD.
  std::string fallbackEncoding;

  // Of a card as it stands in the file; each line counts 128 bytes on top.
  std::size_t maxCardBytes = std::size_t{64} << 20U;
};

class VCardReader {
 public:
  class Sink {
   public:
    virtual ~Sink() = default;
    // A person outside any store, with at least one property or an image.
    virtual void person(PersonRef person) = 0;
    // A card that yields nobody. `line` is that of its BEGIN, counted from 1;
    // `reason` is a short phrase for a log.
    virtual void skipped(std::size_t line, std::string_view reason) = 0;
  };

  VCardReader(Sink& sink, const TextCodec& codec, const Clock& clock, VCardReaderOptions options = {});
  VCardReader(const VCardReader&) = delete;
  VCardReader& operator=(const VCardReader&) = delete;
  ~VCardReader();

  void feed(std::string_view bytes);

  // The bytes end here: a card that is still open ends too.
  void finish();

  // Cards begun so far, the skipped ones included. 0 after finish() means that
  // the file is no vCard file.
  std::size_t cardCount() const;

 private:
  class Cards;

  std::unique_ptr<Cards> cards_;
};

}  // namespace varnok
