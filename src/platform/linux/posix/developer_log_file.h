#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/developer_log.h"

namespace varnok {

// The developers' log as DIRECTORY/varnok.log, up to 1 MiB and two older files
// (varnok.1.log, varnok.2.log). Directory and file are made at the first line;
// when they cannot be, lines are dropped.
class FileDeveloperLog : public DeveloperLog {
 public:
  explicit FileDeveloperLog(std::string directory);
  FileDeveloperLog(const FileDeveloperLog&) = delete;
  FileDeveloperLog& operator=(const FileDeveloperLog&) = delete;
  ~FileDeveloperLog() override;

  // Control characters, line ends among them, become blanks.
  void write(std::string_view line) override;

 private:
  class Output;

  std::string directory_;
  std::mutex mutex_;
  bool opened_ = false;
  std::unique_ptr<Output> output_;  // Null when it could not be opened.
};

}  // namespace varnok
