#include "app/preferences/export_settings.h"

#include "app/preferences/preference_keys.h"

namespace varnok {

bool multipleVCFChosen(const PreferenceStore& preferences) {
  return preferences.boolForKey(key::multipleVCF) && preferences.stringForKey(key::EXPORT_TYPE) == "vcf";
}

std::string backupFileType(const PreferenceStore& preferences) {
  if (multipleVCFChosen(preferences)) return "zip";
  return preferences.stringForKey(key::EXPORT_TYPE).value_or("");
}

bool singleVCFChosen(const PreferenceStore& preferences) {
  return backupFileType(preferences) == "vcf";
}

std::optional<Instant> timeOfLastBackup(const PreferenceStore& preferences) {
  using std::chrono::year;
  constexpr Instant kEarliest = std::chrono::sys_days(year(1) / 1 / 1);
  constexpr Instant kLatest = std::chrono::sys_days(year(9999) / 12 / 31);
  const double seconds = preferences.doubleForKey(key::EXPORT_LAST);
  if (seconds == 0.0) return std::nullopt;
  if (!(seconds > static_cast<double>(kEarliest.time_since_epoch().count()))) return kEarliest;
  if (seconds > static_cast<double>(kLatest.time_since_epoch().count())) return kLatest;
  return Instant(std::chrono::seconds(static_cast<std::int64_t>(seconds)));
}

}  // namespace varnok
