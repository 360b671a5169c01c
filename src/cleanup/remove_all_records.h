// RemoveAllRecords: the settings screen's deletion of every contact, from the
// question to the notice that it is done.
//
// Lifetime. May be destroyed before the question is answered. Threads. Main
// thread, which is held until the deletion is stored.

#pragma once

#include <functional>

#include "cleanup/cleanup_services.h"
#include "platform/action_sheet.h"
#include "platform/alert_view.h"

namespace varnok {

// The tag of the question whether to delete everybody.
inline constexpr int kRemoveAllTag = 2;

// That question; index 0 is yes.
ActionSheet removeAllSheet(const TextCatalog& texts, std::function<void(const ActionSheet&, int index)> answer);

// The notice that everybody was deleted.
AlertView removedAllAlert(const TextCatalog& texts);

class RemoveAllRecords {
 public:
  explicit RemoveAllRecords(const CleanupServices& services) : services_(services) {}

  // Asks, and deletes everybody in one save when the answer is yes.
  void onClickRemoveAll();

 private:
  static void removeAll(const CleanupServices& services);

  CleanupServices services_;
};

}  // namespace varnok
