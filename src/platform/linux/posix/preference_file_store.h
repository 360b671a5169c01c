// PreferenceFileStore: preferences in one small file, changes appended as they
// are made. The bytes are described in docs/formats/preferences.md.
//
// Durability. A set has reached the operating system when it returns: a killed
// process loses none. A power failure may lose the newest changes, never the
// older ones.
//
// Processes. Any number of them may have the same file open; none loses
// another's keys. What another process sets is seen at the next read; on a file
// system that cannot map files, at this process's next change. The lock belongs
// to the open file, so a forked child must open a store of its own.
//
// Failure. A change that cannot be written counts for this run and is written
// with the next one that can be; until then synchronize() says why not.

#pragma once

#include <memory>
#include <string>

#include "platform/preference_store.h"

namespace varnok {

class PreferenceFileStore : public PreferenceStore {
 public:
  // Makes the file (mode 0600) when there is none; its directory must exist.
  // Null with a Status when it cannot be used: corrupt when it is no preference
  // file, newerVersion when a later program wrote it. It is then left as it is.
  static std::unique_ptr<PreferenceFileStore> open(const std::string& path, Status& status);

  PreferenceFileStore(const PreferenceFileStore&) = delete;
  PreferenceFileStore& operator=(const PreferenceFileStore&) = delete;
  ~PreferenceFileStore() override;

 private:
  class File;
  explicit PreferenceFileStore(std::unique_ptr<File> file);

  const Value* storedValue(std::string_view key) const override;
  std::uint64_t storedGeneration() const override;
  void store(std::string_view key, const Value& value) override;
  void erase(std::string_view key) override;
  Status flush() override;

  std::unique_ptr<File> file_;
};

}  // namespace varnok
