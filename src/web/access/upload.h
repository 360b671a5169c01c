// The multipart upload of a browser's form, as far as its first part, the file.
//
//   body   := BOUNDARY CRLF header CRLF header CRLF ... CRLF BYTES CRLF BOUNDARY ...
//
// What these are given comes from strangers.

#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_system.h"

namespace varnok {

struct PartHeaderScan {
  bool foundLine = false;
  bool ended = false;  // The blank line has come; the file begins at `dataStartIndex`.
};

// Looks for the lines of the part header in one piece of the body, and appends
// those that are not empty to `lines`, the first few only, without their line
// ends. `dataStartIndex` is where the next line begins.
//
// Quirk: `dataStartIndex` stays from piece to piece although it counts within
// one, and a line end in the last two bytes of a piece is not seen. So a header
// that is cut in two is not put together; pieces are large enough for whole ones.
PartHeaderScan scanPartHeader(std::string_view piece, std::uint64_t& dataStartIndex, std::vector<std::string>& lines);

// The file's name as the browser sent it, without a Windows path. Empty when the
// form was sent without a file; nothing when the line has no quotes.
std::optional<std::string> uploadedFileName(std::string_view contentDisposition);

// The name under which an upload of that name is stored in the documents
// directory, percent escapes replaced. Nothing for a name that is no plain file
// name or belongs to the application.
std::optional<std::string> storedFileName(std::string_view uploadedName, const FileSystem& files);

// Finds where an uploaded file ends: what follows it in the body is stored with
// it at first. The file ends before the last occurrence of CRLF and the boundary
// line, or before the one in front of that, which begins what a form sent after
// the file.
//
// Quirk: an occurrence at the very beginning is not seen, so an empty file keeps
// its boundary; nor is one that ends directly before the last.
class FileEndFinder {
 public:
  // `boundaryLine` is not empty.
  explicit FileEndFinder(std::string_view boundaryLine);

  // The next stored bytes.
  void add(std::string_view bytes);

  // Of the file, in bytes.
  std::uint64_t size() const;

 private:
  void findIn(std::string_view text, std::uint64_t offset);

  std::string marker_;
  std::string tail_;  // The last bytes, one fewer than the marker has.
  std::uint64_t added_ = 0;
  // The last places of the marker, the latest first; 0 is none. Two are at least
  // its length less one apart, so at most one of them is too near to the latest.
  std::array<std::uint64_t, 3> found_{};
};

}  // namespace varnok
