// SQLiteContactStoreProvider: the embedded address book, one SQLite file.
//
// Many handles may be open at once, on many threads and in many processes. A
// handle reads from the state at its first read; it writes through a connection
// of its own, so that what it reads does not change under a long import. One
// save is one transaction, durable when it returns; it waits for other writers.

#pragma once

#include <memory>
#include <string>

#include "contacts/contact_store.h"
#include "platform/linux/sqlite/contact_reader.h"

namespace varnok {

class SQLiteContactStoreProvider : public ContactStoreProvider {
 public:
  // The folder of `path` must exist. The file is made when it is first opened.
  explicit SQLiteContactStoreProvider(std::string path, SortOrdering ordering = SortOrdering::byFirstName)
      : idle_(std::make_shared<IdleContactReader>(std::move(path))), ordering_(ordering) {}

  // The user's own file asks for no permission.
  AuthorizationStatus authorizationStatus() override { return AuthorizationStatus::authorized; }
  void requestAccess(std::function<void(bool granted, const Status& error)> completion) override {
    completion(true, {});
  }

  std::unique_ptr<ContactStore> open(Status& status) override;
  SortOrdering sortOrdering() const override { return ordering_; }

 private:
  std::shared_ptr<IdleContactReader> idle_;
  SortOrdering ordering_;
};

}  // namespace varnok
