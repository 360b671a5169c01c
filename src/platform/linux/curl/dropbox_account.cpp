#include "platform/linux/curl/dropbox_account.h"

#include <utility>

#include <boost/json.hpp>

#include "platform/linux/curl/dropbox_json.h"
#include "platform/linux/posix/posix_file_system.h"

namespace varnok {
namespace {

constexpr const char* kLabel = "Varnok: Dropbox";

std::string secretText(const DropboxTokens& tokens) {
  return boost::json::serialize(boost::json::object{{"accessToken", tokens.accessToken},
                                                    {"refreshToken", tokens.refreshToken},
                                                    {"expires", tokens.expires},
                                                    {"account", tokens.accountID}});
}

DropboxTokens tokensOf(const boost::json::value& secret) {
  return {textAt(secret, "accessToken"), textAt(secret, "refreshToken"), numberAt(secret, "expires"),
          textAt(secret, "account")};
}

Status notLinked() {
  return {Status::Code::unavailable, "No Dropbox account is linked"};
}

}  // namespace

DropboxAccount::DropboxAccount(std::string path, std::unique_ptr<Keyring> keyring, DeveloperLog& log)
    : path_(std::move(path)), keyring_(std::move(keyring)), log_(log) {
  Status status;
  const auto content = PosixFileSystem().readFile(path_, status);
  if (!content) {
    if (status.code() != Status::Code::notFound) log_.write("Dropbox account: " + status.message());
    return;
  }
  const boost::json::value note = parsedJson(*content);
  inKeyring_ = flagAt(note, "keyring");
  accountID_ = textAt(note, "account");
  if (!inKeyring_) tokens_ = tokensOf(note);
  linked_ = inKeyring_ || !tokens_->refreshToken.empty();
  if (!linked_) log_.write("Dropbox account: " + path_ + " does not hold one");
}

bool DropboxAccount::isLinked() const {
  const std::scoped_lock lock(mutex_);
  return linked_;
}

std::string DropboxAccount::accountID() const {
  const std::scoped_lock lock(mutex_);
  return accountID_;
}

bool DropboxAccount::isInKeyring() const {
  const std::scoped_lock lock(mutex_);
  return inKeyring_;
}

std::optional<DropboxTokens> DropboxAccount::tokens(Status& status) {
  {
    const std::scoped_lock lock(mutex_);
    status = linked_ ? Status() : notLinked();
    if (!linked_ || tokens_) return tokens_;
  }
  // Not under the lock, since the user may have to unlock the keyring.
  const auto secret = keyring_ == nullptr ? std::nullopt : keyring_->load(status);
  const DropboxTokens found = secret ? tokensOf(parsedJson(*secret)) : DropboxTokens();
  const std::scoped_lock lock(mutex_);
  if (!linked_) status = notLinked();
  if (!status.ok()) return std::nullopt;
  if (found.refreshToken.empty()) {
    status = {Status::Code::unavailable, "The keyring does not hold the Dropbox account; link it again"};
    return std::nullopt;
  }
  tokens_ = found;
  return tokens_;
}

Status DropboxAccount::link(const DropboxTokens& tokens) {
  return store(tokens);
}

void DropboxAccount::refresh(const DropboxTokens& tokens) {
  {
    const std::scoped_lock lock(mutex_);
    if (!linked_) return;
    tokens_ = tokens;
  }
  if (!PosixFileSystem().attributes(path_)) return;
  if (const Status status = store(tokens); !status.ok()) log_.write("Dropbox account: " + status.message());
}

Status DropboxAccount::store(const DropboxTokens& tokens) {
  const std::string secret = secretText(tokens);
  bool inKeyring = false;
  if (keyring_ != nullptr) {
    const Status status = keyring_->store(kLabel, secret);
    inKeyring = status.ok();
    if (!inKeyring) log_.write("the tokens go to a file of the user's alone: " + status.message());
  }
  const boost::json::object note{{"keyring", true}, {"account", tokens.accountID}};
  Status status = writeFile(inKeyring ? boost::json::serialize(note) : secret);
  const std::scoped_lock lock(mutex_);
  if (!status.ok()) return status;
  linked_ = true;
  inKeyring_ = inKeyring;
  accountID_ = tokens.accountID;
  tokens_ = tokens;
  return {};
}

Status DropboxAccount::writeFile(const std::string& content) {
  Status status;
  const auto file = PosixFileSystem().createAtomic(path_, status);
  if (file == nullptr) return status;
  if (status = file->append(content + "\n"); !status.ok()) return status;
  return file->commit();
}

Status DropboxAccount::unlink(std::optional<DropboxTokens>& known) {
  Status status = PosixFileSystem().remove(path_);
  if (!status.ok() && status.code() != Status::Code::notFound) return status;
  const std::scoped_lock lock(mutex_);
  linked_ = false;
  accountID_.clear();
  known = std::exchange(tokens_, std::nullopt);
  return {};
}

std::optional<DropboxTokens> DropboxAccount::clearKeyring() {
  if (!isInKeyring() || keyring_ == nullptr) return std::nullopt;
  Status status;
  const auto secret = keyring_->load(status);
  if (status.ok()) status = keyring_->clear();
  if (!status.ok()) log_.write(status.message());
  return secret ? std::optional(tokensOf(parsedJson(*secret))) : std::nullopt;
}

}  // namespace varnok
