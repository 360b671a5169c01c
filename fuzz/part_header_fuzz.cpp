// An upload as a stranger sends it, in pieces: the first byte of the input gives
// the size of the first piece, the second that of the others. Whatever comes,
// nothing is read outside a piece, a stored name is a plain one, and the closing
// boundary is cut as the slow search would cut it.

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/testing/in_memory_file_system.h"
#include "support/slow_boundary_cut.h"
#include "web/access/upload.h"

namespace {

void check(bool holds) {
  if (!holds) std::abort();
}

void checkEnd(const std::string& content, std::uint64_t fileSize, const std::string& boundary) {
  check(content.substr(0, fileSize) == varnok::cutSlowly(content, "\r\n" + boundary));
}

void checkName(const std::string& line) {
  const varnok::InMemoryFileSystem disk;
  const auto sent = varnok::uploadedFileName(line);
  const auto name = sent ? varnok::storedFileName(*sent, disk) : std::nullopt;
  if (!name) return;
  check(!name->empty() && *name != "." && *name != ".." && name->size() <= 255);
  check(name->find('/') == std::string::npos && name->find('\0') == std::string::npos);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  std::string_view rest(reinterpret_cast<const char*>(data) + 2, size - 2);
  std::size_t pieceSize = data[0] + std::size_t{1};
  std::uint64_t start = 0;
  std::vector<std::string> lines;
  std::string content;
  std::optional<varnok::FileEndFinder> end;
  while (!rest.empty()) {
    // Of its own memory, so that a read beside it is seen.
    std::string piece(rest.substr(0, pieceSize));
    rest.remove_prefix(piece.size());
    pieceSize = data[1] + std::size_t{1};
    if (!end && varnok::scanPartHeader(piece, start, lines).ended) {
      if (lines.empty()) return 0;
      end.emplace(lines[0]);
      piece = piece.substr(start);
    }
    if (!end) continue;
    end->add(piece);
    content += piece;
  }
  if (lines.size() > 1) checkName(lines[1]);
  if (end) checkEnd(content, end->size(), lines[0]);
  return 0;
}
