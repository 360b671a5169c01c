#include "backup/run/backup_run.h"

#include "app/preferences/preference_keys.h"
#include "backup/files/backup_file.h"
#include "backup/run/backup_writer.h"
#include "contacts/address_book.h"
#include "export/prepared_photos.h"

namespace varnok {
namespace {

BackupOutcome failed(Status status) {
  BackupOutcome outcome;
  outcome.status = std::move(status);
  return outcome;
}

}  // namespace

BackupOutcome BackupRun::run(const std::string& path, const std::string& language) {
  Status status;
  const auto writer = makeBackupWriter(path, language, services_, status);
  if (writer == nullptr) return failed(status);
  const auto addressBook = ABAddressBookCreateWithOptions(services_.contacts, &status);
  if (addressBook == nullptr) return failed(status);

  services_.writing.preferences.setInteger(0, key::itemCount);
  services_.writing.preferences.synchronize().ignore("the numbers count for this run only");

  BackupOutcome outcome;
  outcome.path = path;
  const auto photos = preparePhotos(*addressBook, pathExtension(path));
  services_.writing.photos = photos.get();
  status = writePeople(*addressBook, *writer, outcome.contacts);
  services_.writing.photos = nullptr;
  // What could not be read would be missing from the backup.
  if (status.ok()) status = addressBook->readStatus();
  if (status.code() == Status::Code::cancelled) {
    outcome.kind = BackupOutcome::Kind::cancelled;
    return outcome;
  }
  if (status.ok()) status = writer->finish();
  if (!status.ok()) return failed(status);
  outcome.kind = BackupOutcome::Kind::finished;
  if (const auto attributes = services_.files.attributes(path)) outcome.bytes = attributes->size;
  return outcome;
}

// Null when this backup carries no photos.
std::unique_ptr<PreparedPhotos> BackupRun::preparePhotos(ContactStore& addressBook, std::string_view extension) {
  const PreferenceStore& preferences = services_.writing.preferences;
  if (extension == "csv" || !preferences.boolForKey(key::EXPORT_CONF_PHOTOS)) return nullptr;
  return std::make_unique<PreparedPhotos>(addressBook.peopleWithImages(),
                                          preferences.boolForKey(key::EXPORT_CONF_SHRINK), services_.writing.images,
                                          services_.tasks);
}

Status BackupRun::writePeople(ContactStore& addressBook, BackupWriter& writer, int& written) {
  const PersonArray people = ABAddressBookCopyArrayOfAllPeople(&addressBook);
  const auto count = static_cast<std::size_t>(ABAddressBookGetPersonCount(&addressBook));
  for (std::size_t i = 0; i < count && i < people.size(); ++i) {
    if (host_.operationCancelled()) return {Status::Code::cancelled, "the backup was cancelled"};
    const PersonRef person = people[i];
    // Quirk: the log gets an empty line here. Nobody knows why; readers of the
    // log count on it.
    if (i == 245) services_.log.write("");
    host_.personTaken(person);
    Status status = writer.write(person);
    if (!status.ok()) return status;
    ++written;
  }
  return {};
}

}  // namespace varnok
