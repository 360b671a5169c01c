// DropboxAccount: the tokens of the linked account, kept across runs.
//
// Where the desktop has a keyring that answers, the tokens are in it and the
// file only says so; otherwise they are in the file, whose mode is 0600. Whether
// an account is linked is known from the file alone.
//
// Threads. Any; but tokens() and store() may wait for the keyring.

#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "platform/developer_log.h"
#include "platform/linux/tokens/keyring.h"
#include "platform/status.h"

namespace varnok {

struct DropboxTokens {
  static constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max();

  std::string accessToken;
  std::string refreshToken;
  std::int64_t expires = 0;  // Of the access token. Seconds since 1970.
  std::string accountID;     // Not a secret.
};

class DropboxAccount {
 public:
  // `keyring` may be null. A file that cannot be read counts as no account.
  DropboxAccount(std::string path, std::unique_ptr<Keyring> keyring, DeveloperLog& log);

  bool isLinked() const;

  // Empty where none is linked or the service named none.
  std::string accountID() const;
  bool isInKeyring() const;

  // Nothing, with the reason, when no account is linked or the keyring does not
  // give the tokens.
  std::optional<DropboxTokens> tokens(Status& status);

  // Links the account, in the place of an earlier one.
  Status link(const DropboxTokens& tokens);

  // From now on uses these, which it also keeps unless the account has been
  // unlinked since, by another process too. That they cannot be kept goes to the
  // log: it costs another refreshing.
  void refresh(const DropboxTokens& tokens);

  // After a failure the account is still linked. Does not wait for the keyring,
  // which is left to clearKeyring(). `known` gets the tokens if they are at hand.
  Status unlink(std::optional<DropboxTokens>& known);

  // Answers what the keyring held, if anything.
  std::optional<DropboxTokens> clearKeyring();

 private:
  Status store(const DropboxTokens& tokens);
  Status writeFile(const std::string& content);

  const std::string path_;
  const std::unique_ptr<Keyring> keyring_;
  DeveloperLog& log_;

  mutable std::mutex mutex_;
  bool linked_ = false;
  bool inKeyring_ = false;
  std::string accountID_;
  std::optional<DropboxTokens> tokens_;  // Not yet asked for where the keyring has them.
};

}  // namespace varnok
