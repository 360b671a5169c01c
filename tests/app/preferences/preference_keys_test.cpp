#include "app/preferences/preference_keys.h"

#include <gtest/gtest.h>

#include "app/preferences/export_settings.h"
#include "platform/testing/in_memory_preference_store.h"

namespace varnok {
namespace {

TEST(PreferenceValue, IsWhatTheKeyCanMean) {
  struct Row {
    std::string_view key;
    std::string text;
    std::optional<Value> value;
  };
  for (const auto& [name, text, value] : {
           Row{key::EXPORT_TYPE, "csv", Value("csv")},
           Row{key::EXPORT_TYPE, "zip", std::nullopt},
           Row{key::EVERY, "DAY", std::nullopt},
           Row{key::EXPORT_CONF_PHOTOS, "NO", Value("NO")},
           Row{key::EXPORT_CONF_PHOTOS, "no", std::nullopt},
           Row{key::multipleVCF, "YES", Value(true)},
           Row{key::EXPORT_LAST, "", Value("")},
           Row{key::EXPORT_LAST, "12.5", Value(12.5)},
           Row{key::EXPORT_LAST, "-1", std::nullopt},
           Row{key::EXPORT_LAST, "nan", std::nullopt},
           Row{key::itemCount, "12x", std::nullopt},
           Row{key::CONTACT_STORE, "eds:work", Value("eds:work")},
           Row{key::CONTACT_STORE, "eds:", std::nullopt},
           Row{key::AppleLanguages, "de", std::nullopt},
       }) {
    Status status;
    EXPECT_EQ(preferenceValue(*findPreferenceKey(name), text, status), value) << name << " " << text;
    EXPECT_EQ(status.ok(), value.has_value());
  }
}

TEST(ExportSettings, MultipleFilesExistOnlyForVCards) {
  InMemoryPreferenceStore preferences;
  preferences.registerDefaults(registeredDefaults());
  EXPECT_TRUE(singleVCFChosen(preferences));
  preferences.setBool(true, key::multipleVCF);
  EXPECT_EQ(backupFileType(preferences), "zip");
  preferences.setObject("csv", key::EXPORT_TYPE);
  EXPECT_EQ(backupFileType(preferences), "csv");
  EXPECT_FALSE(singleVCFChosen(preferences));
}

}  // namespace
}  // namespace varnok
