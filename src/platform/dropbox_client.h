// DropboxClient: the user's Dropbox account. Main thread; callbacks arrive there.
//
// Lifetime. It outlives every screen. What is under way when it is destroyed is
// given up; its callbacks never come.

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/status.h"
#include "platform/value.h"

namespace varnok {

// What the service says of a stored file or folder.
struct DropboxMetadata {
  std::string name;  // Any characters: a stranger may have named it.
  std::string pathDisplay;
  bool isFolder = false;
  std::uint64_t size = 0;   // Bytes; of a file.
  Instant modified{};       // Of a file.
  std::string contentType;  // Of a download.
};

// A token of the older interface that could not be moved.
struct DropboxTokenNotMigrated {
  std::string userID;
  std::string accessToken;
  std::string accessTokenSecret;
  std::string storedAppKey;
};

struct DropboxMigrationResult {
  bool shouldRetry = false;
  bool invalidAppKeyOrSecret = false;
  std::vector<DropboxTokenNotMigrated> unmigrated;
};

struct DropboxRedirectResult {
  enum class Outcome { success, cancelled, error };
  Outcome outcome = Outcome::error;
  std::string description;  // Of an error, for the log; it holds no secret.
};

// Bytes so far and bytes in all. Never goes back; both are equal only once the
// transfer has succeeded, right before its response.
using DropboxProgress = std::function<void(std::uint64_t done, std::uint64_t expected)>;

// Metadata on success, else nothing and why: cancelled after cancel(), noSpace
// when the account or the disk is full, unavailable when no account is linked
// or the service does not answer, notFound, inputOutput.
using DropboxResponse = std::function<void(const std::optional<DropboxMetadata>&, const Status&)>;

struct DropboxUpload {
  std::string file;  // On this machine. Read piece by piece while it is sent.
  std::string path;  // Within the account, such as "/a.vcf". An existing file is overwritten.
  DropboxProgress progress = {};
  DropboxResponse response = {};
};

struct DropboxDownload {
  std::string path;
  // On this machine; its directory is made where it is missing. It appears, or
  // replaces an earlier file, only when it is whole and what the service has.
  std::string file;
  DropboxProgress progress = {};
  DropboxResponse response = {};
};

// The entries of a folder in the service's order, or nothing and why.
using DropboxListing = std::function<void(const std::optional<std::vector<DropboxMetadata>>&, const Status&)>;

// One upload or download. Letting go of it changes nothing.
class DropboxTransfer {
 public:
  virtual ~DropboxTransfer() = default;

  // The response follows, as always; with `cancelled` unless the transfer has
  // already ended.
  virtual void cancel() = 0;
};

class DropboxClient {
 public:
  virtual ~DropboxClient() = default;

  virtual void setupWithAppKey(const std::string& appKey) = 0;

  // Moves tokens of the older interface; `finished` runs on the main thread.
  virtual void migrateTokens(const std::string& appKey, const std::string& appSecret,
                             std::function<void(const DropboxMigrationResult&)> finished) = 0;

  // False before setupWithAppKey().
  virtual bool hasAuthorizedClient() const = 0;

  // Begins a sign-in: `openURL` is given the page where the user agrees, at
  // once. It goes on with handleRedirectURL(); a later call replaces it.
  virtual void authorize(const std::function<void(const std::string& url)>& openURL) = 0;

  // False when the URL is not a sign-in redirect of this application; then
  // `finished` is never called. Otherwise it is, when the service has answered.
  virtual bool handleRedirectURL(const std::string& url,
                                 std::function<void(const DropboxRedirectResult&)> finished) = 0;

  // Forgets the account, and tells the service so without waiting for it.
  // After a failure it is still linked.
  virtual Status unlinkClients() = 0;

  // `path` is "/" for the root.
  virtual void listFolder(const std::string& path, DropboxListing response) = 0;

  virtual std::shared_ptr<DropboxTransfer> upload(DropboxUpload upload) = 0;
  virtual std::shared_ptr<DropboxTransfer> download(DropboxDownload download) = 0;
};

}  // namespace varnok
