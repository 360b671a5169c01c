// HTTPStaticFiles: the files of a document root, small ones kept in memory.
//
// A file in memory is compared with the one on disk at every request, so a
// change is served at once. Links may lead anywhere within the root; one that
// leads out of it is not followed (this takes Linux 5.6).
//
// Threads. Any.

#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "web/http/http_file.h"
#include "web/http/http_response.h"

namespace varnok {

class HTTPStaticFiles {
 public:
  // A root that cannot be opened has no files. A file that changed less than
  // `settledAfter` ago is not kept: it may change again without getting another
  // time stamp.
  explicit HTTPStaticFiles(std::string root, std::chrono::seconds settledAfter = std::chrono::seconds(2));
  HTTPStaticFiles(const HTTPStaticFiles&) = delete;
  HTTPStaticFiles& operator=(const HTTPStaticFiles&) = delete;
  ~HTTPStaticFiles();

  // `path` is standardized and absolute. Null when it is no regular file below
  // the root.
  std::unique_ptr<HTTPResponse> response(const std::string& path);

  // The same for a file in memory; null for any other.
  std::unique_ptr<HTTPResponse> keptResponse(const std::string& path);

 private:
  struct KeptFile;
  class KeptResponse;

  std::shared_ptr<const KeptFile> keep(const std::string& path, const HTTPFile& file);
  const char* relative(const std::string& path) const;

  bool isSettled(std::int64_t changed) const;

  std::string root_;
  std::chrono::seconds settledAfter_;
  int rootDescriptor_ = -1;
  std::mutex mutex_;
  std::map<std::string, std::shared_ptr<const KeptFile>> kept_;
  std::size_t keptBytes_ = 0;
};

}  // namespace varnok
