// DropboxSession: the application's way to the user's Dropbox, and what every
// running transfer has reached.
//
// Lifetime. One object for the process, made in main; it outlives every screen.
// The delegate is not owned: a screen clears it before it goes.
//
// Threads. Main thread only.

#pragma once

#include <map>
#include <optional>
#include <string>

#include "platform/developer_log.h"
#include "platform/dropbox_client.h"
#include "platform/preference_store.h"

namespace varnok {

// What a screen may want to know of transfers. It implements what it needs.
class DropboxSessionDelegate {
 public:
  virtual ~DropboxSessionDelegate() = default;
  virtual void progressUploadFile(double /*progress*/, const std::string& /*file*/, const std::string& /*source*/) {}
  virtual void finishUploadFile(const std::string& /*file*/, const std::string& /*source*/,
                                const DropboxMetadata& /*metadata*/) {}
  virtual void finishUploadFileWithError(const std::string& /*error*/) {}
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

  bool isLinked() const { return client_.hasAuthorizedClient(); }

  Queue& uploadQueue() { return uploadQueue_; }

  void setTheDelegate(DropboxSessionDelegate* delegate) { theDelegate_ = delegate; }

  // Uploads `bytes` to the root folder of the account as `fileName`, replacing
  // a file of that name. Progress and outcome go to the delegate.
  void uploadFile(std::string bytes, const std::string& fileName);

  // Forwarded to the delegate, after the queue has been brought up to date.
  void progressUploadFile(double progress, const std::string& file, const std::string& source);

 private:
  void finishMigration(const DropboxMigrationResult& result);

  DropboxClient& client_;
  PreferenceStore& preferences_;
  DeveloperLog& log_;
  Queue uploadQueue_;
  DropboxSessionDelegate* theDelegate_ = nullptr;
};

}  // namespace varnok
