#include "platform/linux/curl/dropbox_sign_in.h"

#include <array>
#include <cctype>
#include <random>

#include <fmt/format.h>

#include "platform/linux/curl/content_hash.h"

namespace varnok {
namespace {

std::string randomBytes(std::size_t count) {
  std::random_device source;
  std::string bytes;
  while (bytes.size() < count)
    bytes += static_cast<char>(source() & 0xFFU);
  return bytes;
}

std::string percentEncoded(std::string_view text) {
  std::string encoded;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    const bool plain = std::isalnum(byte) != 0 || c == '-' || c == '.' || c == '_' || c == '~';
    encoded += plain ? std::string(1, c) : fmt::format("%{:02X}", byte);
  }
  return encoded;
}

int digitOf(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

// A "%" that no two digits follow stays as it is.
std::string formDecoded(std::string_view text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool whole = text[i] == '%' && i + 2 < text.size();
    const int high = whole ? digitOf(text[i + 1]) : -1;
    const int low = whole ? digitOf(text[i + 2]) : -1;
    if (high >= 0 && low >= 0) {
      decoded += static_cast<char>(high * 16 + low);
      i += 2;
    } else {
      decoded += text[i] == '+' ? ' ' : text[i];
    }
  }
  return decoded;
}

std::string lowerCased(std::string_view text) {
  std::string lower(text);
  for (char& c : lower)
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return lower;
}

struct Field {
  std::string_view name;
  std::string DropboxRedirect::*value;
};
constexpr std::array kFields{
    Field{"code", &DropboxRedirect::code},
    Field{"state", &DropboxRedirect::state},
    Field{"error", &DropboxRedirect::error},
    Field{"error_description", &DropboxRedirect::errorDescription},
};

void takeField(std::string_view pair, DropboxRedirect& redirect) {
  const std::size_t equals = std::min(pair.find('='), pair.size());
  for (const Field& field : kFields) {
    if (pair.substr(0, equals) == field.name) {
      redirect.*field.value = formDecoded(pair.substr(std::min(equals + 1, pair.size())));
    }
  }
}

}  // namespace

std::string redirectAddress(const std::string& appKey) {
  return "db-" + appKey + "://2/token";
}

DropboxSignIn beginSignIn(const std::string& appKey, const std::string& page) {
  DropboxSignIn signIn;
  signIn.verifier = base64URL(randomBytes(48));
  signIn.state = base64URL(randomBytes(16));
  signIn.url = page + "?" +
               formEncoded({{"client_id", appKey},
                            {"response_type", "code"},
                            {"code_challenge", base64URL(sha256(signIn.verifier))},
                            {"code_challenge_method", "S256"},
                            {"token_access_type", "offline"},
                            {"redirect_uri", redirectAddress(appKey)},
                            {"state", signIn.state}});
  return signIn;
}

std::optional<DropboxRedirect> parseRedirect(std::string_view url, const std::string& appKey) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const std::size_t first = std::min(url.find_first_not_of(kBlanks), url.size());
  url = url.substr(first, url.find_last_not_of(kBlanks) + 1 - first);
  const std::string scheme = "db-" + appKey + "://";
  if (lowerCased(url.substr(0, scheme.size())) != lowerCased(scheme)) return std::nullopt;
  DropboxRedirect redirect;
  url = url.substr(0, url.find('#'));
  const std::size_t question = url.find('?');
  std::string_view query = question == std::string_view::npos ? std::string_view() : url.substr(question + 1);
  while (!query.empty()) {
    const std::size_t end = std::min(query.find('&'), query.size());
    takeField(query.substr(0, end), redirect);
    query.remove_prefix(std::min(end + 1, query.size()));
  }
  return redirect;
}

std::string formEncoded(const std::vector<std::pair<std::string, std::string>>& fields) {
  std::string form;
  for (const auto& [name, value] : fields)
    form += (form.empty() ? "" : "&") + name + "=" + percentEncoded(value);
  return form;
}

}  // namespace varnok
