// CurlDropboxClient: the Dropbox account over the service's HTTP API.
//
// Each operation runs on the global queue and answers on the main thread.
// Destroying the client ends what is under way, of which nothing is heard any
// more; files on their way go.

#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "platform/clock.h"
#include "platform/developer_log.h"
#include "platform/dropbox_client.h"
#include "platform/task_runner.h"

namespace varnok {

class CurlDropboxClient : public DropboxClient {
 public:
  struct Settings {
    std::string accountFile;                    // Where the account is kept.
    bool useKeyring = true;                     // For its tokens, where there is one.
    std::string api = {};                       // All of the service at one address; empty: the real one.
    std::string caFile = {};                    // Certificates to trust; empty: the system's.
    std::chrono::milliseconds firstPause{500};  // Before a call is made again.
  };

  // The references outlive the client and its tasks.
  CurlDropboxClient(const Settings& settings, TaskRunner& tasks, const Clock& clock, DeveloperLog& log);
  CurlDropboxClient(const CurlDropboxClient&) = delete;
  CurlDropboxClient& operator=(const CurlDropboxClient&) = delete;
  ~CurlDropboxClient() override;

  // Why nothing can be done at all: the settings make no sense.
  const Status& problem() const;

  // Of the service's choice, for a person who asks which account it is; empty
  // where none is linked.
  std::string accountID() const;
  // Whether the tokens are in the keyring rather than in the file.
  bool isInKeyring() const;

  void setupWithAppKey(const std::string& appKey) override;
  // This platform never had the older interface: there is nothing to move.
  void migrateTokens(const std::string& appKey, const std::string& appSecret,
                     std::function<void(const DropboxMigrationResult&)> finished) override;
  bool hasAuthorizedClient() const override;
  void authorize(const std::function<void(const std::string& url)>& openURL) override;
  bool handleRedirectURL(const std::string& url, std::function<void(const DropboxRedirectResult&)> finished) override;
  Status unlinkClients() override;
  void listFolder(const std::string& path, DropboxListing response) override;
  std::shared_ptr<DropboxTransfer> upload(DropboxUpload upload) override;
  std::shared_ptr<DropboxTransfer> download(DropboxDownload download) override;

 private:
  struct State;
  std::shared_ptr<State> state_;  // Shared with the tasks.
};

}  // namespace varnok
