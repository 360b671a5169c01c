// ContactRecord: one person.
//
// Lifetime. A record read through a ContactStore is a light handle: it holds no
// property values, reads them through its store when asked, and may be used
// only while that store lives. A record from ABPersonCreate() holds its values
// itself until the store it was added to is saved.
//
// Threads. A record belongs to its store's thread; one outside any store to
// whoever holds it.

#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/entry_view.h"
#include "contacts/property_value.h"
#include "platform/status.h"

namespace varnok {

class ContactStore;

// Names one person inside one store. Never used again after a removal.
using RecordID = std::int32_t;
inline constexpr RecordID kInvalidRecordID = -1;

// What differs from the stored person. A property mapped to nothing is removed.
struct PersonChanges {
  std::map<PropertyID, std::optional<PropertyValue>> properties;
  std::optional<std::optional<std::string>> image;  // Encoded JPEG or PNG bytes.

  bool empty() const { return properties.empty() && !image; }
};

class ContactRecord {
  // Only a store makes records that are read through it.
  struct StoreKey {
    explicit StoreKey() = default;
  };

 public:
  // A new, empty person outside any store.
  ContactRecord() = default;
  ContactRecord(StoreKey /*key*/, ContactStore& store, RecordID id) : store_(&store), id_(id) {}
  ContactRecord(const ContactRecord&) = delete;
  ContactRecord& operator=(const ContactRecord&) = delete;
  ~ContactRecord() = default;

  // kInvalidRecordID until the store it was added to has been saved.
  RecordID recordID() const { return id_; }

  // Nothing when the property is absent.
  std::optional<PropertyValue> value(PropertyID property) const;

  // The text of a text property, without a copy: valid until the next read
  // through the store and the next change of the person.
  std::optional<std::string_view> text(PropertyID property) const;

  // The entries of a multi-valued property, without copies: valid as long as
  // text(), and until entries() is asked again.
  std::span<const EntryView> entries(PropertyID property) const;

  // invalidArgument when the value is not of the property's type; the record
  // is then as it was.
  Status setValue(PropertyID property, PropertyValue value);
  Status removeValue(PropertyID property);

  bool hasImage() const;
  std::optional<std::string> image() const;
  void setImage(std::optional<std::string> bytes);

  // The store it was read through or added to and saved in; null otherwise.
  const ContactStore* store() const { return store_; }

 private:
  friend class ContactStore;

  PersonChanges& changes();
  const PersonChanges* changesIfAny() const;

  ContactStore* store_ = nullptr;
  RecordID id_ = kInvalidRecordID;
  bool added_ = false;                    // Waits in a store for its save.
  PersonChanges own_;                     // Everything, while store_ is null.
  mutable std::vector<EntryView> views_;  // Of the changed list that entries() gave last.
};

using PersonRef = std::shared_ptr<ContactRecord>;

}  // namespace varnok
