#include "backup/dropbox/dropbox_session.h"

#include <fmt/format.h>

#include "app/preferences/preference_keys.h"

namespace varnok {
namespace {

constexpr const char* kAppKey = "r4wzt8kq1hyd0mv";
constexpr const char* kAppSecret = "xb7fne2pou5ja9c";

// Of an empty file only the end is told.
double fraction(std::uint64_t done, std::uint64_t expected) {
  if (expected == 0) return 1.0;
  return static_cast<double>(done) / static_cast<double>(expected);
}

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

void DropboxSession::showDropboxLinkScreen(ScreenPresenter& presenter) {
  if (isLinked()) return;
  client_.authorize([&presenter](const std::string& url) { presenter.openURL(url); });
}

void DropboxSession::unLink() {
  if (const Status status = client_.unlinkClients(); !status.ok()) log_.write("unlink: " + status.message());
}

std::shared_ptr<DropboxTransfer> DropboxSession::uploadFile(const std::string& localPath, const std::string& fileName) {
  const std::string path = "/" + fileName;
  DropboxUpload upload{localPath, path};
  upload.progress = [this, fileName, path](std::uint64_t done, std::uint64_t expected) {
    progressUploadFile(fraction(done, expected), fileName, path);
  };
  upload.response = [this, localPath, fileName, path](const auto& metadata, const Status& status) {
    uploadQueue_.erase(localPath);
    uploadQueue_.erase(fileName);
    if (!metadata) log_.write("upload: " + status.message());
    if (theDelegate_ == nullptr) return;
    if (metadata) {
      theDelegate_->finishUploadFile(fileName, path, *metadata);
    } else {
      theDelegate_->finishUploadFileWithError(status.message());
    }
  };
  uploadQueue_[localPath] = "";
  return client_.upload(std::move(upload));
}

std::shared_ptr<DropboxTransfer> DropboxSession::downloadFile(const std::string& path, const std::string& localPath) {
  DropboxDownload download{path, localPath};
  download.progress = [this, path](std::uint64_t done, std::uint64_t expected) {
    progressDownloadFile(fraction(done, expected), path);
  };
  download.response = [this, path](const auto& metadata, const Status& status) {
    downloadQueue_.erase(path);
    if (!metadata) log_.write("download: " + status.message());
    if (theDelegate_ == nullptr) return;
    if (metadata) {
      theDelegate_->finishDownloadFile(path, metadata->contentType, *metadata);
    } else {
      theDelegate_->finishDownloadFileWithError(path, status.message());
    }
  };
  downloadQueue_[path] = "";
  return client_.download(std::move(download));
}

void DropboxSession::loadMetadata(const std::string& path) {
  client_.listFolder(path, [this, path](const auto& entries, const Status& status) {
    if (!entries) log_.write("list folder: " + status.message());
    if (theDelegate_ == nullptr) return;
    if (entries) {
      theDelegate_->finishLoadedMetadata(path, *entries);
    } else {
      theDelegate_->finishLoadedMetadataWithError(path, status.message());
    }
  });
}

void DropboxSession::progressUploadFile(double progress, const std::string& file, const std::string& source) {
  uploadQueue_[file] = fmt::format("{:f}", progress);
  if (theDelegate_ != nullptr) theDelegate_->progressUploadFile(progress, file, source);
}

void DropboxSession::progressDownloadFile(double progress, const std::string& file) {
  downloadQueue_[file] = fmt::format("{:f}", progress);
  if (theDelegate_ != nullptr) theDelegate_->progressDownloadFile(progress, file);
}

}  // namespace varnok
