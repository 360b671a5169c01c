#pragma once

#include "platform/dropbox_client.h"

namespace varnok {

// For a program that has no way to the service: nobody is ever linked, no URL
// is a redirect, everything else answers at once that it failed.
class NoDropboxClient : public DropboxClient {
 public:
  void setupWithAppKey(const std::string& /*appKey*/) override {}
  void migrateTokens(const std::string& /*appKey*/, const std::string& /*appSecret*/,
                     std::function<void(const DropboxMigrationResult&)> finished) override {
    finished({.shouldRetry = true, .invalidAppKeyOrSecret = false, .unmigrated = {}});
  }
  bool hasAuthorizedClient() const override { return false; }
  void authorize(const std::function<void(const std::string& url)>& /*openURL*/) override {}
  bool handleRedirectURL(const std::string& /*url*/,
                         std::function<void(const DropboxRedirectResult&)> /*finished*/) override {
    return false;
  }
  Status unlinkClients() override { return {}; }
  void listFolder(const std::string& /*path*/, DropboxListing response) override {
    response(std::nullopt, notLinked());
  }
  std::shared_ptr<DropboxTransfer> upload(DropboxUpload upload) override {
    upload.response(std::nullopt, notLinked());
    return std::make_shared<NoTransfer>();
  }
  std::shared_ptr<DropboxTransfer> download(DropboxDownload download) override {
    download.response(std::nullopt, notLinked());
    return std::make_shared<NoTransfer>();
  }

 private:
  class NoTransfer : public DropboxTransfer {
   public:
    void cancel() override {}
  };
  static Status notLinked() { return {Status::Code::unavailable, "no account is linked"}; }
};

}  // namespace varnok
