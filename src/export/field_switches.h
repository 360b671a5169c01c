// The switches that say which fields a backup carries, read together once for
// each person.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "app/preferences/preference_keys.h"
#include "platform/preference_store.h"

namespace varnok {

inline constexpr std::array kFieldSwitches{
    key::EXPORT_CONF_PHOTOS, key::EXPORT_CONF_DATES, key::EXPORT_CONF_ADRS, key::EXPORT_CONF_PHONES,
    key::EXPORT_CONF_EMAILS, key::EXPORT_CONF_NOTES, key::EXPORT_CONF_URLS,
};

// The switch that guards a field: its bit among those of kFieldSwitches.
enum class FieldSwitch : std::uint32_t { none = 0 };

consteval FieldSwitch fieldSwitch(std::string_view key) {
  for (std::size_t i = 0; i < kFieldSwitches.size(); ++i) {
    if (kFieldSwitches[i] == key) return static_cast<FieldSwitch>(1U << i);
  }
  throw "no such switch";  // Does not compile.
}

// The switches as they stand at one moment.
class FieldSwitches {
 public:
  explicit FieldSwitches(const PreferenceStore& preferences) : on_(preferences.boolsForKeys(kFieldSwitches)) {}

  // True also for a field without a switch.
  bool allow(FieldSwitch field) const {
    return field == FieldSwitch::none || (on_ & static_cast<std::uint32_t>(field)) != 0;
  }

 private:
  std::uint32_t on_;
};

}  // namespace varnok
