// DropboxSession: the application's way to the user's Dropbox, and what every
// running transfer has reached.
//
// Lifetime. One object for the process, made in main; it outlives every screen.
// The delegate is not owned: a screen clears it before it goes.
//
// Threads. Main thread only.

#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/developer_log.h"
#include "platform/dropbox_client.h"
#include "platform/preference_store.h"
#include "platform/screen_presenter.h"

namespace varnok {

// What a screen may want to know of transfers. It implements what it needs.
// `file` is the key of the transfer in its queue: the local name of an upload,
// the path within the account of a download; `source` of an upload is its path
// within the account.
class DropboxSessionDelegate {
 public:
  virtual ~DropboxSessionDelegate() = default;
  virtual void progressDownloadFile(double /*progress*/, const std::string& /*file*/) {}
  virtual void finishDownloadFile(const std::string& /*file*/, const std::string& /*contentType*/,
                                  const DropboxMetadata& /*metadata*/) {}
  virtual void finishDownloadFileWithError(const std::string& /*file*/, const std::string& /*error*/) {}
  virtual void progressUploadFile(double /*progress*/, const std::string& /*file*/, const std::string& /*source*/) {}
  virtual void finishUploadFile(const std::string& /*file*/, const std::string& /*source*/,
                                const DropboxMetadata& /*metadata*/) {}
  virtual void finishUploadFileWithError(const std::string& /*error*/) {}
  virtual void finishLoadedMetadata(const std::string& /*path*/, const std::vector<DropboxMetadata>& /*entries*/) {}
  virtual void finishLoadedMetadataWithError(const std::string& /*path*/, const std::string& /*error*/) {}
};

class DropboxSession {
 public:
  // File name or path to the fraction that has been transferred, such as
  // "0.500000". An entry means that a transfer is under way.
  using Queue = std::map<std::string, std::string>;

  DropboxSession(DropboxClient& client, PreferenceStore& preferences, DeveloperLog& log)
      : client_(client), preferences_(preferences), log_(log) {}

  // Sets the client library up. Called once, at start-up.
  void startSession();

  // Where no account is linked, begins a sign-in: the service's page opens in
  // the user's browser.
  void showDropboxLinkScreen(ScreenPresenter& presenter);

  bool isLinked() const { return client_.hasAuthorizedClient(); }

  // A failure goes to the log, and isLinked() still says so.
  void unLink();

  // Null when no account is linked.
  DropboxClient* restClient() const { return isLinked() ? &client_ : nullptr; }

  Queue& uploadQueue() { return uploadQueue_; }
  Queue& downloadQueue() { return downloadQueue_; }

  void setTheDelegate(DropboxSessionDelegate* delegate) { theDelegate_ = delegate; }
  // For a screen that goes: clears the delegate if it still is `delegate`.
  void clearTheDelegate(const DropboxSessionDelegate* delegate) {
    if (theDelegate_ == delegate) theDelegate_ = nullptr;
  }

  // Uploads the file at `localPath` to the root folder of the account as
  // `fileName`, replacing a file of that name. Progress and outcome go to the
  // delegate; both keys leave the queue at the end.
  std::shared_ptr<DropboxTransfer> uploadFile(const std::string& localPath, const std::string& fileName);

  // Downloads `path`, of the account, to `localPath`, replacing a file there
  // when the new one is whole. Its key in the queue is `path`.
  std::shared_ptr<DropboxTransfer> downloadFile(const std::string& path, const std::string& localPath);

  // Asks for the entries of a folder; "/" is the root.
  void loadMetadata(const std::string& path);

  // Forwarded to the delegate, after the queue has been brought up to date.
  void progressUploadFile(double progress, const std::string& file, const std::string& source);
  void progressDownloadFile(double progress, const std::string& file);

 private:
  void finishMigration(const DropboxMigrationResult& result);

  DropboxClient& client_;
  PreferenceStore& preferences_;
  DeveloperLog& log_;
  Queue uploadQueue_;
  Queue downloadQueue_;
  DropboxSessionDelegate* theDelegate_ = nullptr;
};

}  // namespace varnok
