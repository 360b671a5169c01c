#include "contacts/entry_view.h"

#include <charconv>
#include <functional>

namespace varnok {
namespace {

// Takes "LENGTH:" and so many bytes off the front of `text`.
std::optional<std::string_view> takePiece(std::string_view& text) {
  std::size_t length = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), length);
  const auto digits = static_cast<std::size_t>(result.ptr - text.data());
  if (result.ec != std::errc() || digits >= text.size() || text[digits] != ':') return std::nullopt;
  text.remove_prefix(digits + 1);
  if (length > text.size()) return std::nullopt;
  const std::string_view piece = text.substr(0, length);
  text.remove_prefix(length);
  return piece;
}

}  // namespace

std::string encodeDictionary(const Dictionary& dictionary) {
  std::string text;
  for (const auto& [key, value] : dictionary.entries()) {
    for (const std::string& piece : {std::cref(key), std::cref(value)}) {
      text += std::to_string(piece.size());
      text += ':';
      text += piece;
    }
  }
  return text;
}

Dictionary decodeDictionary(std::string_view text) {
  Dictionary dictionary;
  while (!text.empty()) {
    const auto key = takePiece(text);
    const auto value = takePiece(text);
    if (!key || !value) break;
    dictionary.put(*key, *value);
  }
  return dictionary;
}

std::string_view DictionaryView::textOr(std::string_view key) const {
  if (dictionary_ != nullptr) return dictionary_->textOr(key);
  for (std::string_view rest = encoded_; !rest.empty();) {
    const auto name = takePiece(rest);
    const auto value = takePiece(rest);
    if (!name || !value) break;
    if (*name == key) return *value;
  }
  return {};
}

void appendViews(const MultiValue& list, std::vector<EntryView>& views) {
  for (const MultiValueEntry& entry : list.entries) {
    EntryView& view = views.emplace_back();
    if (entry.label) view.label = *entry.label;
    if (const auto* text = std::get_if<std::string>(&entry.value)) view.text = *text;
    if (const auto* instant = std::get_if<Instant>(&entry.value)) view.instant = *instant;
    if (const auto* dictionary = std::get_if<Dictionary>(&entry.value)) view.dictionary = DictionaryView(*dictionary);
  }
}

}  // namespace varnok
