#include "cleanup/duplicate_finder.h"

#include <algorithm>
#include <bit>
#include <optional>

namespace varnok {
namespace {

constexpr std::uint32_t kNone = 0xffffffff;

// Keys are kept while they need no more than this on average, in bytes a person.
// Usual ones need some 130.
constexpr std::size_t kKeptBytes = 192;

// The first person with a hash.
struct Seen {
  std::uint64_t hash = 0;
  RecordID first = kInvalidRecordID;
  std::uint32_t key = kNone;    // Where the key is kept.
  std::uint32_t alike = kNone;  // Later persons with this hash.
};

// Later persons of one hash with one key.
struct Alike {
  DuplicateKey key;
  RecordID first = kInvalidRecordID;  // The first person with the hash.
  std::optional<bool> same;           // As that person's key, once that is known.
  std::uint32_t next = kNone;         // Others of this hash.
  std::uint32_t group = kNone;        // In the result.
};

// Everybody's hash, each once, in the order in which they came.
class SeenHashes {
 public:
  explicit SeenHashes(std::size_t persons) : places_(std::bit_ceil(persons + persons / 4 + 1), kNone) {
    seen_.reserve(persons);
  }

  // The one with that hash; a new one, with nothing but the hash, when there is
  // none. Valid until the next call.
  Seen& operator[](std::uint64_t hash) {
    const std::size_t mask = places_.size() - 1;
    std::size_t place = hash & mask;
    for (; places_[place] != kNone; place = (place + 1) & mask) {
      if (seen_[places_[place]].hash == hash) return seen_[places_[place]];
    }
    places_[place] = static_cast<std::uint32_t>(seen_.size());
    return seen_.emplace_back(Seen{.hash = hash});
  }

 private:
  std::vector<std::uint32_t> places_;  // Where the hash asks for, or behind that; never full.
  std::vector<Seen> seen_;
};

class Finder {
 public:
  Finder(ContactStore& addressBook, const Clock& clock, KeyHash hash)
      : addressBook_(addressBook), clock_(clock), hash_(hash) {}

  DuplicateRecords find() {
    passOverEverybody();
    lookAtTheFirst();
    // Who could not be read has no values, like everybody else who could not.
    return addressBook_.readStatus().ok() ? result() : DuplicateRecords();
  }

 private:
  struct Suspect {
    RecordID id;
    std::uint32_t alike;
  };

  void passOverEverybody();
  void keep(const DuplicateKey& key, Seen& seen);
  std::uint32_t alikeOf(const DuplicateKey& key, Seen& seen);
  void lookAtTheFirst();
  DuplicateRecords result();

  ContactStore& addressBook_;
  const Clock& clock_;
  KeyHash hash_;
  std::string keys_;  // Kept ones. Never grows: memory that is not used is not taken.
  std::vector<Alike> alikes_;
  std::vector<Suspect> suspects_;  // Everybody whose hash an earlier person has.
};

void Finder::passOverEverybody() {
  const PersonArray people = ABAddressBookCopyArrayOfAllPeople(&addressBook_);
  const auto count = static_cast<std::size_t>(ABAddressBookGetPersonCount(&addressBook_));
  keys_.reserve(std::min(people.size() * kKeptBytes, std::size_t{kNone}));
  SeenHashes hashes(people.size());
  DuplicateKey key;
  for (std::size_t i = 0; i < std::min(count, people.size()); ++i) {
    const PersonRef person = people[i];
    key.assign(person, clock_);
    const RecordID id = ABRecordGetRecordID(person);
    Seen& seen = hashes[hash_(key.bytes())];
    if (seen.first != kInvalidRecordID) {
      suspects_.push_back({id, alikeOf(key, seen)});
    } else {
      seen.first = id;
      keep(key, seen);
    }
  }
}

void Finder::keep(const DuplicateKey& key, Seen& seen) {
  if (key.bytes().size() > keys_.capacity() - keys_.size()) return;
  seen.key = static_cast<std::uint32_t>(keys_.size());
  keys_ += key.bytes();
}

std::uint32_t Finder::alikeOf(const DuplicateKey& key, Seen& seen) {
  std::uint32_t* link = &seen.alike;
  for (; *link != kNone; link = &alikes_[*link].next) {
    if (alikes_[*link].key == key) return *link;
  }
  const auto added = static_cast<std::uint32_t>(alikes_.size());
  *link = added;
  alikes_.push_back({.key = key, .first = seen.first, .same = {}});
  // No key is the beginning of another one.
  if (seen.key != kNone) alikes_.back().same = std::string_view(keys_).substr(seen.key).starts_with(key.bytes());
  return added;
}

// Reads again whose keys were not kept. From the end of the book to its
// beginning: a store that reads ahead of a pass would read everybody once more.
void Finder::lookAtTheFirst() {
  std::vector<Alike*> open;
  for (Alike& alike : alikes_) {
    if (!alike.same) open.push_back(&alike);
  }
  std::ranges::sort(open, std::ranges::greater(), &Alike::first);
  DuplicateKey key;
  for (Alike* alike : open) {
    key.assign(ABAddressBookGetPersonWithRecordID(&addressBook_, alike->first), clock_);
    alike->same = alike->key == key;
  }
}

DuplicateRecords Finder::result() {
  DuplicateRecords result;
  std::vector<int> counts;
  for (const Suspect& suspect : suspects_) {
    Alike& alike = alikes_[suspect.alike];
    if (alike.same == false) {
      // Only the hash was the same: the first person with this key is this one.
      alike.same = true;
      alike.first = suspect.id;
      continue;
    }
    if (alike.group == kNone) {
      alike.group = static_cast<std::uint32_t>(counts.size());
      counts.push_back(0);
      result.duplicateRecordsAsDictionary.push_back(std::move(alike.key));
      result.keptRecords.push_back(alike.first);
    }
    ++counts[alike.group];
    result.duplicateRecords.push_back(suspect.id);
    result.groups.push_back(alike.group);
  }
  for (const int count : counts)
    result.duplicateRecordsCounter.push_back(std::to_string(count));
  return result;
}

}  // namespace

std::uint64_t hashOf(std::string_view bytes) {
  return std::hash<std::string_view>()(bytes);
}

DuplicateRecords findDuplicates(ContactStore* addressBook, const Clock& clock, KeyHash hash) {
  return addressBook == nullptr ? DuplicateRecords() : Finder(*addressBook, clock, hash).find();
}

}  // namespace varnok
