#include "contacts/testing/in_memory_contact_store.h"

#include <utility>

namespace varnok {

class InMemoryContactStoreProvider::Backend : public ContactBackend {
 public:
  explicit Backend(InMemoryContactStoreProvider& provider) : provider_(provider) {}

  std::vector<RecordID> allIDs() override {
    std::vector<RecordID> ids;
    for (const auto& [id, person] : seen())
      ids.push_back(id);
    return ids;
  }

  std::vector<RecordID> idsWithImage() override {
    std::vector<RecordID> ids;
    for (const auto& [id, person] : seen()) {
      if (person.image) ids.push_back(id);
    }
    return ids;
  }

  int personCount() override { return static_cast<int>(seen().size()); }
  bool contains(RecordID id) override { return seen().contains(id); }

  std::optional<PropertyValue> value(RecordID id, PropertyID property) override {
    const Person* person = find(id);
    if (person == nullptr) return std::nullopt;
    const auto found = person->properties.find(property);
    return found == person->properties.end() ? std::nullopt : std::optional(found->second);
  }

  std::optional<std::string_view> text(RecordID id, PropertyID property) override {
    const Person* person = find(id);
    if (person == nullptr) return std::nullopt;
    const auto found = person->properties.find(property);
    if (found == person->properties.end()) return std::nullopt;
    const auto* text = std::get_if<std::string>(&found->second);
    return text == nullptr ? std::nullopt : std::optional<std::string_view>(*text);
  }

  std::span<const EntryView> entries(RecordID id, PropertyID property) override {
    views_.clear();
    const Person* person = find(id);
    if (person == nullptr) return {};
    const auto found = person->properties.find(property);
    if (found == person->properties.end()) return {};
    if (const auto* list = std::get_if<MultiValue>(&found->second)) appendViews(*list, views_);
    return views_;
  }

  bool hasImage(RecordID id) override {
    const Person* person = find(id);
    return person != nullptr && person->image.has_value();
  }

  std::optional<std::string> image(RecordID id) override {
    const Person* person = find(id);
    return person == nullptr ? std::nullopt : person->image;
  }

  Status readStatus() const override { return readStatus_; }

  Status insert(const PersonChanges& person, RecordID& id) override {
    const std::scoped_lock lock(provider_.mutex_);
    id = ++provider_.lastID_;
    writes_.push_back({id, person, Write::Kind::insert});
    return {};
  }

  Status update(RecordID id, const PersonChanges& changes) override {
    writes_.push_back({id, changes, Write::Kind::update});
    return {};
  }

  Status remove(RecordID id) override {
    writes_.push_back({id, {}, Write::Kind::remove});
    return {};
  }

  Status commit() override {
    const std::scoped_lock lock(provider_.mutex_);
    if (Status status = std::exchange(provider_.nextCommit_, {}); !status.ok()) return status;
    auto people = std::make_shared<People>(*provider_.people_);
    for (const Write& write : writes_)
      apply(write, *people);
    provider_.people_ = std::move(people);
    writes_.clear();
    seen_ = nullptr;
    return {};
  }

  void rollback() override {
    writes_.clear();
    seen_ = nullptr;
  }

 private:
  struct Write {
    enum class Kind { insert, update, remove };
    RecordID id;
    PersonChanges changes;
    Kind kind;
  };

  const People& seen() {
    const std::scoped_lock lock(provider_.mutex_);
    if (seen_ == nullptr) seen_ = provider_.people_;
    return *seen_;
  }

  const Person* find(RecordID id) {
    const People& people = seen();
    {
      const std::scoped_lock lock(provider_.mutex_);
      if (!provider_.reads_.ok()) {
        readStatus_ = provider_.reads_;
        return nullptr;
      }
    }
    const auto found = people.find(id);
    return found == people.end() ? nullptr : &found->second;
  }

  static void apply(const Write& write, People& people) {
    if (write.kind == Write::Kind::remove) {
      people.erase(write.id);
      return;
    }
    if (write.kind == Write::Kind::update && !people.contains(write.id)) return;
    Person& person = people[write.id];
    for (const auto& [property, value] : write.changes.properties) {
      if (value) {
        person.properties.insert_or_assign(property, *value);
      } else {
        person.properties.erase(property);
      }
    }
    if (write.changes.image) person.image = *write.changes.image;
  }

  InMemoryContactStoreProvider& provider_;
  std::shared_ptr<const People> seen_;
  std::vector<EntryView> views_;  // The last that entries() gave.
  std::vector<Write> writes_;
  Status readStatus_;
};

void InMemoryContactStoreProvider::requestAccess(std::function<void(bool granted, const Status& error)> completion) {
  access = grantsAccess ? AuthorizationStatus::authorized : AuthorizationStatus::denied;
  completion(grantsAccess, {});
}

std::unique_ptr<ContactStore> InMemoryContactStoreProvider::open(Status& result) {
  if (access != AuthorizationStatus::authorized) {
    result = {Status::Code::accessDenied, "access to the contacts has not been given"};
    return nullptr;
  }
  result = {};
  return std::make_unique<ContactStore>(std::make_unique<Backend>(*this), ordering);
}

}  // namespace varnok
