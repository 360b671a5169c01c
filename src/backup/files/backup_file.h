// The backup files in the documents directory: their names, and which are there.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/clock.h"
#include "platform/file_system.h"

namespace varnok {

// "Varnok-2024-03-05-140709-120.vcf".
std::string backupFileName(const LocalTime& time, std::int32_t contacts, std::string_view fileType);

// "Ada King12345678.vcf", one card's name in an archive; the number may have
// fewer digits. A missing composite name reads "(null)". What would make the
// name a path, and control characters, are "_" in it; a name too long for a
// file is cut.
std::string zipEntryName(const std::optional<std::string>& compositeName, std::uint32_t number);

// A stranger's name as the name of a file of ours: what would make it a path, a
// hidden file or a file on its way, and control characters, are "_" in it; one
// too long for a file is cut before its extension.
std::string plainFileName(std::string_view name);

std::string_view lastPathComponent(std::string_view path);

// The letters behind the last dot of the last component; empty when there is
// none, and for a name that only begins with a dot.
std::string_view pathExtension(std::string_view path);

// Some file below `documents` has exactly this extension.
bool hasFileWithExtension(FileSystem& files, const std::string& documents, std::string_view extension);

}  // namespace varnok
