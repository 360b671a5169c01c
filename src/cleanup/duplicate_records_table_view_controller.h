// DuplicateRecordsTableViewController: the groups of duplicates that a search
// found, one row each, and the removal of all duplicates. The first person of a
// group is not shown and stays.
//
// Threads. Main thread; the removal runs in the background, with the handle that
// the search opened. The handle is used up by that: whatever the outcome, a
// second removal on this screen changes nothing.
//
// Failure. When the removal cannot be stored nobody is removed, nothing is said
// and the screen stays.

#pragma once

#include <memory>

#include "cleanup/cleanup_services.h"
#include "cleanup/duplicate_finder.h"
#include "platform/while_alive.h"

namespace varnok {

class DuplicateRecordsTableViewController : public Screen {
 public:
  static constexpr int kDeleteStyle = 1;  // Of commitEditingStyle().

  // `addressBook` is the handle that `found` was found through.
  DuplicateRecordsTableViewController(const CleanupServices& services, DuplicateRecords found,
                                      std::unique_ptr<ContactStore> addressBook);

  std::string_view screenName() const override { return "DuplicateRecordsTableViewController"; }
  void viewDidLoad() override;
  std::optional<std::string> tableHeader() const override { return header_; }
  std::vector<ScreenControl> controls() const override;
  int numberOfSections() const override { return 1; }
  int numberOfRowsInSection(int section) const override;
  TableRow cellForRowAtIndexPath(const IndexPath& indexPath) const override;
  bool tapControl(std::string_view control, int segment) override;
  bool selectRow(const IndexPath& indexPath) override { return hasRow(*this, indexPath); }

  // Removes every duplicate and closes the screen.
  void clearDuplicates();
  void close();

  // Takes a row out of the lists, for kDeleteStyle. Rows offer no editing, so
  // only programs come here.
  void commitEditingStyle(int editingStyle, const IndexPath& indexPath);

  const std::vector<RecordID>& duplicateRecords() const { return found_.duplicateRecords; }

 private:
  CleanupServices services_;
  DuplicateRecords found_;
  std::unique_ptr<ContactStore> addressBook_;  // Null once the removal has begun.
  std::optional<std::string> header_;
  WhileAlive whileAlive_;
};

}  // namespace varnok
