// PluralRule: the "Plural-Forms" field of a catalogue's header,
//
//   nplurals=2; plural=(n != 1);
//
// an expression in C's syntax over the count n, in unsigned 64-bit arithmetic.
// Division by zero gives zero.
//
// A value: it keeps its own copy of the expression. Nothing here fails after
// parse(), whatever the count.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace varnok {

class PluralRule {
 public:
  // Two forms, the first for a count of one: for a header without the field.
  PluralRule();

  // `field` is what follows "Plural-Forms:". Nothing when it is malformed.
  static std::optional<PluralRule> parse(std::string_view field);

  // The index of the form for `n`, below formCount().
  std::size_t formFor(std::uint64_t n) const;

  std::size_t formCount() const { return formCount_; }

 private:
  PluralRule(std::size_t formCount, std::string expression);

  std::size_t formCount_;
  std::string expression_;
};

}  // namespace varnok
