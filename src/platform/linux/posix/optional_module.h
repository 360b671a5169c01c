// What is loaded only when it is first used, and what can be known before.

#pragma once

#include <string>

namespace varnok {

// The module `name` ("varnok-keyring") of this program: from where it was
// installed to, else from where it was built. It stays loaded. Null when it
// cannot be loaded. Any thread; takes milliseconds.
void* openModule(const std::string& name);

// Whether the user's session, or the system, has a message bus to ask. Asking
// for a session's bus where there is none would start one.
bool hasSessionBus();
bool hasSystemBus();

}  // namespace varnok
