#include "import/vcard_line_reader.h"

#include <algorithm>

#include "import/vcard_line.h"

namespace varnok {
namespace {

bool isBase64Text(std::string_view text) {
  const auto isDigit = [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/' ||
           c == '=';
  };
  return std::ranges::all_of(trimmedBlanks(text), isDigit);
}

}  // namespace

VCardEdge vCardEdgeOf(std::string_view line) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  if (line.starts_with(kMark)) line.remove_prefix(kMark.size());
  line = trimmedBlanks(line);
  if (equalsIgnoringCase(line, "BEGIN:VCARD")) return VCardEdge::begin;
  if (equalsIgnoringCase(line, "END:VCARD")) return VCardEdge::end;
  return VCardEdge::none;
}

void VCardLineReader::feed(std::string_view bytes) {
  if (bytes.empty()) return;
  std::size_t start = skipLineFeed_ && bytes.front() == '\n' ? 1 : 0;
  skipLineFeed_ = false;
  // Looked for again only when passed: a file of CRs alone is still read once.
  std::size_t lineFeed = std::min(bytes.find('\n', start), bytes.size());
  while (start < bytes.size()) {
    if (lineFeed < start) lineFeed = std::min(bytes.find('\n', start), bytes.size());
    const std::string_view line = bytes.substr(start, lineFeed - start);
    const std::size_t length = std::min(line.find('\r'), line.size());
    const std::size_t end = start + length;
    if (end == bytes.size()) break;
    physicalLine(line.substr(0, length));
    start = end + 1;
    if (bytes[end] != '\r') continue;
    if (start == bytes.size()) {
      skipLineFeed_ = true;
    } else if (bytes[start] == '\n') {
      ++start;
    }
  }
  if (start < bytes.size()) append(partial_, bytes.substr(start));
  ownHeldLine();
}

void VCardLineReader::finish() {
  if (!partial_.empty()) physicalLine({});
  passHeldLine();
}

void VCardLineReader::physicalLine(std::string_view text) {
  ++lineCount_;
  const bool wasCut = !partial_.empty();
  if (wasCut) append(partial_, text);
  // The same bytes are kept of a line that is too long, however it was cut.
  const std::string_view whole = wasCut ? std::string_view(partial_) : text.substr(0, keptBytes_);
  if (holds_ && continuesHeldLine(whole)) {
    partial_.clear();
    return;
  }
  passHeldLine();
  holds_ = !whole.empty();
  heldNumber_ = lineCount_;
  heldEncoding_.reset();
  held_ = whole;
  if (wasCut) {
    heldText_.swap(partial_);
    held_ = heldText_;
    partial_.clear();
  }
}

bool VCardLineReader::continuesHeldLine(std::string_view next) {
  const bool endsWithSign = held_.ends_with('=');
  if (endsWithSign && heldEncoding() == VCardEncoding::quotedPrintable && vCardEdgeOf(next) == VCardEdge::none) {
    held_.remove_suffix(1);
    extendHeldLine(next);
    return true;
  }
  if (next.empty()) return false;
  if (isBlank(next.front())) {
    extendHeldLine(foldKeepsBlank_ ? next : next.substr(1));
    return true;
  }
  if (endsWithSign || next.find(':') != std::string_view::npos || heldEncoding() != VCardEncoding::base64 ||
      !isBase64Text(next)) {
    return false;
  }
  extendHeldLine(next);
  return true;
}

VCardEncoding VCardLineReader::heldEncoding() {
  // Looked for once, and near the front only: lines by the million may follow.
  constexpr std::size_t kHeadBytes = 1024;
  if (heldEncoding_) return *heldEncoding_;
  const auto line = splitVCardLine(held_.substr(0, kHeadBytes));
  if (!line && held_.size() < kHeadBytes) return VCardEncoding::none;
  heldEncoding_ = line ? parseVCardParameters(line->parameters).encoding : VCardEncoding::none;
  return *heldEncoding_;
}

void VCardLineReader::extendHeldLine(std::string_view more) {
  ownHeldLine();
  heldText_.resize(held_.size());
  append(heldText_, more);
  held_ = heldText_;
}

void VCardLineReader::ownHeldLine() {
  if (!holds_ || held_.data() == heldText_.data()) return;
  heldText_.assign(held_);
  held_ = heldText_;
}

void VCardLineReader::passHeldLine() {
  if (!holds_) return;
  holds_ = false;
  sink_.line(heldNumber_, held_);
}

void VCardLineReader::append(std::string& line, std::string_view more) const {
  if (line.size() < keptBytes_) line.append(more.substr(0, keptBytes_ - line.size()));
}

}  // namespace varnok
