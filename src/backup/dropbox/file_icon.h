#pragma once

#include <cstdint>
#include <string>

#include "platform/value.h"

namespace varnok {

// One entry of a listed folder.
struct FileIcon {
  std::string label;       // The file's or folder's name. Any characters: a stranger may have given it.
  std::string kind;        // The extension in lower case; "__folder__" of a folder.
  std::uint64_t size = 0;  // Bytes.
  Instant date{};
  bool isDir = false;
  bool isSelected = false;
  std::string image;  // The name of a picture in resources/images/.
  // Of entries that come from a photo service; empty here.
  std::string photo;
  std::string photoId;
  std::string albumId;
  int tag = 0;  // Its row.

  bool operator==(const FileIcon&) const = default;
};

}  // namespace varnok
