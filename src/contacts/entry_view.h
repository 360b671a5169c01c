// Entries of multi-valued properties without copies, for those who read every
// person once. What a view shows lives until the next read through the store
// and the next change of the person.

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/property_value.h"

namespace varnok {

// A dictionary as text: "6:Street11:Hauptstr. 1", keys and values in turn, each
// with its length in bytes.
std::string encodeDictionary(const Dictionary& dictionary);
// Stops at the first piece that is not well formed.
Dictionary decodeDictionary(std::string_view text);

// A dictionary, or its text.
class DictionaryView {
 public:
  DictionaryView() = default;
  explicit DictionaryView(const Dictionary& dictionary) : dictionary_(&dictionary) {}
  explicit DictionaryView(std::string_view encoded) : encoded_(encoded) {}

  // The text under `key`, empty when missing.
  std::string_view textOr(std::string_view key) const;

 private:
  const Dictionary* dictionary_ = nullptr;
  std::string_view encoded_;
};

// The member that the list's type says is set.
struct EntryView {
  std::optional<std::string_view> label;
  std::string_view text;
  Instant instant;
  DictionaryView dictionary;
};

// Adds the entries of `list`, which must outlive them.
void appendViews(const MultiValue& list, std::vector<EntryView>& views);

}  // namespace varnok
