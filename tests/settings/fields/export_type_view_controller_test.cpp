#include "settings/fields/export_type_view_controller.h"

#include <gtest/gtest.h>

#include "app/preferences/preference_keys.h"
#include "platform/testing/fake_services.h"
#include "platform/testing/in_memory_preference_store.h"
#include "platform/testing/recording_presenter.h"

namespace varnok {
namespace {

struct FormatChoice : testing::Test, ExportTypeViewController::Delegate {
  InMemoryPreferenceStore preferences;
  FakeTextCatalog texts;
  RecordingPresenter presenter;
  ExportTypeViewController screen{preferences, texts, presenter, *this};
  std::string storedWhenFinished;

  FormatChoice() {
    preferences.registerDefaults(registeredDefaults());
    texts.texts = {{"TYPE", "Format"}, {"vcf", "vCard"}, {"csv", "CSV"}};
  }
  void exportTypeDidFinish() override { storedWhenFinished = preferences.stringForKey(key::EXPORT_TYPE).value_or(""); }

  // The rows' texts, a star behind the one that is checked.
  std::string seen() const {
    std::string rows;
    for (const TableRow& row : screen.sections().front().rows)
      rows += row.text + (row.checked ? "* " : " ");
    return rows + std::to_string(screen.selectedIndex());
  }
};

TEST_F(FormatChoice, ShowsTheFormatsAsATable) {
  screen.viewDidLoad();
  EXPECT_EQ(describe(screen.sections()),
            "section.title: Format\n"
            "section.rows:\n"
            "  - row.textLabel.text: vCard\n"
            "    row.selectionStyle: 0\n"
            "    row.accesorType: 0\n"
            "    checkmark\n"
            "  - row.textLabel.text: CSV\n"
            "    row.selectionStyle: 0\n"
            "    row.accesorType: 0\n");
  EXPECT_EQ(screen.dataSource(), (std::vector<std::string>{"vcf", "csv"}));
}

TEST_F(FormatChoice, StoresOnDoneAndFlushesNothing) {
  screen.viewDidLoad();
  screen.didSelectRowAtIndexPath({0, 1});
  EXPECT_EQ(seen(), "vCard CSV* 1");
  EXPECT_EQ(presenter.redraws, 1);
  EXPECT_EQ(preferences.stringForKey(key::EXPORT_TYPE), "vcf");
  screen.onTap_Done();
  EXPECT_EQ(storedWhenFinished, "csv");
  EXPECT_EQ(preferences.flushes, 0);
}

TEST_F(FormatChoice, BeginsAtTheStoredFormat) {
  preferences.setObject("csv", key::EXPORT_TYPE);
  screen.viewDidLoad();
  EXPECT_EQ(seen(), "vCard CSV* 1");
  screen.didSelectRowAtIndexPath({0, 0});
  EXPECT_EQ(seen(), "vCard* CSV 0");
  for (const IndexPath outside : {IndexPath{1, 1}, IndexPath{0, 2}, IndexPath{0, -1}})
    screen.didSelectRowAtIndexPath(outside);
  EXPECT_EQ(seen(), "vCard* CSV 0");
}

TEST_F(FormatChoice, QuirkAnUnknownFormatHasNoCheckmarkAndDoneStoresTheFirst) {
  preferences.setObject("zip", key::EXPORT_TYPE);
  screen.viewDidLoad();
  EXPECT_EQ(seen(), "vCard CSV 0");
  screen.onTap_Done();
  EXPECT_EQ(storedWhenFinished, "vcf");
}

}  // namespace
}  // namespace varnok
