// Instant messages in vCards: which service, which user name.

#pragma once

#include <string>
#include <string_view>

#include "import/vcard_line.h"

namespace varnok {

// Whether the line has the shape that our own writer gives an instant message,
// and no other program does:
//
//   X-<service>;TYPE=<HOME|WORK|CELL|MAIN|PAGER>;CHARSET=UTF-8:<user name>
//   item<n>.X-<service>;CHARSET=UTF-8:<user name>
//
// The second comes with a label for its item; without one it is not ours.
enum class OwnMessage { no, typed, labelled };
OwnMessage ownMessageShapeOf(const VCardLine& line);

struct MessageAddress {
  std::string service;   // "Jabber" for xmpp:; the scheme as it stands when not known; may be empty.
  std::string userName;  // May hold any bytes: percent signs are decoded.
};

// "xmpp:ada@example.org", "aim:goim?screenname=ada", or just a user name.
MessageAddress parseMessageAddress(std::string_view address);

}  // namespace varnok
