#pragma once

#include <string>

namespace varnok {

// Hands a file to another application of the user's choice. Main thread.
class DocumentHandOver {
 public:
  virtual ~DocumentHandOver() = default;

  // Offers the applications that can take the file at `path` (absolute).
  // Nothing comes back: what the user chose is the platform's business, and so
  // is telling that nothing can take it.
  virtual void presentOptionsMenu(const std::string& path) = 0;
};

}  // namespace varnok
