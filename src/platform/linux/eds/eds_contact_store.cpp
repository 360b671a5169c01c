#include "platform/linux/eds/eds_contact_store.h"

#include "platform/linux/eds/eds_contact_backend.h"

namespace varnok {

EdsContactStoreProvider::EdsContactStoreProvider(Settings settings, const TextCodec& codec, const Clock& clock,
                                                 TaskRunner& tasks)
    : EdsContactStoreProvider(std::move(settings), codec, clock, tasks, openEdsBook) {}

EdsContactStoreProvider::EdsContactStoreProvider(Settings settings, const TextCodec& codec, const Clock& clock,
                                                 TaskRunner& tasks, Opener opener)
    : settings_(std::move(settings)), codec_(codec), clock_(clock), tasks_(tasks), opener_(std::move(opener)) {}

std::unique_ptr<EdsBook> EdsContactStoreProvider::openBook(Status& status) {
  auto book = opener_(settings_.source, status);
  if (book != nullptr) {
    access_ = AuthorizationStatus::authorized;
  } else if (status.code() == Status::Code::accessDenied) {
    access_ = AuthorizationStatus::denied;
  }
  return book;
}

void EdsContactStoreProvider::requestAccess(std::function<void(bool granted, const Status& error)> completion) {
  tasks_.detached([this, completion = std::move(completion)] {
    Status status;
    const bool granted = openBook(status) != nullptr;
    completion(granted, status);
  });
}

std::unique_ptr<ContactStore> EdsContactStoreProvider::open(Status& status) {
  auto book = openBook(status);
  if (book == nullptr) return nullptr;
  auto numbers = RecordIDs::open(settings_.numbers, book->source().uid, status);
  if (numbers == nullptr) return nullptr;
  auto backend = std::make_unique<EdsContactBackend>(std::move(book), std::move(numbers), codec_, clock_);
  return std::make_unique<ContactStore>(std::move(backend), settings_.ordering);
}

}  // namespace varnok
