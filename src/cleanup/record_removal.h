#pragma once

#include <memory>
#include <vector>

#include "contacts/contact_store.h"

namespace varnok {

// Removes those who are still there and saves once: all of them go, or nobody
// when the answer is a failure. A null handle is such a failure.
Status removeRecords(ContactStore* addressBook, const std::vector<RecordID>& ids);

// A removal on its way to the thread that runs it.
class RecordRemoval {
 public:
  RecordRemoval(std::unique_ptr<ContactStore> addressBook, std::vector<RecordID> ids)
      : addressBook_(std::move(addressBook)), ids_(std::move(ids)) {}

  // Once; whatever the outcome, the handle is released.
  Status run();

 private:
  std::unique_ptr<ContactStore> addressBook_;
  std::vector<RecordID> ids_;
};

}  // namespace varnok
