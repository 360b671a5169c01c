// DuplicateSearch: the settings screen's search for duplicates, from the tap to
// the notice that there are none or to the screen that shows them.
//
// Lifetime. May be destroyed while a search is under way. Threads. Main thread;
// the search runs in the background.

#pragma once

#include "cleanup/cleanup_services.h"

namespace varnok {

class DuplicateSearch {
 public:
  explicit DuplicateSearch(const CleanupServices& services) : services_(services) {}

  // Without any question; the caller has made sure that there is a backup.
  void removeDuplitaceRecord();

 private:
  CleanupServices services_;
};

}  // namespace varnok
