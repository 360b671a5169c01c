#include "platform/linux/text/plural_rule.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace varnok {
namespace {

constexpr std::string_view kBlanks = " \t\n\r";
constexpr std::size_t kMaxForms = 16;
// Against a stack overflow on a hostile file; real rules nest four deep.
constexpr int kMaxDepth = 64;

void skipBlanks(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
}

bool consume(std::string_view& text, std::string_view token) {
  skipBlanks(text);
  if (!text.starts_with(token)) return false;
  text.remove_prefix(token.size());
  return true;
}

std::optional<std::uint64_t> consumeNumber(std::string_view& text) {
  skipBlanks(text);
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return number;
}

using Operation = std::uint64_t (*)(std::uint64_t, std::uint64_t);

struct BinaryOperator {
  std::string_view token;
  int precedence;
  Operation apply;
};

// The longer of two tokens with the same beginning comes first.
constexpr std::array<BinaryOperator, 13> kBinaryOperators{{
    {"||", 1, [](std::uint64_t a, std::uint64_t b) -> std::uint64_t { return a != 0 || b != 0; }},
    {"&&", 2, [](std::uint64_t a, std::uint64_t b) -> std::uint64_t { return a != 0 && b != 0; }},
    {"==", 3, [](std::uint64_t a, std::uint64_t b) -> std::uint64_t { return a == b; }},
    {"!=", 3, [](std::uint64_t a, std::uint64_t b) -> std::uint64_t { return a != b; }},
    {"<=", 4, [](std::uint64_t a, std::uint64_t b) -> std::uint64_t { return a <= b; }},
    {">=", 4, [](std::uint64_t a, std::uint64_t b) -> std::uint64_t { return a >= b; }},
    {"<", 4, [](std::uint64_t a, std::uint64_t b) -> std::uint64_t { return a < b; }},
    {">", 4, [](std::uint64_t a, std::uint64_t b) -> std::uint64_t { return a > b; }},
    {"+", 5, [](std::uint64_t a, std::uint64_t b) { return a + b; }},
    {"-", 5, [](std::uint64_t a, std::uint64_t b) { return a - b; }},
    {"*", 6, [](std::uint64_t a, std::uint64_t b) { return a * b; }},
    {"/", 6, [](std::uint64_t a, std::uint64_t b) { return b == 0 ? 0 : a / b; }},
    {"%", 6, [](std::uint64_t a, std::uint64_t b) { return b == 0 ? 0 : a % b; }},
}};

// Walks the whole expression whatever the count is, both branches of a "?"
// included, so an expression that is well formed for one count is for all.
class Evaluator {
 public:
  Evaluator(std::string_view expression, std::uint64_t n) : rest_(expression), n_(n) {}

  // Nothing when the expression is malformed.
  std::optional<std::uint64_t> run() {
    const std::uint64_t value = conditional();
    skipBlanks(rest_);
    if (failed_ || !rest_.empty()) return std::nullopt;
    return value;
  }

 private:
  std::uint64_t fail() {
    failed_ = true;
    rest_ = {};
    return 0;
  }

  std::uint64_t conditional() {
    if (++depth_ > kMaxDepth) return fail();
    std::uint64_t value = binary(/*lowest=*/1);
    if (consume(rest_, "?")) {
      const std::uint64_t whenTrue = conditional();
      if (!consume(rest_, ":")) return fail();
      const std::uint64_t whenFalse = conditional();
      value = value != 0 ? whenTrue : whenFalse;
    }
    --depth_;
    return value;
  }

  // Operators of at least the precedence `lowest`, from left to right.
  std::uint64_t binary(int lowest) {
    std::uint64_t left = unary();
    while (const BinaryOperator* next = consumeOperator(lowest)) {
      left = next->apply(left, binary(next->precedence + 1));
    }
    return left;
  }

  const BinaryOperator* consumeOperator(int lowest) {
    for (const BinaryOperator& candidate : kBinaryOperators) {
      if (candidate.precedence >= lowest && consume(rest_, candidate.token)) return &candidate;
    }
    return nullptr;
  }

  std::uint64_t unary() {
    bool negated = false;
    bool any = false;
    while (consume(rest_, "!")) {
      negated = !negated;
      any = true;
    }
    const std::uint64_t value = primary();
    return any ? static_cast<std::uint64_t>((value == 0) == negated) : value;
  }

  std::uint64_t primary() {
    if (consume(rest_, "n")) return n_;
    if (consume(rest_, "(")) {
      const std::uint64_t value = conditional();
      return consume(rest_, ")") ? value : fail();
    }
    const std::optional<std::uint64_t> number = consumeNumber(rest_);
    return number ? *number : fail();
  }

  std::string_view rest_;
  std::uint64_t n_;
  int depth_ = 0;
  bool failed_ = false;
};

}  // namespace

PluralRule::PluralRule() : PluralRule(2, "n != 1") {}

PluralRule::PluralRule(std::size_t formCount, std::string expression)
    : formCount_(formCount), expression_(std::move(expression)) {}

std::optional<PluralRule> PluralRule::parse(std::string_view field) {
  if (!consume(field, "nplurals") || !consume(field, "=")) return std::nullopt;
  const std::optional<std::uint64_t> formCount = consumeNumber(field);
  if (!formCount || *formCount == 0 || *formCount > kMaxForms) return std::nullopt;
  if (!consume(field, ";") || !consume(field, "plural") || !consume(field, "=")) return std::nullopt;
  const std::string_view expression = field.substr(0, field.find(';'));
  if (!Evaluator(expression, 0).run()) return std::nullopt;
  return PluralRule(static_cast<std::size_t>(*formCount), std::string(expression));
}

std::size_t PluralRule::formFor(std::uint64_t n) const {
  const std::uint64_t form = Evaluator(expression_, n).run().value_or(0);
  return form < formCount_ ? static_cast<std::size_t>(form) : 0;
}

}  // namespace varnok
