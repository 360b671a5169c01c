// Card: one vCard 3.0 as its lines, of which some can be changed while all the
// others stay exactly as they are.

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace varnok {

class Card {
 public:
  Card() = default;
  // Of a card's text, folded or not; what is around the card is left out.
  explicit Card(std::string_view text);

  // Logical lines between VERSION and END, without their line ends.
  const std::vector<std::string>& lines() const { return lines_; }
  std::size_t size() const { return lines_.size(); }
  void insert(std::size_t position, std::string line);
  void append(std::string line) { lines_.push_back(std::move(line)); }
  void erase(std::size_t position);

  // The value of the first line of this name as it stands, or nothing.
  std::optional<std::string_view> valueOf(std::string_view name) const;

  // Whole, not folded.
  std::string text() const;

 private:
  std::vector<std::string> lines_;
};

// `text` as a value or a component of one: UTF-8, line feeds as \n, separators
// escaped. Control characters are left out, but for tabs and line ends.
std::string cardValue(std::string_view text);

}  // namespace varnok
