// ChoiceScreen: the choice among the values that one preference can have.
// Nothing is stored before Done, and there is no way out but Done.
//
// Lifetime. Made for one showing. Threads. Main thread.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/index_path.h"
#include "platform/preference_store.h"
#include "platform/screen_presenter.h"
#include "platform/table.h"
#include "platform/text_catalog.h"

namespace varnok {

class ChoiceScreen : public TableScreen {
 public:
  void viewDidLoad() override;
  std::vector<ScreenControl> controls() const override;
  bool tapControl(std::string_view control, int segment) override;
  bool selectRow(const IndexPath& indexPath) override;

  // A place without a row means nothing.
  void didSelectRowAtIndexPath(const IndexPath& indexPath);
  void onTap_Done();

  const std::vector<std::string>& dataSource() const { return dataSource_; }
  const std::vector<TableSection>& sections() const override { return sections_; }
  std::int32_t selectedIndex() const { return selectedIndex_; }

 protected:
  struct Choice {
    std::string_view preference;
    std::string_view headerText;      // The key of the text above the values.
    std::vector<std::string> values;  // Each also the key of its text; not empty.
  };

  ChoiceScreen(Choice choice, PreferenceStore& preferences, const TextCatalog& texts, ScreenPresenter& presenter)
      : choice_(std::move(choice)), preferences_(preferences), texts_(texts), presenter_(presenter) {}

 private:
  // The choice has been stored.
  virtual void didFinish() = 0;

  const Choice choice_;
  PreferenceStore& preferences_;
  const TextCatalog& texts_;
  ScreenPresenter& presenter_;

  std::vector<std::string> dataSource_;
  std::vector<TableSection> sections_;  // One, a row for each value.
  // What Done stores. Quirk: the first value, without a checkmark, when the
  // stored one is none of these.
  std::int32_t selectedIndex_ = 0;
};

}  // namespace varnok
