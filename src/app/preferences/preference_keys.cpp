#include "app/preferences/preference_keys.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "platform/check.h"

namespace varnok {
namespace {

using Kind = PreferenceKey::Kind;

constexpr std::array kKeys{
    PreferenceKey{key::EXPORT_TYPE, Kind::format, "vcf"},
    PreferenceKey{key::multipleVCF, Kind::boolean},
    PreferenceKey{key::EXPORT_CONF_PHONES, Kind::onOff, "YES"},
    PreferenceKey{key::EXPORT_CONF_EMAILS, Kind::onOff, "YES"},
    PreferenceKey{key::EXPORT_CONF_URLS, Kind::onOff, "YES"},
    PreferenceKey{key::EXPORT_CONF_ADRS, Kind::onOff, "YES"},
    PreferenceKey{key::EXPORT_CONF_DATES, Kind::onOff, "YES"},
    PreferenceKey{key::EXPORT_CONF_NOTES, Kind::onOff, "YES"},
    PreferenceKey{key::EXPORT_CONF_PHOTOS, Kind::onOff, "YES"},
    PreferenceKey{key::EXPORT_CONF_SHRINK, Kind::onOff, "YES"},
    PreferenceKey{key::REMINDER, Kind::onOff, "NO"},
    PreferenceKey{key::EVERY, Kind::period, "MONTH"},
    PreferenceKey{key::EXPORT_LAST, Kind::seconds, ""},
    PreferenceKey{key::FILE_NAME, Kind::text},
    PreferenceKey{key::FILE_PATH, Kind::text},
    PreferenceKey{key::ALERT_BACKUP_POPUP_SHOWED, Kind::onOff, "NO"},
    PreferenceKey{key::AppFirstOpened, Kind::onOff},
    PreferenceKey{key::itemCount, Kind::integer},
    PreferenceKey{key::migration, Kind::boolean},
    PreferenceKey{key::kAppiraterFirstUseDate, Kind::seconds},
    PreferenceKey{key::kAppiraterUseCount, Kind::integer},
    PreferenceKey{key::kAppiraterSignificantEventCount, Kind::integer},
    PreferenceKey{key::kAppiraterCurrentVersion, Kind::text},
    PreferenceKey{key::kAppiraterRatedCurrentVersion, Kind::boolean},
    PreferenceKey{key::kAppiraterDeclinedToRate, Kind::boolean},
    PreferenceKey{key::kAppiraterReminderRequestDate, Kind::seconds},
    PreferenceKey{key::WEB_ACCESS_CODE, Kind::onOff},
    PreferenceKey{key::WEB_READ_ONLY, Kind::onOff},
    PreferenceKey{key::WEB_REQUEST_LOG, Kind::onOff},
    PreferenceKey{key::WEB_INTERFACE, Kind::text},
    PreferenceKey{key::WEB_HOST_NAMES, Kind::text},
    PreferenceKey{key::CONTACT_STORE, Kind::store, "sqlite"},
    PreferenceKey{key::AppleLanguages, Kind::readOnly},
};

template <typename Number>
std::optional<Value> wholeNumber(const std::string& text) {
  Number number = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
  return Value(number);
}

std::optional<Value> secondsValue(const std::string& text) {
  if (text.empty()) return Value("");
  std::optional<Value> number = wholeNumber<double>(text);
  if (!number || !std::isfinite(std::get<double>(*number)) || std::get<double>(*number) < 0) return std::nullopt;
  return number;
}

std::optional<Value> oneOf(const std::string& text, std::string_view first, std::string_view second) {
  return text == first || text == second ? std::optional<Value>(text) : std::nullopt;
}

std::optional<Value> storeValue(const std::string& text) {
  constexpr std::string_view kNamed = "eds:";
  const bool isNamed = text.starts_with(kNamed) && text.size() > kNamed.size();
  return isNamed ? std::optional<Value>(text) : oneOf(text, "sqlite", "eds");
}

std::optional<Value> parsed(Kind kind, const std::string& text) {
  switch (kind) {
    case Kind::format: return oneOf(text, "vcf", "csv");
    case Kind::period: return oneOf(text, "WEEK", "MONTH");
    case Kind::onOff: return oneOf(text, "YES", "NO");
    case Kind::boolean: return oneOf(text, "YES", "NO") ? std::optional<Value>(text == "YES") : std::nullopt;
    case Kind::integer: return wholeNumber<std::int64_t>(text);
    case Kind::seconds: return secondsValue(text);
    case Kind::text: return Value(text);
    case Kind::store: return storeValue(text);
    case Kind::readOnly: return std::nullopt;
  }
  VARNOK_UNREACHABLE();
}

std::string_view expectation(Kind kind) {
  switch (kind) {
    case Kind::format: return "vcf or csv";
    case Kind::period: return "WEEK or MONTH";
    case Kind::onOff:
    case Kind::boolean: return "YES or NO";
    case Kind::integer: return "a whole number";
    case Kind::seconds: return "a number of seconds since 1970, or nothing";
    case Kind::text: return "text";
    case Kind::store: return "sqlite, eds or eds: with the identifier of an address book";
    case Kind::readOnly: return "read only";
  }
  VARNOK_UNREACHABLE();
}

}  // namespace

std::span<const PreferenceKey> preferenceKeys() {
  return kKeys;
}

const PreferenceKey* findPreferenceKey(std::string_view name) {
  const auto* found = std::ranges::find(kKeys, name, &PreferenceKey::name);
  return found == kKeys.end() ? nullptr : found;
}

ValueDictionary registeredDefaults() {
  ValueDictionary defaults;
  for (const PreferenceKey& known : kKeys) {
    if (known.registered != nullptr) defaults.emplace(known.name, known.registered);
  }
  return defaults;
}

std::optional<Value> preferenceValue(const PreferenceKey& key, const std::string& text, Status& status) {
  std::optional<Value> value = parsed(key.kind, text);
  status = value ? Status()
                 : Status(Status::Code::invalidArgument, std::string(key.name) + " cannot be \"" + text + "\"; it is " +
                                                             std::string(expectation(key.kind)));
  return value;
}

}  // namespace varnok
