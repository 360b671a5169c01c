#include <algorithm>
#include <memory>

#include <boost/json.hpp>

#include <fmt/format.h>

#include "platform/linux/curl/content_hash.h"
#include "platform/linux/curl/dropbox_json.h"
#include "platform/linux/curl/dropbox_metadata.h"
#include "platform/linux/curl/dropbox_transfers.h"
#include "platform/linux/posix/posix_file_system.h"

namespace varnok {
namespace {

// Of a listing; a page has some 500 entries. Nobody has more in one folder.
constexpr int kMostPages = 10'000;

class Download {
 public:
  Download(DropboxService& service, const DropboxDownload& download, const std::stop_token& stop)
      : service_(service), download_(download), stop_(stop), connection_(service.makeConnection()) {}

  // What arrived damaged is asked for once more.
  DropboxResult run() {
    DropboxResult result = fetch();
    if (result.status.code() != Status::Code::corrupt) return result;
    part_.reset();
    return fetch();
  }

 private:
  DropboxResult fetch() {
    fileStatus_ = {};
    const DropboxAnswer answer = service_.call(
        connection_, [this] { return request(); }, stop_, tries_);
    if (!fileStatus_.ok()) return {std::nullopt, fileStatus_};
    if (!answer.status.ok()) return {std::nullopt, answer.status};
    if (part_ == nullptr && !begin(answer.response.head)) return {std::nullopt, fileStatus_};  // It is empty.
    if (hash_->finish() != expectedHash_) {
      return {std::nullopt, {Status::Code::corrupt, "What came is not what Dropbox has; nothing was kept"}};
    }
    // Cancelled while the last bytes came: the earlier file stays.
    if (stop_.stop_requested()) return {std::nullopt, {Status::Code::cancelled, "The transfer was cancelled"}};
    if (Status status = part_->commit(); !status.ok()) return {std::nullopt, status};
    if (download_.progress) download_.progress(received_, received_);
    return {metadata_, {}};
  }

  HttpRequest request() {
    HttpRequest request = service_.contentRequest("files/download", boost::json::object{{"path", download_.path}});
    // All of it may be here, with the connection broken only at the end.
    if (part_ != nullptr && received_ >= metadata_.size) part_.reset();
    if (part_ != nullptr) request.headers.push_back(fmt::format("Range: bytes={}-", received_));
    atStart_ = true;
    request.sink = [this](const HttpHead& head, std::string_view bytes) { return take(head, bytes); };
    return request;
  }

  bool take(const HttpHead& head, std::string_view bytes) {
    if (atStart_ && !continues(head) && !begin(head)) return false;
    atStart_ = false;
    if (fileStatus_ = part_->append(bytes); !fileStatus_.ok()) return false;
    hash_->update(bytes);
    received_ += bytes.size();
    tries_.restart();
    report();
    return true;
  }

  // Whether the answer is the rest of what has come so far.
  bool continues(const HttpHead& head) const {
    if (part_ == nullptr || head.status != 206) return false;
    const auto json = parsedJson(head.header("dropbox-api-result"));
    return textAt(json, "content_hash") == expectedHash_ &&
           head.header("content-range").starts_with(fmt::format("bytes {}-", received_));
  }

  // The file from its first byte on.
  bool begin(const HttpHead& head) {
    if (head.status == 206) {
      fileStatus_ = {Status::Code::corrupt, "The file changed on Dropbox while it came"};
      return false;
    }
    const auto json = parsedJson(head.header("dropbox-api-result"));
    metadata_ = metadataOf(json);
    metadata_.contentType = head.header("content-type");
    expectedHash_ = textAt(json, "content_hash");
    if (expectedHash_.empty()) {
      fileStatus_ = {Status::Code::inputOutput, "Dropbox does not say what it sends"};
      return false;
    }
    received_ = 0;
    hash_ = std::make_unique<ContentHash>();
    fileStatus_ = makeDirectories(download_.file.substr(0, download_.file.rfind('/')));
    if (fileStatus_.ok()) part_ = PosixFileSystem().createAtomic(download_.file, fileStatus_);
    return fileStatus_.ok();
  }

  void report() {
    if (received_ < reported_ || received_ >= metadata_.size || !download_.progress) return;
    reported_ = received_;
    download_.progress(received_, metadata_.size);
  }

  DropboxService& service_;
  const DropboxDownload& download_;
  const std::stop_token& stop_;
  CurlConnection connection_;
  DropboxTries tries_;
  std::unique_ptr<AtomicFile> part_;  // Null before the first byte.
  std::unique_ptr<ContentHash> hash_;
  std::string expectedHash_;
  DropboxMetadata metadata_;
  Status fileStatus_;  // The failure that made the sink refuse.
  std::uint64_t received_ = 0;
  std::uint64_t reported_ = 0;
  bool atStart_ = false;  // Of an answer.
};

}  // namespace

DropboxResult downloadFile(DropboxService& service, const DropboxDownload& download, const std::stop_token& stop) {
  return Download(service, download, stop).run();
}

std::optional<std::vector<DropboxMetadata>> listFolder(DropboxService& service, const std::string& path, Status& status,
                                                       const std::stop_token& stop) {
  CurlConnection connection = service.makeConnection();
  // The service knows its root by the empty path.
  DropboxAnswer answer =
      service.callJson(connection, "files/list_folder", boost::json::object{{"path", path == "/" ? "" : path}}, stop);
  std::vector<DropboxMetadata> entries;
  for (int page = 1; page <= kMostPages; ++page) {
    status = answer.status;
    if (!status.ok()) return std::nullopt;
    const boost::json::value listed = memberAt(answer.json, "entries");
    if (const auto* array = listed.if_array()) {
      for (const boost::json::value& entry : *array)
        entries.push_back(metadataOf(entry));
    }
    if (!flagAt(answer.json, "has_more")) return entries;
    answer = service.callJson(connection, "files/list_folder/continue",
                              boost::json::object{{"cursor", textAt(answer.json, "cursor")}}, stop);
  }
  status = {Status::Code::corrupt, "Dropbox does not end its listing"};
  return std::nullopt;
}

}  // namespace varnok
