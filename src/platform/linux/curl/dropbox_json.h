// JSON as the Dropbox service speaks it. What it sends is a stranger's: a member
// that is missing, or of another kind, reads as empty.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <boost/json/value.hpp>

namespace varnok {

// Null when `text` is not JSON.
boost::json::value parsedJson(std::string_view text);

// The member at `path`, such as "error/path/.tag"; null where there is none.
boost::json::value memberAt(const boost::json::value& value, std::string_view path);
std::string textAt(const boost::json::value& value, std::string_view path);
std::int64_t numberAt(const boost::json::value& value, std::string_view path);
bool flagAt(const boost::json::value& value, std::string_view path);

// In ASCII, so that it can stand in a header.
std::string asciiJson(const boost::json::value& value);

}  // namespace varnok
