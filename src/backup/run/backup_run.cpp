#include "backup/run/backup_run.h"

#include "app/preferences/preference_keys.h"
#include "backup/files/backup_file.h"
#include "contacts/address_book.h"
#include "export/vcf_exporter.h"

namespace varnok {
namespace {

BackupOutcome failed(Status status) {
  BackupOutcome outcome;
  outcome.status = std::move(status);
  return outcome;
}

}  // namespace

BackupOutcome BackupRun::run(const std::string& path, const std::string& language) {
  if (pathExtension(path) != "vcf") {
    return failed({Status::Code::unavailable, "backups of this type cannot be made: " + path});
  }
  Status status;
  const auto stream = services_.files.createAtomic(path, status);
  if (stream == nullptr) return failed(status);
  const auto addressBook = ABAddressBookCreateWithOptions(services_.contacts, &status);
  if (addressBook == nullptr) return failed(status);

  services_.writing.preferences.setInteger(0, key::itemCount);
  services_.writing.preferences.synchronize().ignore("the numbers count for this run only");

  BackupOutcome outcome;
  outcome.path = path;
  status = writePeople(*addressBook, *stream, language, outcome.contacts);
  // What could not be read would be missing from the backup.
  if (status.ok()) status = addressBook->readStatus();
  if (status.code() == Status::Code::cancelled) {
    outcome.kind = BackupOutcome::Kind::cancelled;
    return outcome;
  }
  if (status.ok()) status = stream->commit();
  if (!status.ok()) return failed(status);
  outcome.kind = BackupOutcome::Kind::finished;
  if (const auto attributes = services_.files.attributes(path)) outcome.bytes = attributes->size;
  return outcome;
}

Status BackupRun::writePeople(ContactStore& addressBook, OutputStream& stream, const std::string& language,
                              int& written) {
  const PersonArray people = ABAddressBookCopyArrayOfAllPeople(&addressBook);
  const auto count = static_cast<std::size_t>(ABAddressBookGetPersonCount(&addressBook));
  for (std::size_t i = 0; i < count && i < people.size(); ++i) {
    if (host_.operationCancelled()) return {Status::Code::cancelled, "the backup was cancelled"};
    const PersonRef person = people[i];
    // Quirk: the log gets an empty line here. Nobody knows why; readers of the
    // log count on it.
    if (i == 245) services_.log.write("");
    host_.personTaken(ABRecordCopyCompositeName(person));
    Status status = VCFExporter::exportPerson(stream, person, language, services_.writing);
    if (!status.ok()) return status;
    ++written;
  }
  return {};
}

}  // namespace varnok
