// Any bytes as a vCard file: however they are cut, the same people come out,
// and all their text is valid UTF-8.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "import/vcard_reader.h"
#include "platform/testing/fake_clock.h"
#include "platform/utf8.h"

namespace varnok {
namespace {

class Latin1Codec : public TextCodec {
 public:
  std::optional<std::string> decode(std::string_view bytes, std::string_view encoding) const override {
    if (encoding != "ISO-8859-1") return std::nullopt;
    std::string text;
    for (const char c : bytes)
      appendUTF8(text, static_cast<unsigned char>(c));
    return text;
  }
  std::optional<std::string> encode(std::string_view /*text*/, std::string_view /*encoding*/) const override {
    return std::nullopt;
  }
};

void requireUTF8(std::string_view text) {
  if (!isValidUTF8(text)) std::abort();
}

void requireUTF8In(const EntryValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) requireUTF8(*text);
  const auto* dictionary = std::get_if<Dictionary>(&value);
  if (dictionary == nullptr) return;
  for (const auto& [key, text] : dictionary->entries())
    requireUTF8(text);
}

void requireUTF8In(const PropertyValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) requireUTF8(*text);
  const auto* list = std::get_if<MultiValue>(&value);
  if (list == nullptr) return;
  for (const MultiValueEntry& entry : list->entries) {
    if (entry.label) requireUTF8(*entry.label);
    requireUTF8In(entry.value);
  }
}

// Everything that a sink is told, comparable.
struct Outcome : VCardReader::Sink {
  std::vector<std::optional<PropertyValue>> values;
  std::vector<std::optional<std::string>> images;
  std::vector<std::pair<std::size_t, std::string>> skips;
  std::size_t cards = 0;

  void person(PersonRef person) override {
    bool any = person->hasImage();
    for (const Property& property : allProperties()) {
      values.push_back(person->value(property.id));
      if (!values.back()) continue;
      any = true;
      requireUTF8In(*values.back());
    }
    if (!any) std::abort();
    images.push_back(person->image());
  }
  void skipped(std::size_t line, std::string_view reason) override { skips.emplace_back(line, reason); }

  bool operator==(const Outcome& other) const {
    return values == other.values && images == other.images && skips == other.skips && cards == other.cards;
  }
};

// A small limit, so that cards reach it.
constexpr std::size_t kMaxCardBytes = 2000;

template <typename NextSize>
Outcome read(std::string_view bytes, NextSize nextSize) {
  const Latin1Codec codec;
  const FakeClock clock;
  Outcome outcome;
  VCardReader reader(outcome, codec, clock, {"", kMaxCardBytes});
  while (!bytes.empty()) {
    const std::size_t size = std::min(nextSize(), bytes.size());
    reader.feed(bytes.substr(0, size));
    bytes.remove_prefix(size);
  }
  reader.finish();
  outcome.cards = reader.cardCount();
  return outcome;
}

}  // namespace
}  // namespace varnok

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace varnok;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const Outcome whole = read(bytes, [&] { return bytes.size(); });
  if (whole.cards != whole.images.size() + whole.skips.size()) std::abort();
  if (!(read(bytes, [] { return std::size_t{1}; }) == whole)) std::abort();
  // Pieces whose sizes come from the input itself.
  std::size_t next = 0;
  const auto uneven = [&] { return std::size_t{1} + static_cast<unsigned char>(bytes[next++ % bytes.size()]) % 40U; };
  if (!(read(bytes, uneven) == whole)) std::abort();
  return 0;
}
