// An address book in memory, faithful to the contract of ContactStore down to
// the rules that are easy to forget: a handle sees the book as it was at its
// first read, identifiers are never used again, a save is all or nothing.
//
//   InMemoryContactStoreProvider provider;
//   provider.failNextCommit(Status(Status::Code::noSpace, "the disk is full"));
//   provider.access = AuthorizationStatus::denied;   // open() now answers null
//
// Handles may be opened on any thread.

#pragma once

#include <map>
#include <memory>
#include <mutex>

#include "contacts/contact_store.h"

namespace varnok {

class InMemoryContactStoreProvider : public ContactStoreProvider {
 public:
  struct Person {
    std::map<PropertyID, PropertyValue> properties;
    std::optional<std::string> image;
  };
  using People = std::map<RecordID, Person>;

  AuthorizationStatus access = AuthorizationStatus::authorized;
  bool grantsAccess = true;  // The answer to requestAccess().
  SortOrdering ordering = SortOrdering::byFirstName;

  void failNextCommit(Status failure) { nextCommit_ = std::move(failure); }

  // From now on every read of a person's properties fails with `status`.
  void failReads(Status failure) { reads_ = std::move(failure); }

  AuthorizationStatus authorizationStatus() override { return access; }
  void requestAccess(std::function<void(bool granted, const Status& error)> completion) override;
  std::unique_ptr<ContactStore> open(Status& status) override;
  SortOrdering sortOrdering() const override { return ordering; }

 private:
  class Backend;

  mutable std::mutex mutex_;
  std::shared_ptr<const People> people_ = std::make_shared<People>();
  RecordID lastID_ = 0;
  Status nextCommit_;
  Status reads_;
};

}  // namespace varnok
