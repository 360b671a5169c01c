// A FileSystem in memory. Can be told to fail, and shows what is on its way.
//
//   InMemoryFileSystem files;
//   files.failAppendsAfter(100);       // Bytes; then the disk is full.
//   files.failCommits = true;

#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "platform/file_system.h"

namespace varnok {

class InMemoryFileSystem : public FileSystem {
 public:
  std::map<std::string, std::string> files;
  int filesOnTheirWay = 0;
  bool failCommits = false;
  bool failCreates = false;
  bool hideAttributes = false;
  std::set<std::string> locked;

  void failAppendsAfter(std::uint64_t bytes) { room_ = bytes; }

  std::unique_ptr<AtomicFile> createAtomic(const std::string& path, Status& status) override {
    status = failCreates ? Status(Status::Code::accessDenied, path + ": refused") : Status();
    return failCreates ? nullptr : std::make_unique<File>(*this, path);
  }
  std::optional<std::string> readFile(const std::string& path, Status& status) override {
    const auto found = files.find(path);
    status = found == files.end() ? Status(Status::Code::notFound, path + ": no such file") : Status();
    return found == files.end() ? std::nullopt : std::optional(found->second);
  }
  std::optional<FileAttributes> attributes(const std::string& path) override {
    const auto found = files.find(path);
    if (found == files.end() || hideAttributes) return std::nullopt;
    return FileAttributes{found->second.size(), {}};
  }
  Status remove(const std::string& path) override {
    return files.erase(path) > 0 ? Status() : Status(Status::Code::notFound, path + ": no such file");
  }
  std::vector<std::string> filesBelow(const std::string& directory) override {
    std::vector<std::string> below;
    for (const auto& [path, bytes] : files) {
      if (path.starts_with(directory + "/")) below.push_back(path.substr(directory.size() + 1));
    }
    return below;
  }
  bool isReservedName(std::string_view name) const override { return name.starts_with(".part-"); }
  std::uint64_t freeSpace(const std::string& /*directory*/) override { return room_; }
  std::unique_ptr<FileLock> tryLock(const std::string& path, Status& status) override {
    const bool free = locked.insert(path).second;
    status = free ? Status() : Status(Status::Code::busy, path + ": locked");
    return free ? std::make_unique<Lock>(*this, path) : nullptr;
  }

 private:
  class File : public AtomicFile {
   public:
    File(InMemoryFileSystem& disk, std::string path) : disk_(disk), path_(std::move(path)) { ++disk_.filesOnTheirWay; }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() override { --disk_.filesOnTheirWay; }
    Status append(std::string_view bytes) override {
      if (bytes.size() > disk_.room_) status_ = {Status::Code::noSpace, path_ + ": the disk is full"};
      if (!status_.ok()) return status_;
      disk_.room_ -= bytes.size();
      bytes_ += bytes;
      return {};
    }
    Status truncate(std::uint64_t size) override {
      bytes_.resize(size);
      return {};
    }
    Status commit() override {
      if (!status_.ok()) return status_;
      if (disk_.failCommits) return {Status::Code::inputOutput, path_ + ": cannot be made durable"};
      disk_.files[path_] = bytes_;
      return {};
    }
    std::unique_ptr<OpenFile> publish(Status& status) override {
      status = commit();
      return status.ok() ? std::make_unique<Published>() : nullptr;
    }

   private:
    InMemoryFileSystem& disk_;
    std::string path_;
    std::string bytes_;
    Status status_;  // The first failure.
  };

  class Published : public OpenFile {
   public:
    int takeDescriptor() override { return -1; }
  };

  class Lock : public FileLock {
   public:
    Lock(InMemoryFileSystem& disk, std::string path) : disk_(disk), path_(std::move(path)) {}
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    ~Lock() override { disk_.locked.erase(path_); }

   private:
    InMemoryFileSystem& disk_;
    std::string path_;
  };

  std::uint64_t room_ = std::numeric_limits<std::uint64_t>::max();
};

}  // namespace varnok
