#include "contacts/contact_record.h"

#include "contacts/contact_store.h"

namespace varnok {

PersonChanges& ContactRecord::changes() {
  return store_ == nullptr ? own_ : store_->changes_[id_];
}

const PersonChanges* ContactRecord::changesIfAny() const {
  if (store_ == nullptr) return &own_;
  if (store_->changes_.empty()) return nullptr;
  const auto found = store_->changes_.find(id_);
  return found == store_->changes_.end() ? nullptr : &found->second;
}

std::optional<PropertyValue> ContactRecord::value(PropertyID property) const {
  if (const PersonChanges* changes = changesIfAny()) {
    const auto found = changes->properties.find(property);
    if (found != changes->properties.end()) return found->second;
  }
  return store_ == nullptr ? std::nullopt : store_->backend_->value(id_, property);
}

std::optional<std::string_view> ContactRecord::text(PropertyID property) const {
  if (const PersonChanges* changes = changesIfAny()) {
    const auto found = changes->properties.find(property);
    if (found != changes->properties.end()) {
      const auto* text = found->second ? std::get_if<std::string>(&*found->second) : nullptr;
      return text == nullptr ? std::nullopt : std::optional<std::string_view>(*text);
    }
  }
  return store_ == nullptr ? std::nullopt : store_->backend_->text(id_, property);
}

std::span<const EntryView> ContactRecord::entries(PropertyID property) const {
  if (const PersonChanges* changes = changesIfAny()) {
    const auto found = changes->properties.find(property);
    if (found != changes->properties.end()) {
      const auto* list = found->second ? std::get_if<MultiValue>(&*found->second) : nullptr;
      views_.clear();
      if (list != nullptr) appendViews(*list, views_);
      return views_;
    }
  }
  return store_ == nullptr ? std::span<const EntryView>() : store_->backend_->entries(id_, property);
}

Status ContactRecord::setValue(PropertyID property, PropertyValue value) {
  const Property& known = propertyOf(property);
  if (!fits(value, known.type)) {
    return {Status::Code::invalidArgument, "a value of another type does not fit " + std::string(known.name)};
  }
  // A list without entries is an absent property, in every store.
  const auto* list = std::get_if<MultiValue>(&value);
  if (list != nullptr && list->entries.empty()) return removeValue(property);
  changes().properties.insert_or_assign(property, std::move(value));
  return {};
}

Status ContactRecord::removeValue(PropertyID property) {
  changes().properties.insert_or_assign(property, std::nullopt);
  return {};
}

bool ContactRecord::hasImage() const {
  const PersonChanges* changes = changesIfAny();
  if (changes != nullptr && changes->image) return changes->image->has_value();
  return store_ != nullptr && store_->backend_->hasImage(id_);
}

std::optional<std::string> ContactRecord::image() const {
  const PersonChanges* changes = changesIfAny();
  if (changes != nullptr && changes->image) return *changes->image;
  return store_ == nullptr ? std::nullopt : store_->backend_->image(id_);
}

void ContactRecord::setImage(std::optional<std::string> bytes) {
  changes().image = std::move(bytes);
}

}  // namespace varnok
