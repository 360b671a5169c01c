// RemoveRecordsViewController: everybody in the address book, in sections, for
// marking those who are to be deleted, or for deleting everybody.
//
// Threads. Main thread. The list is loaded and people are removed in the
// background, through the handle that the load opened; rows are read through
// another one, which stays on the main thread.
//
// Failure. None is told: the list shows afterwards who is there.

#pragma once

#include <memory>
#include <set>

#include "cleanup/cleanup_services.h"
#include "cleanup/record_list.h"
#include "cleanup/record_removal.h"
#include "platform/while_alive.h"

namespace varnok {

class RemoveRecordsViewController : public Screen {
 public:
  // The segment of trash() that means everybody.
  static constexpr int kRemoveAllSegment = 1;

  explicit RemoveRecordsViewController(const CleanupServices& services) : services_(services) {}

  std::string_view screenName() const override { return "RemoveRecordsViewController"; }
  void viewDidLoad() override;
  std::optional<std::string> title() const override;
  std::vector<ScreenControl> controls() const override;
  int numberOfSections() const override { return static_cast<int>(list_.indexes.size()); }
  int numberOfRowsInSection(int section) const override { return static_cast<int>(recordsOf(section).size()); }
  TableHeading headingOfSection(int section) const override;
  TableRow cellForRowAtIndexPath(const IndexPath& indexPath) const override;
  std::vector<std::string> sectionIndexTitles() const override { return list_.indexes; }
  bool tapControl(std::string_view control, int segment) override;
  bool allowsMultipleSelection() const override { return true; }
  bool markRow(const IndexPath& indexPath, bool on) override;
  void scrollViewDidScroll(double contentOffset) override;

  // Asks, and deletes the marked people, or everybody for kRemoveAllSegment.
  // Nothing when nobody is marked.
  void trash(int segment);
  void close();
  void scrollTop();

  // Not what headingOfSection() shows.
  std::string titleForHeaderInSection(int section) const;

  void clickedButtonAtIndex(const AlertView& alertView, int index);
  void clickedButtonAtIndex(const ActionSheet& actionSheet, int index);

 private:
  const std::vector<RecordID>& recordsOf(int section) const;
  RecordID recordAt(const IndexPath& indexPath) const;
  // After `removal`, which may be null. `everybody`: that is whom it removes.
  void loadItems(std::string_view textKey, std::shared_ptr<RecordRemoval> removal, bool everybody);
  void show(RecordList& list);
  void remove(std::vector<RecordID> ids, bool everybody);

  CleanupServices services_;
  RecordList list_;
  std::set<RecordID> selected_;  // Of the marked rows.
  double contentOffset_ = 0;
  mutable std::unique_ptr<ContactStore> rowReader_;  // Opened for the first row that is drawn.
  WhileAlive whileAlive_;
};

}  // namespace varnok
