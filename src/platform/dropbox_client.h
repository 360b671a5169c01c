// DropboxClient: the user's Dropbox account. Main thread; callbacks arrive there.

#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace varnok {

// What the service says of a stored file.
struct DropboxMetadata {
  std::string name;
  std::string pathDisplay;
  std::uint64_t size = 0;  // Bytes.
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
  std::string description;  // Of an error, for the log.
};

struct DropboxUpload {
  std::string bytes;
  std::string path;  // Within the account, such as "/a.vcf". An existing file is overwritten.
  std::function<void(std::uint64_t written, std::uint64_t expected)> progress;
  // Metadata on success, else nothing and a description of the error.
  std::function<void(std::optional<DropboxMetadata>, const std::string& error)> response;
};

class DropboxClient {
 public:
  virtual ~DropboxClient() = default;

  virtual void setupWithAppKey(const std::string& appKey) = 0;

  // Moves tokens of the older interface; `finished` runs on the main thread.
  virtual void migrateTokens(const std::string& appKey, const std::string& appSecret,
                             std::function<void(const DropboxMigrationResult&)> finished) = 0;

  virtual bool hasAuthorizedClient() const = 0;

  // Nothing when the URL is not a sign-in redirect of this application.
  virtual std::optional<DropboxRedirectResult> handleRedirectURL(const std::string& url) = 0;

  virtual void upload(DropboxUpload upload) = 0;
};

}  // namespace varnok
