// Uploads and downloads of the Dropbox service, and listings. Blocking; any
// thread but the main one. Memory does not grow with the files.

#pragma once

#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "platform/dropbox_client.h"
#include "platform/linux/curl/dropbox_service.h"

namespace varnok {

// What fits into one call. Larger files go in pieces. In bytes.
constexpr std::uint64_t kMostInOneCall = 150U << 20U;
constexpr std::uint64_t kUploadPiece = 16U << 20U;

struct DropboxResult {
  std::optional<DropboxMetadata> metadata;  // On success.
  Status status;
};

// Sends the file with its content hash, so that what arrives damaged is never
// stored in the place of the earlier file.
DropboxResult uploadFile(DropboxService& service, const DropboxUpload& upload, const std::stop_token& stop);

// Writes to a temporary name, compares the content hash, renames. After a broken
// connection it goes on where it was.
DropboxResult downloadFile(DropboxService& service, const DropboxDownload& download, const std::stop_token& stop);

// Nothing with a Status on failure. `path` is "/" for the root.
std::optional<std::vector<DropboxMetadata>> listFolder(DropboxService& service, const std::string& path, Status& status,
                                                       const std::stop_token& stop);

}  // namespace varnok
