#include "backup/files/backup_file.h"

#include <algorithm>

#include <fmt/format.h>

namespace varnok {

std::string backupFileName(const LocalTime& time, std::int32_t contacts, std::string_view fileType) {
  return fmt::format("Varnok-{:04}-{:02}-{:02}-{:02}{:02}{:02}-{}.{}", time.year, time.month, time.day, time.hour,
                     time.minute, time.second, contacts, fileType);
}

std::string_view lastPathComponent(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string_view pathExtension(std::string_view path) {
  const std::string_view name = lastPathComponent(path);
  const std::size_t dot = name.rfind('.');
  return dot == std::string_view::npos || dot == 0 ? std::string_view() : name.substr(dot + 1);
}

bool hasFileWithExtension(FileSystem& files, const std::string& documents, std::string_view extension) {
  return std::ranges::any_of(files.filesBelow(documents),
                             [&](const std::string& path) { return pathExtension(path) == extension; });
}

}  // namespace varnok
