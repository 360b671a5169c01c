#include "platform/linux/posix/developer_log_file.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/rotating_file_sink.h>

#include <algorithm>
#include <cstddef>

#include "platform/linux/posix/posix_file_system.h"

namespace varnok {
namespace {

constexpr std::size_t kLargestFile = std::size_t{1} << 20;
constexpr std::size_t kOlderFiles = 2;

}  // namespace

class FileDeveloperLog::Output {
 public:
  // Throws spdlog_ex when the file cannot be opened.
  explicit Output(const std::string& path)
      : logger_("varnok", std::make_shared<spdlog::sinks::rotating_file_sink_st>(path, kLargestFile, kOlderFiles)) {
    logger_.set_pattern("%Y-%m-%d %H:%M:%S.%e %P %v");
    logger_.flush_on(spdlog::level::info);
    logger_.set_error_handler([](const std::string&) {});  // A full disk drops lines.
  }

  void write(std::string_view line) {
    logger_.log(spdlog::level::info, spdlog::string_view_t(line.data(), line.size()));
  }

 private:
  spdlog::logger logger_;
};

FileDeveloperLog::FileDeveloperLog(std::string directory) : directory_(std::move(directory)) {}
FileDeveloperLog::~FileDeveloperLog() = default;

void FileDeveloperLog::write(std::string_view line) {
  std::string clean(line);
  std::replace_if(
      clean.begin(), clean.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }, ' ');
  const std::scoped_lock lock(mutex_);
  try {
    if (!opened_) {
      opened_ = true;
      if (!makeDirectories(directory_).ok()) return;
      output_ = std::make_unique<Output>(directory_ + "/varnok.log");
    }
    if (output_) output_->write(clean);
  } catch (const spdlog::spdlog_ex&) {
    output_.reset();
  }
}

}  // namespace varnok
