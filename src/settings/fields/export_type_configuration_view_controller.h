// ExportTypeConfigurationViewController: which fields a backup carries, a switch
// for each group. A switch is stored the moment it changes.
//
// Lifetime. Made for one showing; the delegate closes it and outlives it.
// Threads. Main thread.

#pragma once

#include <vector>

#include "platform/preference_store.h"
#include "platform/screen_presenter.h"
#include "platform/table.h"
#include "platform/text_catalog.h"

namespace varnok {

class ExportTypeConfigurationViewController : public TableScreen {
 public:
  class Delegate {
   public:
    virtual ~Delegate() = default;
    virtual void exportTypeConfigurationDidFinish() = 0;
  };

  // The tag of the switch that belongs to toggleMultipleVCF(); those of the
  // fields, 1 to 8, belong to toggleSwitch().
  static constexpr int kMultipleVCFTag = 10000;

  ExportTypeConfigurationViewController(PreferenceStore& preferences, const TextCatalog& texts,
                                        ScreenPresenter& presenter, Delegate& delegate)
      : preferences_(preferences), texts_(texts), presenter_(presenter), delegate_(delegate) {}

  std::string_view screenName() const override { return "ExportTypeConfigurationViewController"; }

  // The sections are those of the format stored then.
  void viewDidLoad() override;
  std::vector<ScreenControl> controls() const override;
  bool tapControl(std::string_view control, int segment) override;
  bool switchRow(const IndexPath& indexPath, bool on) override;

  // Photos and their size are stored only while the format is vCard. Another
  // tag stores nothing.
  void toggleSwitch(int tag, bool on);
  void toggleMultipleVCF(bool on);
  void onTap_Done() { delegate_.exportTypeConfigurationDidFinish(); }

  const std::vector<TableSection>& dataSource() const { return dataSource_; }
  const std::vector<TableSection>& sections() const override { return dataSource_; }

 private:
  TableSection multipleFilesSection() const;
  TableSection fieldsSection(std::string_view titleKey, bool vCardOnly) const;
  bool isVCF() const;
  // The switch on the screen follows the finger, whatever is stored.
  void show(int tag, bool on);

  PreferenceStore& preferences_;
  const TextCatalog& texts_;
  ScreenPresenter& presenter_;
  Delegate& delegate_;
  std::vector<TableSection> dataSource_;
};

}  // namespace varnok
