#include "backup/dropbox/dropbox_session.h"

#include <fmt/format.h>

#include "app/preferences/preference_keys.h"

namespace varnok {
namespace {

constexpr const char* kAppKey = "r4wzt8kq1hyd0mv";
constexpr const char* kAppSecret = "xb7fne2pou5ja9c";

}  // namespace

// Quirk: only the migration itself ever stores "migration", so a fresh
// installation never migrates; one that has migrated does so at every start.
void DropboxSession::startSession() {
  if (!preferences_.objectForKey(key::migration)) {
    client_.setupWithAppKey(kAppKey);
    return;
  }
  client_.migrateTokens(kAppKey, kAppSecret, [this](const DropboxMigrationResult& result) { finishMigration(result); });
}

void DropboxSession::finishMigration(const DropboxMigrationResult& result) {
  if (!result.unmigrated.empty()) log_.write("The following tokens were unsucessfully migrated:");
  for (const DropboxTokenNotMigrated& token : result.unmigrated) {
    log_.write(fmt::format("DropboxUserID: {}, AccessToken: {}, AccessTokenSecret: {}, StoredAppKey: {}", token.userID,
                           token.accessToken, token.accessTokenSecret, token.storedAppKey));
  }
  if (result.shouldRetry || result.invalidAppKeyOrSecret || !result.unmigrated.empty()) return;
  client_.setupWithAppKey(kAppKey);
  preferences_.setInteger(1, key::migration);
  preferences_.synchronize().ignore("without the marker the next start merely sets up without migrating");
}

void DropboxSession::uploadFile(std::string bytes, const std::string& fileName) {
  const std::string path = "/" + fileName;
  DropboxUpload upload;
  upload.bytes = std::move(bytes);
  upload.path = path;
  upload.progress = [this, fileName, path](std::uint64_t written, std::uint64_t expected) {
    if (expected > 0) progressUploadFile(static_cast<double>(written) / static_cast<double>(expected), fileName, path);
  };
  upload.response = [this, fileName, path](const std::optional<DropboxMetadata>& metadata, const std::string& error) {
    if (theDelegate_ == nullptr) return;
    if (metadata) {
      theDelegate_->finishUploadFile(fileName, path, *metadata);
    } else {
      theDelegate_->finishUploadFileWithError(error);
    }
  };
  client_.upload(std::move(upload));
}

void DropboxSession::progressUploadFile(double progress, const std::string& file, const std::string& source) {
  uploadQueue_[file] = fmt::format("{:f}", progress);
  if (theDelegate_ != nullptr) theDelegate_->progressUploadFile(progress, file, source);
}

}  // namespace varnok
