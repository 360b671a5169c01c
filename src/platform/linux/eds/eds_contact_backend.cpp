#include "platform/linux/eds/eds_contact_backend.h"

#include <algorithm>
#include <random>
#include <set>

#include <fmt/format.h>

#include "platform/linux/eds/card_photo.h"
#include "platform/linux/eds/card_writer.h"

namespace varnok {
namespace {

std::string uidOfCard(const Card& card) {
  return std::string(card.valueOf("UID").value_or(""));
}

// A name that nobody else gives: 128 bits of chance.
std::string newUID() {
  std::random_device random;
  return fmt::format("varnok-{:08x}{:08x}{:08x}{:08x}", random(), random(), random(), random());
}

}  // namespace

EdsContactBackend::EdsContactBackend(std::unique_ptr<EdsBook> book, std::unique_ptr<RecordIDs> numbers,
                                     const TextCodec& codec, const Clock& clock)
    : book_(std::move(book)), numbers_(std::move(numbers)), reader_(codec, clock) {}

// --- Reading ---

Status EdsContactBackend::load() {
  const std::string revision = book_->revision();
  std::vector<std::string> cards;
  if (Status status = book_->fetch(cards); !status.ok()) return status;
  std::vector<std::string> uids;
  std::vector<std::string> kept;
  for (std::string& text : cards) {
    const Card card(text);
    std::string uid = uidOfCard(card);
    if (uid.empty() || !isPersonCard(card)) continue;
    uids.push_back(std::move(uid));
    kept.push_back(std::move(text));
  }
  Status status;
  const std::vector<RecordID> ids = numbers_->numbersOf(uids, status);
  if (!status.ok()) return status;
  contacts_.reserve(ids.size());
  for (std::size_t i = 0; i < ids.size(); ++i)
    contacts_.push_back({ids[i], std::move(kept[i])});
  std::ranges::sort(contacts_, {}, &Contact::id);
  numbers_->keepPeopleAt(revision, static_cast<int>(contacts_.size()));
  return {};
}

// A book that could not be read is empty until the next save, so that a pass
// over it does not wait for the service again and again.
const std::vector<EdsContactBackend::Contact>& EdsContactBackend::contacts() {
  if (loaded_) return contacts_;
  loaded_ = true;
  Status status = load();
  if (!status.ok() && readStatus_.ok()) readStatus_ = std::move(status);
  return contacts_;
}

const EdsContactBackend::Contact* EdsContactBackend::find(RecordID id) {
  const auto& all = contacts();
  const auto found = std::ranges::lower_bound(all, id, {}, &Contact::id);
  return found == all.end() || found->id != id ? nullptr : &*found;
}

ContactRecord* EdsContactBackend::personOf(RecordID id) {
  if (id < 0) return nullptr;
  Read& slot = read_[static_cast<std::size_t>(id) % read_.size()];
  if (slot.id == id) return slot.person.get();
  const Contact* contact = find(id);
  if (contact == nullptr) return nullptr;
  slot = {id, reader_.read(Card(contact->card))};
  return slot.person.get();
}

std::vector<RecordID> EdsContactBackend::allIDs() {
  std::vector<RecordID> ids;
  for (const Contact& contact : contacts())
    ids.push_back(contact.id);
  return ids;
}

std::vector<RecordID> EdsContactBackend::idsWithImage() {
  std::vector<RecordID> ids;
  for (const Contact& contact : contacts()) {
    if (contact.card.find("PHOTO") != std::string::npos && hasPhoto(Card(contact.card))) ids.push_back(contact.id);
  }
  return ids;
}

// Screens count far more often than they read, and a book need not come over
// the bus for that.
int EdsContactBackend::personCount() {
  if (!loaded_ && !count_) count_ = numbers_->peopleAt(book_->revision());
  return loaded_ || !count_ ? static_cast<int>(contacts().size()) : *count_;
}

std::optional<PropertyValue> EdsContactBackend::value(RecordID id, PropertyID property) {
  const ContactRecord* person = personOf(id);
  return person == nullptr ? std::nullopt : person->value(property);
}

std::optional<std::string_view> EdsContactBackend::text(RecordID id, PropertyID property) {
  const ContactRecord* person = personOf(id);
  return person == nullptr ? std::nullopt : person->text(property);
}

std::span<const EntryView> EdsContactBackend::entries(RecordID id, PropertyID property) {
  const ContactRecord* person = personOf(id);
  return person == nullptr ? std::span<const EntryView>() : person->entries(property);
}

bool EdsContactBackend::hasImage(RecordID id) {
  const Contact* contact = find(id);
  return contact != nullptr && contact->card.find("PHOTO") != std::string::npos && hasPhoto(Card(contact->card));
}

std::optional<std::string> EdsContactBackend::image(RecordID id) {
  const Contact* contact = find(id);
  return contact == nullptr ? std::nullopt : photoOf(Card(contact->card));
}

// --- Writing ---

Status EdsContactBackend::insert(const PersonChanges& person, RecordID& id) {
  Addition addition{kInvalidRecordID, newUID(), {}};
  if (Status status = numbers_->add(addition.uid, addition.id); !status.ok()) return status;
  Card card;
  card.append("UID:" + addition.uid);
  applyChanges(card, person, reader_);
  addition.card = card.text();
  id = addition.id;
  additions_.push_back(std::move(addition));
  return {};
}

Status EdsContactBackend::update(RecordID id, const PersonChanges& changes) {
  changes_.insert_or_assign(id, changes);
  return {};
}

Status EdsContactBackend::remove(RecordID id) {
  removals_.push_back(id);
  return {};
}

// Looks the contacts up as they are now: who has gone is neither changed nor
// removed.
Status EdsContactBackend::prepare(Work& work) {
  std::map<std::string, RecordID> changing;
  std::set<std::string> removing;
  Status status;
  for (const RecordID id : removals_)
    if (status.ok()) removing.insert(numbers_->uidOf(id, status));
  for (const auto& [id, changes] : changes_)
    if (status.ok()) changing.emplace(numbers_->uidOf(id, status), id);
  if (!status.ok()) return status;
  std::set<std::string> names(removing);
  for (const auto& [uid, id] : changing)
    names.insert(uid);
  names.erase("");
  if (names.empty()) return {};
  std::vector<std::string> cards;
  status = book_->fetchSome({names.begin(), names.end()}, cards);
  if (!status.ok()) return status;
  for (const std::string& text : cards) {
    Card card(text);
    const std::string uid = uidOfCard(card);
    if (removing.contains(uid)) {
      work.removed.push_back(uid);
    } else if (const auto found = changing.find(uid); found != changing.end()) {
      applyChanges(card, changes_[found->second], reader_);
      work.changed.push_back(card.text());
    }
  }
  return {};
}

Status EdsContactBackend::addAll() {
  if (additions_.empty()) return {};
  if (Status status = numbers_->secure(); !status.ok()) return status;
  std::vector<std::string> cards;
  for (Addition& addition : additions_)
    cards.push_back(std::move(addition.card));
  std::vector<std::string> uids;
  Status status = book_->add(cards, uids);
  for (std::size_t i = 0; i < std::min(uids.size(), additions_.size()); ++i) {
    if (uids[i] == additions_[i].uid) continue;
    const Status renamed = numbers_->rename(additions_[i].id, uids[i]);
    if (status.ok()) status = renamed;
  }
  if (status.ok() || uids.empty()) return status;
  return {status.code(),
          fmt::format("{}; {} of {} contacts were added before", status.message(), uids.size(), cards.size())};
}

Status EdsContactBackend::failure(std::string_view part, const Status& cause, std::string_view before) const {
  return {cause.code(), fmt::format("the address book \"{}\": {} failed ({}){}", book_->source().name, part,
                                    cause.message(), before)};
}

Status EdsContactBackend::commit() {
  Status status = sendChanges();
  // The new revision may be heard of later than the next question.
  numbers_->forgetPeople();
  if (status.ok()) forget();
  return status;
}

Status EdsContactBackend::sendChanges() {
  Work work;
  if (Status status = prepare(work); !status.ok()) {
    return failure("looking up what changes", status, "; nothing was changed");
  }
  if (Status status = addAll(); !status.ok()) return failure("adding contacts", status, "; nothing else was changed");
  std::string done = additions_.empty() ? "" : fmt::format("; {} contacts had been added", additions_.size());
  if (!work.changed.empty()) {
    if (Status status = book_->modify(work.changed); !status.ok()) return failure("changing contacts", status, done);
    done += fmt::format("; {} contacts had been changed", work.changed.size());
  }
  if (!work.removed.empty()) {
    if (Status status = book_->remove(work.removed); !status.ok()) return failure("removing contacts", status, done);
  }
  return {};
}

void EdsContactBackend::rollback() {
  forget();
}

// What the handle believes is read again, also after a failure: parts of a save
// may have been carried out.
void EdsContactBackend::forget() {
  additions_.clear();
  changes_.clear();
  removals_.clear();
  contacts_.clear();
  read_ = {};
  loaded_ = false;
  count_.reset();
}

}  // namespace varnok
