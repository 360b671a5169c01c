#include "import/vcard_message.h"

#include <algorithm>

#include "import/vcard_text.h"

namespace varnok {
namespace {

constexpr std::string_view kCharset = "CHARSET=UTF-8";

struct Scheme {
  std::string_view scheme;
  std::string_view service;
};

constexpr Scheme kSchemes[] = {
    {"aim", "AIM"},          {"facebook", "Facebook"}, {"gg", "GaduGadu"}, {"google-talk", "GoogleTalk"},
    {"gtalk", "GoogleTalk"}, {"icq", "ICQ"},           {"im", ""},         {"jabber", "Jabber"},
    {"msn", "MSN"},          {"msnim", "MSN"},         {"qq", "QQ"},       {"skype", "Skype"},
    {"twitter", "Twitter"},  {"x-apple", ""},          {"xmpp", "Jabber"}, {"yahoo", "Yahoo"},
    {"ymsgr", "Yahoo"},
};

// "ada" of "ada", "//ada", "ada?chat", "sendim?ada" and "goim?screenname=ada".
std::string_view userPart(std::string_view address) {
  if (address.starts_with("//")) address.remove_prefix(2);
  const std::size_t mark = address.find('?');
  if (mark == std::string_view::npos) return address;
  const std::string_view command = address.substr(0, mark);
  std::string_view query = address.substr(mark + 1);
  constexpr std::string_view kCommands[] = {"goim", "sendim", "addfriend", "chat", "add", "message"};
  if (std::ranges::find(kCommands, command) == std::end(kCommands)) return command;
  query = query.substr(0, query.find('&'));
  const std::size_t equals = query.find('=');
  return equals == std::string_view::npos ? query : query.substr(equals + 1);
}

bool isScheme(std::string_view text) {
  const auto isPart = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '+' || c == '-' ||
           c == '.';
  };
  return !text.empty() && std::ranges::all_of(text, isPart);
}

}  // namespace

OwnMessage ownMessageShapeOf(const VCardLine& line) {
  if (!line.name.starts_with("X-")) return OwnMessage::no;
  if (!line.group.empty()) {
    return line.group.starts_with("item") && line.parameters == kCharset ? OwnMessage::labelled : OwnMessage::no;
  }
  constexpr std::string_view kTyped[] = {"TYPE=HOME;CHARSET=UTF-8", "TYPE=WORK;CHARSET=UTF-8",
                                         "TYPE=CELL;CHARSET=UTF-8", "TYPE=MAIN;CHARSET=UTF-8",
                                         "TYPE=PAGER;CHARSET=UTF-8"};
  return std::ranges::find(kTyped, line.parameters) == std::end(kTyped) ? OwnMessage::no : OwnMessage::typed;
}

MessageAddress parseMessageAddress(std::string_view address) {
  const std::size_t colon = address.find(':');
  if (colon == std::string_view::npos || !isScheme(address.substr(0, colon))) return {"", std::string(address)};
  const std::string_view scheme = address.substr(0, colon);
  const auto* known =
      std::ranges::find_if(kSchemes, [&](const Scheme& s) { return equalsIgnoringCase(scheme, s.scheme); });
  return {std::string(known == std::end(kSchemes) ? scheme : known->service),
          decodedPercents(userPart(address.substr(colon + 1)))};
}

}  // namespace varnok
