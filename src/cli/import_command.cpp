#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <boost/json.hpp>
#include <cerrno>
#include <cstring>
#include <vector>

#include "cli/commands.h"
#include "cli/progress_bar.h"
#include "contacts/address_book.h"
#include "import/contact_importer.h"

namespace varnok {
namespace {

constexpr std::size_t kPiece = std::size_t{256} * 1024;  // Bytes read at once.

// An open file, or stdin for "-".
class InputFile {
 public:
  explicit InputFile(const std::string& path)
      : fd_(path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC)), error_(fd_ < 0 ? errno : 0) {}
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile() {
    if (fd_ > STDIN_FILENO) ::close(fd_);
  }

  int error() const { return error_; }

  // Bytes, 0 when that is not known.
  double size() const {
    struct stat info {};
    return fstat(fd_, &info) == 0 && S_ISREG(info.st_mode) ? static_cast<double>(info.st_size) : 0;
  }

  // Bytes read, 0 at the end, negative after a failure.
  ssize_t read(std::vector<char>& buffer) {
    ssize_t count = 0;
    do {
      count = ::read(fd_, buffer.data(), buffer.size());
    } while (count < 0 && errno == EINTR);
    if (count < 0) error_ = errno;
    return count;
  }

 private:
  int fd_;
  int error_;
};

Status cannotRead(const std::string& name, int error) {
  return {Status::Code::inputOutput, name + " cannot be read: " + std::strerror(error)};
}

Status importFile(ContactImporter& importer, const std::string& path, ProgressBar& bar) {
  const std::string name = path == "-" ? "standard input" : path;
  InputFile file(path);
  if (file.error() != 0) return cannotRead(name, file.error());
  importer.beginFile(name);
  std::vector<char> buffer(kPiece);
  const double size = file.size();
  double done = 0;
  for (ssize_t count = file.read(buffer); count != 0; count = file.read(buffer)) {
    if (count < 0) return cannotRead(name, file.error());
    if (Status status = importer.feed({buffer.data(), static_cast<std::size_t>(count)}); !status.ok()) return status;
    done += static_cast<double>(count);
    bar.show(size > 0 ? done / size : 0, name);
  }
  return importer.endFile();
}

}  // namespace

// All files or none: a name that was mistyped must not leave half an import.
int importCommand(CommandContext& context, const std::vector<std::string>& files) {
  const Services services = context.platform.services();
  Status status;
  const auto addressBook = ABAddressBookCreateWithOptions(services.contacts, &status);
  if (addressBook == nullptr) return context.report.failure(status);
  ContactImporter importer(*addressBook, services.codec, services.clock);
  {
    ProgressBar bar(context.report.quiet);
    for (const std::string& file : files) {
      status = importFile(importer, file, bar);
      if (!status.ok()) break;
    }
  }
  if (status.ok()) status = ABAddressBookSave(addressBook.get());
  if (!status.ok()) return context.report.failure(status.message() + "; nothing was imported");

  const ImportReport& report = importer.report();
  boost::json::array warnings;
  for (const std::string& warning : report.warnings) {
    context.report.notice(warning);
    warnings.emplace_back(jsonText(warning));
  }
  const std::string skipped = report.skipped == 0 ? "" : ", " + std::to_string(report.skipped) + " cards skipped";
  context.report.result({{"imported", report.imported}, {"skipped", report.skipped}, {"warnings", warnings}},
                        std::to_string(report.imported) + " contacts imported" + skipped + "\n");
  return kDone;
}

}  // namespace varnok
