// EdsContactStoreProvider: the desktop's own address book, kept by Evolution
// Data Server.
//
// A handle reads the whole book at its first read, in one call, and keeps it as
// text until its save or its end: that is the state it sees. A handle that only
// counts asks for nothing where the revision is that of the last reading. A save
// makes three bulk calls: additions, changes, removals, in this order, so that a
// failure between them may leave somebody twice but never not at all. The service
// knows no transaction over them: what an earlier call stored stays stored when a
// later one fails, and the Status says so. Changes are made to the contacts as
// they are at the save, so that others' changes of other properties stay.
//
// Threads. Any. Nothing of it is loaded before the first try.

#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "contacts/contact_store.h"
#include "platform/clock.h"
#include "platform/linux/eds/eds_book.h"
#include "platform/task_runner.h"
#include "platform/text_codec.h"

namespace varnok {

class EdsContactStoreProvider : public ContactStoreProvider {
 public:
  // Connects to an address book; null with a Status.
  using Opener = std::function<std::unique_ptr<EdsBook>(const std::string& uid, Status& status)>;

  struct Settings {
    std::string source;   // Empty: the system's address book.
    std::string numbers;  // The file of RecordIDs; its folder must exist.
    SortOrdering ordering = SortOrdering::byFirstName;
  };

  // What it is given must outlive it, and what `tasks` runs for it.
  EdsContactStoreProvider(Settings settings, const TextCodec& codec, const Clock& clock, TaskRunner& tasks);
  EdsContactStoreProvider(Settings settings, const TextCodec& codec, const Clock& clock, TaskRunner& tasks,
                          Opener opener);

  // Of the last try; notDetermined before the first, and while the service has
  // never answered.
  AuthorizationStatus authorizationStatus() override { return access_; }
  void requestAccess(std::function<void(bool granted, const Status& error)> completion) override;
  std::unique_ptr<ContactStore> open(Status& status) override;
  SortOrdering sortOrdering() const override { return settings_.ordering; }

 private:
  std::unique_ptr<EdsBook> openBook(Status& status);

  const Settings settings_;
  const TextCodec& codec_;
  const Clock& clock_;
  TaskRunner& tasks_;
  const Opener opener_;
  std::atomic<AuthorizationStatus> access_ = AuthorizationStatus::notDetermined;
};

// The address books that there are, the system's first. unavailable where the
// service does not answer or the program was built without it.
std::vector<EdsSource> edsSources(Status& status);

// As Opener, from the service itself.
std::unique_ptr<EdsBook> openEdsBook(const std::string& uid, Status& status);

}  // namespace varnok
