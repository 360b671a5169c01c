// ContactStore: one open handle on the user's address book.
//
// Lifetime. A handle is opened for one piece of work and destroyed when the
// work is done. Records obtained through it may be used only while it lives.
// Changes that were not saved when it is destroyed are dropped.
//
// What it sees. The book as it was at the handle's first read, plus its own
// pending property changes; what others save meanwhile shows after this
// handle's next save(), or in a new handle.
//
// Threads. A handle belongs to the thread that opened it, and so does every
// record read through it. Work on another thread opens its own handle. A handle
// may be handed on to another thread with all its records, never used by two.
//
// Failure. Operations that change the store answer a Status; the store stays
// usable after any failure. A read that fails yields nothing and is remembered
// in readStatus(). Nothing here throws.

#pragma once

#include <functional>
#include <memory>
#include <span>
#include <unordered_map>
#include <vector>

#include "contacts/contact_record.h"

namespace varnok {

// How names are put together and sorted.
enum class SortOrdering : int { byFirstName = 0, byLastName = 1 };

enum class AuthorizationStatus : int { notDetermined = 0, restricted = 1, denied = 2, authorized = 3 };

// The rows behind one handle. A backend keeps no pending changes: the first
// write opens a transaction that commit() or rollback() ends. Its reads see
// what was stored before that transaction.
class ContactBackend {
 public:
  virtual ~ContactBackend() = default;

  virtual std::vector<RecordID> allIDs() = 0;        // In the store's own order.
  virtual std::vector<RecordID> idsWithImage() = 0;  // In the same order.
  virtual int personCount() = 0;
  virtual bool contains(RecordID id) = 0;
  virtual std::optional<PropertyValue> value(RecordID id, PropertyID property) = 0;
  // Of a text property. Valid until the next call.
  virtual std::optional<std::string_view> text(RecordID id, PropertyID property) = 0;
  // Of a multi-valued property. Valid until the next call.
  virtual std::span<const EntryView> entries(RecordID id, PropertyID property) = 0;
  virtual bool hasImage(RecordID id) = 0;
  virtual std::optional<std::string> image(RecordID id) = 0;
  virtual Status readStatus() const = 0;  // The first failed read, else ok.

  virtual Status insert(const PersonChanges& person, RecordID& id) = 0;
  // Ok, without effect, when nobody has this identifier any more.
  virtual Status update(RecordID id, const PersonChanges& changes) = 0;
  virtual Status remove(RecordID id) = 0;
  virtual Status commit() = 0;
  virtual void rollback() = 0;
};

// Persons of one handle, in order. Holds identifiers only.
class PersonArray {
 public:
  PersonArray() = default;
  PersonArray(ContactStore& store, std::vector<RecordID> ids) : store_(&store), ids_(std::move(ids)) {}

  std::size_t size() const { return ids_.size(); }
  bool empty() const { return ids_.empty(); }
  PersonRef operator[](std::size_t index) const;
  const std::vector<RecordID>& ids() const { return ids_; }

 private:
  ContactStore* store_ = nullptr;
  std::vector<RecordID> ids_;
};

class ContactStore {
 public:
  ContactStore(std::unique_ptr<ContactBackend> backend, SortOrdering ordering);
  ContactStore(const ContactStore&) = delete;
  ContactStore& operator=(const ContactStore&) = delete;
  ~ContactStore();

  int personCount() { return backend_->personCount(); }

  // Every person, in the store's own order. Callers that need an order sort.
  PersonArray allPeople() { return {*this, backend_->allIDs()}; }

  // Those who have a picture stored, in the same order. Cheap beside a pass over
  // everybody, and does not disturb one.
  PersonArray peopleWithImages() { return {*this, backend_->idsWithImage()}; }

  // Null when no person has this identifier.
  PersonRef personWithRecordID(RecordID id);

  // `person` joins the store at the next save(), which is also when it gets its
  // RecordID. invalidArgument when it belongs to a store already.
  Status addRecord(PersonRef person);

  // `person` leaves the store at the next save(). notFound when it was never
  // part of this store. A person added but not saved is just not added.
  Status removeRecord(const PersonRef& person);

  // Makes every pending change of this handle durable, all of them or none.
  // After a failure none of them is stored and none is pending any more;
  // added persons are outside any store again.
  Status save();

  // The first read that failed since the handle was opened, else ok.
  Status readStatus() const { return backend_->readStatus(); }

  SortOrdering sortOrdering() const { return ordering_; }

 private:
  friend class ContactRecord;
  friend class PersonArray;

  PersonRef handleOf(RecordID id);
  Status writeAdditionsNobodyHolds();
  Status writePending();
  void dropPending();

  std::unique_ptr<ContactBackend> backend_;
  SortOrdering ordering_;

  struct Addition {
    PersonRef person;
    RecordID id = kInvalidRecordID;  // Set once it is written in the open transaction.
  };
  std::vector<Addition> additions_;
  std::unordered_map<RecordID, PersonChanges> changes_;
  std::vector<RecordID> removals_;
  Status writeStatus_;  // Of additions written before the save.
};

// Opens handles, and knows whether that is allowed. Any thread.
class ContactStoreProvider {
 public:
  virtual ~ContactStoreProvider() = default;

  virtual AuthorizationStatus authorizationStatus() = 0;

  // Asks the user once; `completion` runs later on any thread.
  virtual void requestAccess(std::function<void(bool granted, const Status& error)> completion) = 0;

  // Null with a Status when the store cannot be opened.
  virtual std::unique_ptr<ContactStore> open(Status& status) = 0;

  virtual SortOrdering sortOrdering() const = 0;
};

}  // namespace varnok
