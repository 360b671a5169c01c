#pragma once

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "contacts/contact_store.h"
#include "platform/linux/eds/card_reader.h"
#include "platform/linux/eds/eds_book.h"
#include "platform/linux/eds/record_ids.h"

namespace varnok {

// One handle on an address book of the service.
class EdsContactBackend : public ContactBackend {
 public:
  EdsContactBackend(std::unique_ptr<EdsBook> book, std::unique_ptr<RecordIDs> numbers, const TextCodec& codec,
                    const Clock& clock);

  std::vector<RecordID> allIDs() override;
  std::vector<RecordID> idsWithImage() override;
  int personCount() override;
  bool contains(RecordID id) override { return find(id) != nullptr; }
  std::optional<PropertyValue> value(RecordID id, PropertyID property) override;
  std::optional<std::string_view> text(RecordID id, PropertyID property) override;
  std::span<const EntryView> entries(RecordID id, PropertyID property) override;
  bool hasImage(RecordID id) override;
  std::optional<std::string> image(RecordID id) override;
  Status readStatus() const override { return readStatus_; }

  Status insert(const PersonChanges& person, RecordID& id) override;
  Status update(RecordID id, const PersonChanges& changes) override;
  Status remove(RecordID id) override;
  Status commit() override;
  void rollback() override;

 private:
  struct Contact {
    RecordID id;
    std::string card;
  };
  struct Addition {
    RecordID id;
    std::string uid;
    std::string card;
  };
  // What a save does to contacts that are there.
  struct Work {
    std::vector<std::string> changed;  // Cards.
    std::vector<std::string> removed;  // Names.
  };

  const std::vector<Contact>& contacts();
  Status load();
  const Contact* find(RecordID id);
  ContactRecord* personOf(RecordID id);
  Status prepare(Work& work);
  Status sendChanges();
  Status addAll();
  Status failure(std::string_view part, const Status& cause, std::string_view before) const;
  void forget();

  std::unique_ptr<EdsBook> book_;
  std::unique_ptr<RecordIDs> numbers_;
  CardReader reader_;

  bool loaded_ = false;
  std::optional<int> count_;       // When asked before the contacts were loaded.
  std::vector<Contact> contacts_;  // By number.
  Status readStatus_;

  // The persons read last: whoever goes over a book asks for one property after
  // the other, and a comparison for those of a few people in turn.
  struct Read {
    RecordID id = kInvalidRecordID;
    PersonRef person;
  };
  std::array<Read, 16> read_;

  // Until the commit.
  std::vector<Addition> additions_;
  std::map<RecordID, PersonChanges> changes_;
  std::vector<RecordID> removals_;
};

}  // namespace varnok
