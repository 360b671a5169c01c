// The sign-in of the Dropbox service: OAuth 2 with a code, a proof key (PKCE,
// S256) and a token that can be refreshed.
//
//   DropboxSignIn signIn = beginSignIn(appKey, page);
//   ...the user opens signIn.url, agrees, and is sent to a db-APPKEY address...
//   DropboxRedirect redirect = *parseRedirect(address, appKey);

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace varnok {

struct DropboxSignIn {
  std::string url;       // Where the user agrees.
  std::string verifier;  // The proof key. Secret.
  std::string state;     // Comes back in the redirect.
};

// Where the service sends the user afterwards: "db-APPKEY://2/token".
std::string redirectAddress(const std::string& appKey);

// `page` is the service's authorization page.
DropboxSignIn beginSignIn(const std::string& appKey, const std::string& page);

// The fields of a redirect; absent ones are empty.
struct DropboxRedirect {
  std::string code;  // Secret.
  std::string state;
  std::string error;
  std::string errorDescription;

  bool operator==(const DropboxRedirect&) const = default;
};

// Nothing when `url` is not an address of this application. Blanks around it,
// as they come with a pasted one, make no difference.
std::optional<DropboxRedirect> parseRedirect(std::string_view url, const std::string& appKey);

// "a=1&b=%20".
std::string formEncoded(const std::vector<std::pair<std::string, std::string>>& fields);

}  // namespace varnok
