// The cutting of an upload's closing boundary, byte by byte: what the fast one
// must do.

#pragma once

#include <cstdint>
#include <string>

namespace varnok {

// From the last offset where `marker` fits back to 1; after a cut one byte more
// than the marker is passed over.
inline std::string cutSlowly(std::string file, const std::string& marker) {
  const auto length = static_cast<std::int64_t>(marker.size());
  int cuts = 0;
  for (auto at = static_cast<std::int64_t>(file.size()) - length; at >= 1 && cuts < 2; --at) {
    if (file.compare(static_cast<std::size_t>(at), marker.size(), marker) != 0) continue;
    file.resize(static_cast<std::size_t>(at));
    at -= length;
    ++cuts;
  }
  return file;
}

}  // namespace varnok
