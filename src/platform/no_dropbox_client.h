#pragma once

#include "platform/dropbox_client.h"

namespace varnok {

// For a program that has no way to the service: nobody is ever linked, no URL
// is a redirect, an upload answers at once that it failed.
class NoDropboxClient : public DropboxClient {
 public:
  void setupWithAppKey(const std::string& /*appKey*/) override {}
  void migrateTokens(const std::string& /*appKey*/, const std::string& /*appSecret*/,
                     std::function<void(const DropboxMigrationResult&)> finished) override {
    finished({.shouldRetry = true, .invalidAppKeyOrSecret = false, .unmigrated = {}});
  }
  bool hasAuthorizedClient() const override { return false; }
  std::optional<DropboxRedirectResult> handleRedirectURL(const std::string& /*url*/) override { return std::nullopt; }
  void upload(DropboxUpload upload) override { upload.response(std::nullopt, "no account is linked"); }
};

}  // namespace varnok
