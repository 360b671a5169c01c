#include "import/vcard_reader.h"

#include <utility>

#include "import/unicode_stream.h"
#include "import/vcard_line_reader.h"
#include "import/vcard_person_builder.h"
#include "import/vcard_text.h"

namespace varnok {

// Follows where cards begin and end, and gives their lines to the builder.
class VCardReader::Cards : public VCardLineReader::Sink {
 public:
  Cards(VCardReader::Sink& sink, const TextCodec& codec, const Clock& clock, VCardReaderOptions options)
      : sink_(sink),
        maxCardBytes_(options.maxCardBytes),
        decoder_(codec, std::move(options.fallbackEncoding)),
        builder_(decoder_, clock),
        lines_(*this, maxCardBytes_) {}

  void feed(std::string_view bytes) {
    stream_.feed(bytes, [this](std::string_view piece) { passOn(piece); });
  }

  void finish() {
    stream_.finish([this](std::string_view piece) { passOn(piece); });
    lines_.finish();
    endCard();
  }

  std::size_t cardCount() const { return cardCount_; }

 private:
  void passOn(std::string_view piece) {
    if (stream_.isTranscoded()) decoder_.setTranscoded();
    lines_.feed(piece);
  }

  void line(std::size_t number, std::string_view text) override {
    switch (vCardEdgeOf(text)) {
      case VCardEdge::begin: return begin(number);
      case VCardEdge::end: return end();
      case VCardEdge::none: break;
    }
    if (isOpen_) content(text);
  }

  // A card inside a card is an agent's, and only where AGENT announced it;
  // elsewhere the card before just lacks its end.
  void begin(std::size_t number) {
    if (std::exchange(expectsAgent_, false)) {
      ++agentDepth_;
      return;
    }
    endCard();
    isOpen_ = true;
    beginLine_ = number;
    ++cardCount_;
  }

  void end() {
    expectsAgent_ = false;
    if (agentDepth_ > 0) {
      --agentDepth_;
    } else {
      endCard();
    }
  }

  void content(std::string_view text) {
    expectsAgent_ = false;
    cardBytes_ += text.size() + kLineCost;
    const auto line = splitVCardLine(text);
    if (line && equalsIgnoringCase(line->name, "AGENT")) return agent(line->value);
    if (cardBytes_ > maxCardBytes_) return builder_.reset();
    if (!line || agentDepth_ > 0) return;
    if (equalsIgnoringCase(line->name, "VERSION")) {
      lines_.setFoldKeepsBlank(trimmedBlanks(line->value) == "2.1");
    } else {
      builder_.add(*line);
    }
  }

  void agent(std::string_view value) {
    if (vCardEdgeOf(value) == VCardEdge::begin) ++agentDepth_;
    expectsAgent_ = trimmedBlanks(value).empty();
  }

  void endCard() {
    if (!std::exchange(isOpen_, false)) return;
    const bool isGroup = builder_.isGroup();
    PersonRef person = builder_.build();
    if (cardBytes_ > maxCardBytes_) {
      sink_.skipped(beginLine_, "the card is too large");
    } else if (isGroup) {
      sink_.skipped(beginLine_, "the card is a group of people");
    } else if (person == nullptr) {
      sink_.skipped(beginLine_, "the card holds nothing to import");
    } else {
      sink_.person(std::move(person));
    }
    cardBytes_ = 0;
    agentDepth_ = 0;
    expectsAgent_ = false;
    lines_.setFoldKeepsBlank(/*keeps=*/false);
  }

  // What an entry takes in memory, in bytes: a card of very many tiny lines
  // is a large one too.
  static constexpr std::size_t kLineCost = 128;

  VCardReader::Sink& sink_;
  std::size_t maxCardBytes_;
  VCardTextDecoder decoder_;
  VCardPersonBuilder builder_;
  UnicodeStream stream_;
  VCardLineReader lines_;

  bool isOpen_ = false;
  std::size_t beginLine_ = 0;
  std::size_t cardBytes_ = 0;
  std::size_t cardCount_ = 0;
  int agentDepth_ = 0;         // Cards open inside this one.
  bool expectsAgent_ = false;  // The line before was an AGENT without a value.
};

VCardReader::VCardReader(Sink& sink, const TextCodec& codec, const Clock& clock, VCardReaderOptions options)
    : cards_(std::make_unique<Cards>(sink, codec, clock, std::move(options))) {}

VCardReader::~VCardReader() = default;

void VCardReader::feed(std::string_view bytes) {
  cards_->feed(bytes);
}

void VCardReader::finish() {
  cards_->finish();
}

std::size_t VCardReader::cardCount() const {
  return cards_->cardCount();
}

}  // namespace varnok
