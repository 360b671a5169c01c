// BackupWriter: the file of one backup, person by person.
//
// Lifetime. Lives for one run, on its thread. Destroyed without finish(), or
// after a failure: nothing appears under the file's name.

#pragma once

#include <memory>
#include <string>

#include "backup/run/backup_run.h"
#include "contacts/address_book.h"

namespace varnok {

class BackupWriter {
 public:
  virtual ~BackupWriter() = default;

  virtual Status write(const PersonRef& person) = 0;

  // The file appears, whole.
  virtual Status finish() = 0;
};

// A writer of the format that the extension of `path` says. Null with a Status
// when there is no such format or the file cannot be made. `services` outlives
// the writer.
std::unique_ptr<BackupWriter> makeBackupWriter(const std::string& path, const std::string& language,
                                               const BackupRunServices& services, Status& status);

}  // namespace varnok
