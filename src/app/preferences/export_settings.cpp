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

}  // namespace varnok
