// DropboxService: calls of the Dropbox HTTP API, version 2.
//
// A call that fails for the moment is made again: after a broken connection, on
// 429 and on 5xx, with the pause that the service asks for or growing ones of
// our own. An access token that has expired is refreshed once a call.
//
// Threads. Any but the main one; calls block. A stop token ends a call and its
// pauses.

#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <stop_token>
#include <string>

#include <boost/json/value.hpp>

#include "platform/clock.h"
#include "platform/developer_log.h"
#include "platform/linux/curl/curl_connection.h"
#include "platform/linux/curl/dropbox_account.h"
#include "platform/linux/curl/dropbox_sign_in.h"
#include "platform/status.h"

namespace varnok {

// Where the service is.
struct DropboxAddresses {
  std::string page = "https://www.dropbox.com/oauth2/authorize";
  std::string api = "https://api.dropboxapi.com";
  std::string content = "https://content.dropboxapi.com";
  std::string caFile = {};     // Empty: the system's.
  bool onThisMachine = false;  // Plain http is accepted, proxies are passed by.
};

// All of the service at one address, for tests; an empty `base` means the real
// one. Plain http is accepted for this machine's own addresses only.
DropboxAddresses dropboxAddresses(const std::string& base, const std::string& caFile, Status& status);

// How often a call is made that fails for the moment.
class DropboxTries {
 public:
  static constexpr int kMost = 5;

  // Something has been achieved: the next failure is the first again.
  void restart() { made_ = 0; }
  bool another() { return ++made_ < kMost; }
  int made() const { return made_; }

 private:
  int made_ = 0;
};

struct DropboxAnswer {
  Status status;
  HttpResponse response;
  boost::json::value json;  // Of the body; null when it is not JSON.
};

class DropboxService {
 public:
  struct Settings {
    DropboxAddresses addresses;
    std::string appKey;
    // Before a call is made again where the service asks for no pause; doubled
    // each time.
    std::chrono::milliseconds firstPause{500};
  };

  DropboxService(Settings settings, DropboxAccount& account, const Clock& clock)
      : settings_(std::move(settings)), account_(account), clock_(clock) {}

  const Settings& settings() const { return settings_; }
  DropboxAccount& account() { return account_; }
  CurlConnection makeConnection() const;

  // Makes the request that `request` gives, for each try anew, in the name of
  // the linked account.
  DropboxAnswer call(CurlConnection& connection, const std::function<HttpRequest()>& request,
                     const std::stop_token& stop, DropboxTries& tries);
  DropboxAnswer call(CurlConnection& connection, const std::function<HttpRequest()>& request,
                     const std::stop_token& stop);

  // One of the calls whose argument and answer are JSON: "files/list_folder".
  DropboxAnswer callJson(CurlConnection& connection, const std::string& name, const boost::json::value& argument,
                         const std::stop_token& stop);

  // A request with its bytes in the body, or in the answer: "files/upload".
  HttpRequest contentRequest(const std::string& name, const boost::json::value& argument) const;

  // Turns the code of a redirect into an account.
  Status link(const std::string& code, const std::string& verifier, const std::stop_token& stop);

  // Tells the service that an account was unlinked here. Its failure changes
  // nothing.
  void revoke(DropboxTokens tokens, const std::stop_token& stop);

 private:
  using Fields = std::vector<std::pair<std::string, std::string>>;

  DropboxAnswer callOnce(CurlConnection& connection, HttpRequest request, const std::stop_token& stop,
                         std::string& usedToken);
  // Waits, where the failure is for the moment and the call is worth making
  // again. Otherwise the answer's status is the outcome.
  bool pausedForAnother(DropboxAnswer& answer, DropboxTries& tries, const std::stop_token& stop) const;
  // Fills in what the service gives. Afterwards there is no refresh token where
  // the user has taken the permission back.
  Status askForTokens(const Fields& fields, DropboxTokens& tokens, const std::stop_token& stop);
  Fields refreshFields(const DropboxTokens& tokens) const;
  // A token that is fresh, or fresher than `usedToken`, which was refused.
  Status refreshTokens(const std::string& usedToken, const std::stop_token& stop);

  const Settings settings_;
  DropboxAccount& account_;
  const Clock& clock_;
  std::mutex refreshing_;  // One at a time; the others take over what it brought.
};

}  // namespace varnok
