#pragma once

#include <string>
#include <string_view>

#include <boost/json/value.hpp>

#include "platform/dropbox_client.h"

namespace varnok {

// The metadata of a file or a folder, as the service writes it.
DropboxMetadata metadataOf(const boost::json::value& json);

// "2015-05-12T15:50:38Z"; the beginning of 1970 when it is no such text.
Instant serviceTime(std::string_view text);

}  // namespace varnok
