// PosixFileSystem: FileSystem over the files of this machine.
//
// A file on its way is ".NAME.part-XXXXXX" beside its final place, mode 0600,
// and locked by its writer until it has its final name. Neither its first
// letter nor its extension lets a reader of the directory take it for a file of
// the user's.

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_system.h"

namespace varnok {

class PosixFileSystem : public FileSystem {
 public:
  std::unique_ptr<AtomicFile> createAtomic(const std::string& path, Status& status) override;
  std::optional<std::string> readFile(const std::string& path, Status& status) override;

  // Of regular files only.
  std::optional<FileAttributes> attributes(const std::string& path) override;

  Status remove(const std::string& path) override;

  // A folder is followed by what it holds. Files whose path is longer than the
  // system can open are left out.
  std::vector<std::string> filesBelow(const std::string& directory) override;

  bool isReservedName(std::string_view name) const override;

  // What a user without privileges may take.
  std::uint64_t freeSpace(const std::string& directory) override;

  // Makes the file when there is none; it stays when the lock is gone.
  std::unique_ptr<FileLock> tryLock(const std::string& path, Status& status) override;
};

// Removes the files on their way directly in `directory` whose writer is gone.
void removeStaleParts(const std::string& directory);

// Makes `path` and the directories above it where they are missing, mode 0700.
Status makeDirectories(const std::string& path);

}  // namespace varnok
