#include "contacts/contact_store.h"

#include <algorithm>

#include "platform/check.h"

namespace varnok {
namespace {

// So many added persons are kept in memory before they are written into the
// open transaction; an import of any size stays small.
constexpr std::size_t kAdditionsInMemory = 256;

}  // namespace

PersonRef PersonArray::operator[](std::size_t index) const {
  VARNOK_CHECK(index < ids_.size());
  return store_->handleOf(ids_[index]);
}

ContactStore::ContactStore(std::unique_ptr<ContactBackend> backend, SortOrdering ordering)
    : backend_(std::move(backend)), ordering_(ordering) {}

ContactStore::~ContactStore() {
  dropPending();
  backend_->rollback();
}

PersonRef ContactStore::handleOf(RecordID id) {
  return std::make_shared<ContactRecord>(ContactRecord::StoreKey(), *this, id);
}

PersonRef ContactStore::personWithRecordID(RecordID id) {
  return backend_->contains(id) ? handleOf(id) : nullptr;
}

Status ContactStore::addRecord(PersonRef person) {
  if (person == nullptr || person->store_ != nullptr || person->added_) {
    return {Status::Code::invalidArgument, "only a new person can be added, and only once"};
  }
  person->added_ = true;
  additions_.push_back({std::move(person)});
  return additions_.size() < kAdditionsInMemory ? Status() : writeAdditionsNobodyHolds();
}

// A person that its creator still holds may change until the save; one that
// nobody else holds is final, and can leave memory now. People join the store
// in the order in which they were added, so the first one held ends it.
Status ContactStore::writeAdditionsNobodyHolds() {
  auto addition = additions_.begin();
  for (; addition != additions_.end() && addition->person.use_count() == 1 && writeStatus_.ok(); ++addition) {
    writeStatus_ = backend_->insert(addition->person->own_, addition->id);
  }
  additions_.erase(additions_.begin(), addition);
  return writeStatus_;
}

Status ContactStore::removeRecord(const PersonRef& person) {
  if (person == nullptr) return {Status::Code::notFound, "there is no such person"};
  if (person->store_ == nullptr) {
    const auto removed = std::erase_if(additions_, [&](const auto& addition) { return addition.person == person; });
    person->added_ = false;
    return removed > 0 ? Status() : Status(Status::Code::notFound, "the person is not part of this address book");
  }
  if (person->store_ != this || !backend_->contains(person->id_)) {
    return {Status::Code::notFound, "the person is not part of this address book"};
  }
  removals_.push_back(person->id_);
  return {};
}

Status ContactStore::save() {
  Status status = writePending();
  if (status.ok()) status = backend_->commit();
  if (!status.ok()) {
    backend_->rollback();
    dropPending();
    return status;
  }
  for (Addition& addition : additions_) {
    addition.person->store_ = this;
    addition.person->id_ = addition.id;
    addition.person->own_ = {};
  }
  dropPending();
  return {};
}

Status ContactStore::writePending() {
  if (!writeStatus_.ok()) return writeStatus_;
  for (Addition& addition : additions_) {
    if (Status status = backend_->insert(addition.person->own_, addition.id); !status.ok()) return status;
  }
  for (const auto& [id, changes] : changes_) {
    if (Status status = backend_->update(id, changes); !status.ok()) return status;
  }
  for (const RecordID id : removals_) {
    if (Status status = backend_->remove(id); !status.ok()) return status;
  }
  return {};
}

void ContactStore::dropPending() {
  for (const Addition& addition : additions_)
    addition.person->added_ = false;
  additions_.clear();
  changes_.clear();
  removals_.clear();
  writeStatus_ = {};
}

}  // namespace varnok
