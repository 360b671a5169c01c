#include "web/http/http_static_files.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <ctime>
#include <utility>

#include "web/http/http_file_response.h"
#include "web/http/http_uri.h"

namespace varnok {
namespace {

// Bytes. The pages are a few dozen files of this size at most.
constexpr std::uint64_t kLargestKept = 256 << 10;
constexpr std::size_t kMostKept = 8 << 20;

int openBelow(int root, const char* path) {
  open_how how{};
  how.flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
  how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
  return static_cast<int>(::syscall(SYS_openat2, root, path, &how, sizeof how));
}

// What tells one state of a file from another.
struct FileIdentity {
  dev_t device;
  ino_t inode;
  off_t size;
  std::int64_t modified;
  std::int64_t changed;

  bool operator==(const FileIdentity&) const = default;
};

std::int64_t nanoseconds(const timespec& time) {
  return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

FileIdentity identityOf(const struct stat& state) {
  return {state.st_dev, state.st_ino, state.st_size, nanoseconds(state.st_mtim), nanoseconds(state.st_ctim)};
}

}  // namespace

struct HTTPStaticFiles::KeptFile {
  FileIdentity identity;
  HTTPFields fields;
  std::optional<HTTPValidators> validators;
  std::string bytes;
};

class HTTPStaticFiles::KeptResponse : public HTTPResponse {
 public:
  explicit KeptResponse(std::shared_ptr<const KeptFile> file) : file_(std::move(file)) {}

  HTTPFields httpHeaders() const override { return file_->fields; }
  std::optional<HTTPValidators> validators() const override { return file_->validators; }
  HTTPBody body() override { return std::string_view(file_->bytes); }

 private:
  std::shared_ptr<const KeptFile> file_;
};

HTTPStaticFiles::HTTPStaticFiles(std::string root, std::chrono::seconds settledAfter)
    : root_(std::move(root)),
      settledAfter_(settledAfter),
      rootDescriptor_(::open(root_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)) {}

HTTPStaticFiles::~HTTPStaticFiles() {
  if (rootDescriptor_ >= 0) ::close(rootDescriptor_);
}

// `changed`: seconds of the file system's clock.
bool HTTPStaticFiles::isSettled(std::int64_t changed) const {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME_COARSE, &now);
  return changed + settledAfter_.count() < now.tv_sec;
}

const char* HTTPStaticFiles::relative(const std::string& path) const {
  const char* rest = path.c_str() + (root_ == "/" ? 0 : root_.size());
  return *rest == '/' ? rest + 1 : rest;
}

std::unique_ptr<HTTPResponse> HTTPStaticFiles::keptResponse(const std::string& path) {
  std::shared_ptr<const KeptFile> file;
  {
    const std::scoped_lock lock(mutex_);
    const auto found = kept_.find(path);
    if (found == kept_.end()) return nullptr;
    file = found->second;
  }
  struct stat state {};
  if (::fstatat(rootDescriptor_, relative(path), &state, 0) == 0 && file->identity == identityOf(state)) {
    return std::make_unique<KeptResponse>(std::move(file));
  }
  const std::scoped_lock lock(mutex_);
  if (const auto found = kept_.find(path); found != kept_.end() && found->second == file) {
    keptBytes_ -= file->bytes.size();
    kept_.erase(found);
  }
  return nullptr;
}

// Null when the file is too large, or may be changing.
std::shared_ptr<const HTTPStaticFiles::KeptFile> HTTPStaticFiles::keep(const std::string& path, const HTTPFile& file) {
  struct stat state {};
  if (file.length() > kLargestKept || ::fstat(file.descriptor(), &state) != 0 || !isSettled(state.st_ctim.tv_sec))
    return nullptr;
  auto kept = std::make_shared<KeptFile>();
  kept->identity = identityOf(state);
  kept->fields = fieldsForPath(path);
  kept->validators = validatorsForPath(path, file);
  kept->bytes.resize(file.length());
  if (!file.read(0, kept->bytes.data(), kept->bytes.size())) return nullptr;
  const std::scoped_lock lock(mutex_);
  if (keptBytes_ + kept->bytes.size() > kMostKept) {
    kept_.clear();
    keptBytes_ = 0;
  }
  if (kept_.emplace(path, kept).second) keptBytes_ += kept->bytes.size();
  return kept;
}

std::unique_ptr<HTTPResponse> HTTPStaticFiles::response(const std::string& path) {
  if (rootDescriptor_ < 0 || !isInsideFolder(path, root_)) return nullptr;
  if (auto response = keptResponse(path)) return response;
  HTTPFile file(openBelow(rootDescriptor_, relative(path)));
  if (!file.valid()) return nullptr;
  if (auto newlyKept = keep(path, file)) return std::make_unique<KeptResponse>(std::move(newlyKept));
  return std::make_unique<HTTPFileResponse>(std::move(file), path);
}

}  // namespace varnok
