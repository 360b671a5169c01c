// Connections to the service, made once for the process and kept: to make one
// costs a tenth of a second.
//
// Threads. Any.

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/linux/eds/eds_book.h"
#include "platform/linux/eds/eds_calls.h"

namespace varnok {

struct EdsConnection {
  std::shared_ptr<EBookClient> client;
  EdsSource source;
};

// The address book `uid`, or of that name where one alone has it; the system's
// when `uid` is empty. Null with a Status.
std::shared_ptr<EdsConnection> connectEds(const std::string& uid, Status& status);

// Forgets a connection that does not serve any more; the next one is new.
void dropEds(const std::shared_ptr<EdsConnection>& connection);

std::vector<EdsSource> listEds(Status& status);

}  // namespace varnok
