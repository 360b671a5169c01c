// Paths that come from strangers. Pure text: no file is looked at.

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace varnok {

// The path of a request's URI, percent escapes replaced, without query and
// fragment; begins with "/". Nothing for a URI that has no path, for an escape
// that is none and for a NUL.
std::optional<std::string> decodedPathOfURI(std::string_view uri);

// The host and port of a URI that is a whole "http://" address; else nothing.
std::optional<std::string_view> authorityOfURI(std::string_view uri);

// An absolute path with ".", ".." and empty components resolved, without a slash
// at its end. ".." of the root is the root.
std::string standardizedPath(std::string_view path);

// Whether `path` is `folder` or lies below it; components compare whole. Both
// are standardized.
bool isInsideFolder(std::string_view path, std::string_view folder);

}  // namespace varnok
