#include "platform/preference_store.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace varnok {
namespace {

std::string_view withoutLeadingBlanks(std::string_view text) {
  const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
  return start == std::string_view::npos ? std::string_view() : text.substr(start);
}

bool boolOfText(std::string_view text) {
  text = withoutLeadingBlanks(text);
  if (!text.empty() && (text.front() == '+' || text.front() == '-')) text.remove_prefix(1);
  const std::size_t start = text.find_first_not_of('0');
  if (start == std::string_view::npos) return false;
  const char first = text[start];
  return first == 'Y' || first == 'y' || first == 'T' || first == 't' || (first >= '1' && first <= '9');
}

bool boolOf(const Value* value) {
  if (value == nullptr) return false;
  if (const auto* text = std::get_if<std::string>(value)) return boolOfText(*text);
  if (const auto* flag = std::get_if<bool>(value)) return *flag;
  if (const auto* integer = std::get_if<std::int64_t>(value)) return *integer != 0;
  if (const auto* real = std::get_if<double>(value)) return *real != 0.0;
  return false;
}

// from_chars knows no "+" and no blanks.
template <typename Number>
Number leadingNumber(std::string_view text) {
  text = withoutLeadingBlanks(text);
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  Number number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec != std::errc::result_out_of_range) return number;
  const bool negative = text.starts_with('-');
  return negative ? std::numeric_limits<Number>::lowest() : std::numeric_limits<Number>::max();
}

std::int64_t truncated(double number) {
  constexpr double kLimit = 9223372036854775807.0;
  if (std::isnan(number)) return 0;
  if (number >= kLimit) return std::numeric_limits<std::int64_t>::max();
  if (number <= -kLimit) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(number);
}

std::int64_t integerOf(const Value* value) {
  if (value == nullptr) return 0;
  if (const auto* text = std::get_if<std::string>(value)) return leadingNumber<std::int64_t>(*text);
  if (const auto* flag = std::get_if<bool>(value)) return *flag ? 1 : 0;
  if (const auto* integer = std::get_if<std::int64_t>(value)) return *integer;
  if (const auto* real = std::get_if<double>(value)) return truncated(*real);
  return 0;
}

std::string decimalText(double number) {
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, number);
  return {buffer, result.ptr};
}

}  // namespace

void PreferenceStore::registerDefaults(ValueDictionary defaults) {
  const std::scoped_lock lock(mutex_);
  registered_ = std::move(defaults);
  ++generation_;
}

void PreferenceStore::setVolatileValue(Value value, std::string_view key) {
  const std::scoped_lock lock(mutex_);
  volatile_.insert_or_assign(std::string(key), std::move(value));
  ++generation_;
}

const Value* PreferenceStore::find(std::string_view key) const {
  if (!volatile_.empty()) {
    if (const auto found = volatile_.find(key); found != volatile_.end()) return &found->second;
  }
  if (const Value* stored = storedValue(key)) return stored;
  const auto found = registered_.find(key);
  return found == registered_.end() ? nullptr : &found->second;
}

std::optional<Value> PreferenceStore::objectForKey(std::string_view key) const {
  const std::scoped_lock lock(mutex_);
  const Value* value = find(key);
  return value == nullptr ? std::nullopt : std::optional(*value);
}

std::optional<std::string> PreferenceStore::stringForKey(std::string_view key) const {
  const std::scoped_lock lock(mutex_);
  const Value* value = find(key);
  if (value == nullptr) return std::nullopt;
  if (const auto* text = std::get_if<std::string>(value)) return *text;
  if (const auto* flag = std::get_if<bool>(value)) return *flag ? "1" : "0";
  if (const auto* integer = std::get_if<std::int64_t>(value)) return std::to_string(*integer);
  if (const auto* real = std::get_if<double>(value)) return decimalText(*real);
  return std::nullopt;
}

bool PreferenceStore::boolForKey(std::string_view key) const {
  const std::scoped_lock lock(mutex_);
  return boolOf(find(key));
}

std::uint32_t PreferenceStore::boolsForKeys(std::span<const std::string_view> keys) const {
  const std::scoped_lock lock(mutex_);
  const std::uint64_t generation = generation_ + storedGeneration();
  if (lastBools_.generation == generation && std::ranges::equal(keys, lastBools_.keys)) return lastBools_.bits;
  std::uint32_t bits = 0;
  bool lasting = true;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const Value* value = find(keys[i]);
    if (boolOf(value)) bits |= 1U << i;
    lasting = lasting && (value == nullptr || std::holds_alternative<std::string>(*value));
  }
  lastBools_.keys.clear();
  if (lasting) lastBools_ = {{keys.begin(), keys.end()}, generation, bits};
  return bits;
}

std::int64_t PreferenceStore::integerForKey(std::string_view key) const {
  const std::scoped_lock lock(mutex_);
  return integerOf(find(key));
}

double PreferenceStore::doubleForKey(std::string_view key) const {
  const std::scoped_lock lock(mutex_);
  const Value* value = find(key);
  if (value == nullptr) return 0.0;
  if (const auto* text = std::get_if<std::string>(value)) return leadingNumber<double>(*text);
  if (const auto* flag = std::get_if<bool>(value)) return *flag ? 1.0 : 0.0;
  if (const auto* integer = std::get_if<std::int64_t>(value)) return static_cast<double>(*integer);
  if (const auto* real = std::get_if<double>(value)) return *real;
  return 0.0;
}

void PreferenceStore::setValue(Value value, std::string_view key) {
  const std::scoped_lock lock(mutex_);
  put(std::move(value), key);
}

std::int64_t PreferenceStore::takeNumberForKey(std::string_view key, Status& status) {
  const std::scoped_lock lock(mutex_);
  const std::int64_t number = integerOf(find(key));
  put(number + 1, key);
  status = flush();
  return number;
}

void PreferenceStore::put(Value value, std::string_view key) {
  store(key, value);
  if (const auto found = volatile_.find(key); found != volatile_.end()) {
    found->second = std::move(value);
    ++generation_;
  }
}

void PreferenceStore::removeObjectForKey(std::string_view key) {
  const std::scoped_lock lock(mutex_);
  erase(key);
  if (const auto found = volatile_.find(key); found != volatile_.end()) {
    volatile_.erase(found);
    ++generation_;
  }
}

Status PreferenceStore::synchronize() {
  const std::scoped_lock lock(mutex_);
  return flush();
}

PreferenceStore::Origin PreferenceStore::originOf(std::string_view key) const {
  const std::scoped_lock lock(mutex_);
  if (volatile_.contains(key)) return Origin::run;
  if (storedValue(key)) return Origin::stored;
  if (registered_.contains(key)) return Origin::registered;
  return Origin::absent;
}

}  // namespace varnok
