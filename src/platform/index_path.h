#pragma once

namespace varnok {

// One row of a table. Both count from zero.
struct IndexPath {
  int section = 0;
  int row = 0;

  auto operator<=>(const IndexPath&) const = default;
};

}  // namespace varnok
