#include "settings/fields/export_type_configuration_view_controller.h"

#include <gtest/gtest.h>

#include "app/preferences/preference_keys.h"
#include "platform/testing/fake_services.h"
#include "platform/testing/in_memory_preference_store.h"
#include "platform/testing/recording_presenter.h"
#include "support/golden.h"

namespace varnok {
namespace {

struct FieldSwitches : testing::Test, ExportTypeConfigurationViewController::Delegate {
  InMemoryPreferenceStore preferences;
  FakeTextCatalog texts;
  RecordingPresenter presenter;
  ExportTypeConfigurationViewController screen{preferences, texts, presenter, *this};
  int finished = 0;

  FieldSwitches() { preferences.registerDefaults(registeredDefaults()); }
  void exportTypeConfigurationDidFinish() override { ++finished; }
};

TEST_F(FieldSwitches, AreThreeSectionsForVCardAndOneForCSV) {
  preferences.setObject("NO", key::EXPORT_CONF_URLS);
  preferences.setBool(true, key::multipleVCF);
  screen.viewDidLoad();
  EXPECT_TRUE(matchesGolden("screens/fields_vcf.txt", describe(screen.dataSource())));
  preferences.setObject("csv", key::EXPORT_TYPE);
  screen.viewDidLoad();
  EXPECT_TRUE(matchesGolden("screens/fields_csv.txt", describe(screen.dataSource())));
}

TEST_F(FieldSwitches, AreStoredAndFlushedTheMomentTheyChange) {
  constexpr std::string_view kKeys[] = {key::EXPORT_CONF_PHONES, key::EXPORT_CONF_EMAILS, key::EXPORT_CONF_URLS,
                                        key::EXPORT_CONF_ADRS,   key::EXPORT_CONF_DATES,  key::EXPORT_CONF_NOTES,
                                        key::EXPORT_CONF_PHOTOS, key::EXPORT_CONF_SHRINK};
  screen.viewDidLoad();
  for (int tag = 1; tag <= 8; ++tag) {
    screen.toggleSwitch(tag, false);
    EXPECT_EQ(preferences.flushes, tag);
    for (int other = 1; other <= 8; ++other)
      EXPECT_EQ(preferences.boolForKey(kKeys[other - 1]), other > tag) << tag << " " << other;
  }
  screen.toggleSwitch(5, true);
  EXPECT_EQ(preferences.objectForKey(key::EXPORT_CONF_DATES), Value("YES"));
  EXPECT_TRUE(screen.dataSource()[1].rows[4].accessoryView->on);
  EXPECT_FALSE(screen.dataSource()[1].rows[5].accessoryView->on);
  EXPECT_EQ(presenter.redraws, 9);
  screen.toggleMultipleVCF(true);
  EXPECT_EQ(preferences.objectForKey(key::multipleVCF), Value(true));
  EXPECT_EQ(preferences.flushes, 10);
  EXPECT_TRUE(screen.dataSource()[0].rows[0].accessoryView->on);
  screen.onTap_Done();
  EXPECT_EQ(finished, 1);
}

// The format was changed elsewhere while the screen was open.
TEST_F(FieldSwitches, QuirkPhotoSwitchesStayAndStoreNothingOnceTheFormatIsCSV) {
  screen.viewDidLoad();
  preferences.setObject("csv", key::EXPORT_TYPE);
  for (const int tag : {7, 8, 1, 99})
    screen.toggleSwitch(tag, false);
  EXPECT_EQ(screen.dataSource().size(), 3U);
  EXPECT_TRUE(preferences.boolForKey(key::EXPORT_CONF_PHOTOS));
  EXPECT_TRUE(preferences.boolForKey(key::EXPORT_CONF_SHRINK));
  EXPECT_FALSE(preferences.boolForKey(key::EXPORT_CONF_PHONES));
  EXPECT_EQ(preferences.flushes, 4);
}

}  // namespace
}  // namespace varnok
