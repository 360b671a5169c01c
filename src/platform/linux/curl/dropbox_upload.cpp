#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include <boost/json.hpp>

#include "platform/linux/curl/content_hash.h"
#include "platform/linux/curl/dropbox_json.h"
#include "platform/linux/curl/dropbox_metadata.h"
#include "platform/linux/curl/dropbox_transfers.h"
#include "platform/linux/posix/posix_io.h"

namespace varnok {
namespace {

constexpr std::size_t kReadStep = 1U << 20U;

class Upload {
 public:
  Upload(DropboxService& service, const DropboxUpload& upload, const std::stop_token& stop)
      : service_(service), upload_(upload), stop_(stop), connection_(service.makeConnection()) {}

  DropboxResult run() {
    if (Status status = openFile(); !status.ok()) return {std::nullopt, status};
    DropboxResult result = size_ <= kMostInOneCall ? sendWhole() : sendInPieces();
    if (result.metadata && upload_.progress) upload_.progress(size_, size_);
    return result;
  }

 private:
  Status openFile() {
    file_.reset(::open(upload_.file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat information {};
    if (!file_.valid() || ::fstat(file_.get(), &information) != 0) return statusOfErrno(errno, "read", upload_.file);
    if (!S_ISREG(information.st_mode)) {
      return {Status::Code::invalidArgument, "Cannot upload " + upload_.file + ": it is not a file"};
    }
    size_ = static_cast<std::uint64_t>(information.st_size);
    return {};
  }

  // The digests of the blocks of a piece that begins at one.
  Status digestsOf(const FilePiece& piece, std::string& digests) const {
    ContentHash hash;
    std::string bytes;
    for (std::uint64_t done = 0; done < piece.size; done += bytes.size()) {
      if (stop_.stop_requested()) return {Status::Code::cancelled, "The transfer was cancelled"};
      const auto step = static_cast<std::size_t>(std::min<std::uint64_t>(kReadStep, piece.size - done));
      const int error = readAt(piece.fd, piece.offset + done, step, bytes);
      if (error != 0) return statusOfErrno(error, "read", upload_.file);
      if (bytes.empty()) return {Status::Code::inputOutput, "Cannot read " + upload_.file + ": it became shorter"};
      hash.update(bytes);
    }
    digests = hash.finishBlocks();
    return {};
  }

  boost::json::object commit() const {
    return {{"path", upload_.path}, {"mode", "overwrite"}, {"autorename", false}, {"mute", false}};
  }

  DropboxResult sendWhole() {
    const FilePiece whole{file_.get(), 0, size_};
    if (Status status = digestsOf(whole, digests_); !status.ok()) return {std::nullopt, status};
    boost::json::object argument = commit();
    argument["content_hash"] = hexText(sha256(digests_));
    return resultOf(send("files/upload", argument, whole, /*before=*/0));
  }

  // One call with `piece` in its body, in front of which `before` bytes have
  // been sent.
  DropboxAnswer send(const std::string& name, const boost::json::value& argument, const FilePiece& piece,
                     std::uint64_t before) {
    return service_.call(
        connection_,
        [&] {
          HttpRequest request = service_.contentRequest(name, argument);
          request.file = piece;
          request.sent = [this, before](std::uint64_t sent) { report(before + sent); };
          return request;
        },
        stop_);
  }

  // A piece that is sent again moves nothing back, and what has been sent has
  // not arrived yet.
  void report(std::uint64_t done) {
    if (done < reported_ || done >= size_ || !upload_.progress) return;
    reported_ = done;
    upload_.progress(done, size_);
  }

  DropboxResult sendInPieces() {
    DropboxAnswer answer =
        send("files/upload_session/start", boost::json::object{{"close", false}}, {file_.get(), 0, 0}, /*before=*/0);
    if (!answer.status.ok()) return {std::nullopt, answer.status};
    session_ = textAt(answer.json, "session_id");
    std::uint64_t offset = 0;
    for (; size_ - offset > kUploadPiece; offset += kUploadPiece) {
      if (Status status = append({file_.get(), offset, kUploadPiece}); !status.ok()) return {std::nullopt, status};
    }
    return finish({file_.get(), offset, size_ - offset});
  }

  boost::json::object pieceArgument(const FilePiece& piece, const std::string& digests) const {
    return {{"cursor", boost::json::object{{"session_id", session_}, {"offset", piece.offset}}},
            {"content_hash", hexText(sha256(digests))}};
  }

  Status append(const FilePiece& piece) {
    std::string digests;
    if (Status status = digestsOf(piece, digests); !status.ok()) return status;
    digests_ += digests;
    boost::json::object argument = pieceArgument(piece, digests);
    argument["close"] = false;
    const DropboxAnswer answer = send("files/upload_session/append_v2", argument, piece, piece.offset);
    // The piece had arrived; only the answer to its first sending was lost.
    const std::string tag = textAt(answer.json, "error/.tag");
    const bool arrived =
        tag == "incorrect_offset" &&
        static_cast<std::uint64_t>(numberAt(answer.json, "error/correct_offset")) == piece.offset + piece.size;
    return arrived ? Status() : answer.status;
  }

  DropboxResult finish(const FilePiece& piece) {
    std::string digests;
    if (Status status = digestsOf(piece, digests); !status.ok()) return {std::nullopt, status};
    digests_ += digests;
    boost::json::object argument = pieceArgument(piece, digests);
    argument["commit"] = commit();
    const DropboxAnswer answer = send("files/upload_session/finish", argument, piece, piece.offset);
    if (textAt(answer.json, "error/.tag") != "lookup_failed") return resultOf(answer);
    // The session is gone: it may have been finished by a call whose answer was
    // lost.
    const DropboxAnswer found =
        service_.callJson(connection_, "files/get_metadata", boost::json::object{{"path", upload_.path}}, stop_);
    DropboxResult result = resultOf(found);
    return result.metadata ? result : DropboxResult{std::nullopt, answer.status};
  }

  // Of an answer with the metadata of what has been stored.
  DropboxResult resultOf(const DropboxAnswer& answer) const {
    if (!answer.status.ok()) return {std::nullopt, answer.status};
    if (textAt(answer.json, "content_hash") != hexText(sha256(digests_))) {
      return {std::nullopt, {Status::Code::corrupt, "What Dropbox has is not what was sent"}};
    }
    return {metadataOf(answer.json), {}};
  }

  DropboxService& service_;
  const DropboxUpload& upload_;
  const std::stop_token& stop_;
  CurlConnection connection_;
  FileDescriptor file_;
  std::uint64_t size_ = 0;
  std::uint64_t reported_ = 0;
  std::string digests_;  // Of the blocks so far.
  std::string session_;
};

}  // namespace

DropboxResult uploadFile(DropboxService& service, const DropboxUpload& upload, const std::stop_token& stop) {
  return Upload(service, upload, stop).run();
}

}  // namespace varnok
