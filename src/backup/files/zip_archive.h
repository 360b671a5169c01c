// ZipArchive: a zip file that is written entry by entry.
//
//   ZipArchive archive(files, clock, tasks);
//   archive.CreateZipFile2(path);
//   archive.addData(card, "Ada12345678.vcf");
//   if (!archive.CloseZipFile2()) report(archive.status());
//
// Entries are deflated by other threads and written in the order they came; the
// file is byte for byte the one that a single thread would write.
// docs/formats/zip.md shows it.
//
// Lifetime. Destroyed without CloseZipFile2(), or after a failure: nothing
// appears under the file's name, and nothing waits for other threads.
//
// Threads. All calls come from one thread, which waits or deflates too when the
// others are far behind.
//
// Failure. After the first failure every later call is false and status() says
// why. An entry may fail to be written only when later ones are added.

#pragma once

#include <memory>
#include <string>

#include "platform/clock.h"
#include "platform/file_system.h"
#include "platform/task_runner.h"

namespace varnok {

class ZipContainer;
struct ZipEntry;

class ZipArchive {
 public:
  ZipArchive(FileSystem& files, const Clock& clock, TaskRunner& tasks);
  ZipArchive(const ZipArchive&) = delete;
  ZipArchive& operator=(const ZipArchive&) = delete;
  ~ZipArchive();

  // Once, first.
  bool CreateZipFile2(const std::string& path);

  // `newName` is UTF-8 and must be safe to extract: see zipEntryName().
  bool addData(std::string bytes, std::string newName);

  // Finishes the central directory; the file appears.
  bool CloseZipFile2();

  // Why the first call that failed did.
  const Status& status() const { return status_; }

 private:
  class Ahead;

  bool write(const ZipEntry& entry);
  bool fail(Status status);

  FileSystem& files_;
  const Clock& clock_;
  TaskRunner& tasks_;
  Status status_;
  std::unique_ptr<ZipContainer> container_;  // Null unless the archive is open.
  std::unique_ptr<Ahead> ahead_;             // Likewise.
};

}  // namespace varnok
