#include "platform/linux/sqlite/sqlite_contact_store.h"

#include "platform/linux/sqlite/sqlite_contact_backend.h"

namespace varnok {

std::unique_ptr<ContactStore> SQLiteContactStoreProvider::open(Status& status) {
  auto reader = idle_->take(status);
  if (reader == nullptr) return nullptr;
  return std::make_unique<ContactStore>(std::make_unique<SQLiteContactBackend>(idle_, std::move(reader)), ordering_);
}

}  // namespace varnok
