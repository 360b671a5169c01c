// ExportTypeViewController: the choice of the backup format.
//
// Lifetime. Made for one showing; the delegate closes it and outlives it.
// Threads. Main thread.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/index_path.h"
#include "platform/preference_store.h"
#include "platform/screen_presenter.h"
#include "platform/table.h"
#include "platform/text_catalog.h"

namespace varnok {

class ExportTypeViewController : public Screen {
 public:
  class Delegate {
   public:
    virtual ~Delegate() = default;
    // The choice has been stored.
    virtual void exportTypeDidFinish() = 0;
  };

  ExportTypeViewController(PreferenceStore& preferences, const TextCatalog& texts, ScreenPresenter& presenter,
                           Delegate& delegate)
      : preferences_(preferences), texts_(texts), presenter_(presenter), delegate_(delegate) {}

  std::string_view screenName() const override { return "ExportTypeViewController"; }

  // Once, before it is shown.
  void viewDidLoad();

  // Nothing is stored before onTap_Done(). A place without a row means nothing.
  void didSelectRowAtIndexPath(const IndexPath& indexPath);
  void onTap_Done();

  const std::vector<std::string>& dataSource() const { return dataSource_; }
  const std::vector<TableSection>& sections() const { return sections_; }
  std::int32_t selectedIndex() const { return selectedIndex_; }

 private:
  PreferenceStore& preferences_;
  const TextCatalog& texts_;
  ScreenPresenter& presenter_;
  Delegate& delegate_;

  std::vector<std::string> dataSource_;  // The formats, each also the key of its text.
  std::vector<TableSection> sections_;   // One, a row for each format.
  // What Done stores. Quirk: the first format, without a checkmark, when the
  // stored one is none of these.
  std::int32_t selectedIndex_ = 0;
};

}  // namespace varnok
