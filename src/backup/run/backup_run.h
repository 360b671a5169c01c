// BackupRun: one pass over the address book into one backup file.
//
// Threads. run() works on the thread that calls it, and opens and closes its
// own store handle there. The host is called on that thread too.
//
// Failure. Whatever goes wrong, cancelled or failed, the partial file is gone
// and earlier backups are as they were.

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "contacts/contact_store.h"
#include "export/export_services.h"
#include "platform/developer_log.h"
#include "platform/file_system.h"
#include "platform/task_runner.h"
#include "platform/text_catalog.h"

namespace varnok {

class BackupWriter;

struct BackupOutcome {
  enum class Kind { finished, cancelled, failed };
  Kind kind = Kind::failed;
  Status status;  // Why it failed.
  int contacts = 0;
  std::string path;
  std::optional<std::uint64_t> bytes;  // Nothing when the file's size cannot be read.
};

struct BackupRunServices {
  ExportServices writing;
  ContactStoreProvider& contacts;
  FileSystem& files;
  DeveloperLog& log;
  const TextCatalog& texts;
  TaskRunner& tasks;
};

class BackupRun {
 public:
  // What a run asks of the screen that started it.
  class Host {
   public:
    virtual ~Host() = default;
    // Asked before each person; one that has been taken is still written.
    virtual bool operationCancelled() const = 0;
    // `person` is about to be written. May be read during this call.
    virtual void personTaken(const PersonRef& person) = 0;
  };

  BackupRun(Host& host, BackupRunServices services) : host_(host), services_(services) {}

  // Writes every person to `path`, whose extension says the format.
  BackupOutcome run(const std::string& path, const std::string& language);

 private:
  std::unique_ptr<PreparedPhotos> preparePhotos(ContactStore& addressBook, std::string_view extension);
  Status writePeople(ContactStore& addressBook, BackupWriter& writer, int& written);

  Host& host_;
  BackupRunServices services_;
};

}  // namespace varnok
