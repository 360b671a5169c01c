// Value: what a preference can hold. A value type; copied freely.

#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <variant>
#include <vector>

namespace varnok {

// Seconds since 1970-01-01 00:00 UTC.
using Instant = std::chrono::sys_seconds;

struct Value;
using ValueArray = std::vector<Value>;
using ValueDictionary = std::map<std::string, Value, std::less<>>;

struct Value : std::variant<bool, std::int64_t, double, std::string, Instant, ValueArray, ValueDictionary> {
  using variant::variant;
  // Without these a literal would become a bool and an int would be ambiguous.
  Value(const char* text) : variant(std::string(text)) {}            // NOLINT(google-explicit-constructor)
  Value(int number) : variant(static_cast<std::int64_t>(number)) {}  // NOLINT(google-explicit-constructor)

  bool operator==(const Value&) const = default;
};

}  // namespace varnok
