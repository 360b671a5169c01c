#include "web/access/upload.h"

#include "export/html_exporter.h"
#include "platform/utf8.h"

namespace varnok {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::size_t kKeptLines = 16;     // Of a part header; a browser sends three.
constexpr std::size_t kLongestName = 255;  // Bytes; file systems take no more.

std::string_view lastPiece(std::string_view text, std::string_view separator) {
  const std::size_t at = text.rfind(separator);
  return at == std::string_view::npos ? text : text.substr(at + separator.size());
}

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// A percent sign that begins no escape stays: people have files called "50%".
std::string withoutEscapes(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const int high = text[i] == '%' && i + 2 < text.size() ? hexDigit(text[i + 1]) : -1;
    const int low = high >= 0 ? hexDigit(text[i + 2]) : -1;
    result += low >= 0 ? static_cast<char>(high * 16 + low) : text[i];
    if (low >= 0) i += 2;
  }
  return result;
}

// U+0000 to U+001F, U+007F to U+009F, in valid UTF-8.
bool hasControlCharacter(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte < 0x20 || byte == 0x7F) return true;
    if (byte == 0xC2 && static_cast<unsigned char>(text[i + 1]) < 0xA0) return true;
  }
  return false;
}

}  // namespace

PartHeaderScan scanPartHeader(std::string_view piece, std::uint64_t& dataStartIndex, std::vector<std::string>& lines) {
  PartHeaderScan scan;
  if (piece.size() < kLineEnd.size()) return scan;
  const std::string_view seen = piece.substr(0, piece.size() - 1);
  for (std::size_t at = seen.find(kLineEnd); at != std::string_view::npos; at = seen.find(kLineEnd, at + 2)) {
    // After an earlier piece the line may be said to begin behind its end.
    if (dataStartIndex > at) continue;
    const std::string_view line = piece.substr(dataStartIndex, at - dataStartIndex);
    dataStartIndex = at + kLineEnd.size();
    if (line.empty()) {
      scan.ended = true;
      return scan;
    }
    if (lines.size() < kKeptLines) lines.emplace_back(line);
    scan.foundLine = true;
  }
  return scan;
}

std::optional<std::string> uploadedFileName(std::string_view contentDisposition) {
  const std::string_view value = lastPiece(contentDisposition, "; filename=");
  const std::size_t open = value.find('"');
  if (open == std::string_view::npos) return std::nullopt;
  const std::string_view quoted = value.substr(open + 1);
  return std::string(lastPiece(quoted.substr(0, quoted.find('"')), "\\"));
}

std::optional<std::string> storedFileName(std::string_view uploadedName, const FileSystem& files) {
  std::string name = withoutEscapes(uploadedName);
  if (name.empty() || name == "." || name == ".." || name.size() > kLongestName) return std::nullopt;
  if (name.find('/') != std::string::npos || !isValidUTF8(name) || hasControlCharacter(name)) return std::nullopt;
  if (name == HTMLExporter::kRecordsFile || files.isReservedName(name)) return std::nullopt;
  return name;
}

FileEndFinder::FileEndFinder(std::string_view boundaryLine) : marker_(std::string(kLineEnd).append(boundaryLine)) {}

void FileEndFinder::add(std::string_view bytes) {
  const std::size_t kept = marker_.size() - 1;
  const std::size_t before = tail_.size();
  tail_ += bytes.substr(0, kept);
  findIn(tail_, added_ - before);  // What began in earlier bytes.
  findIn(bytes, added_);
  added_ += bytes.size();
  if (bytes.size() >= kept) {
    tail_ = bytes.substr(bytes.size() - kept);
  } else if (tail_.size() > kept) {
    tail_.erase(0, tail_.size() - kept);
  }
}

void FileEndFinder::findIn(std::string_view text, std::uint64_t offset) {
  for (std::size_t at = text.find(marker_); at != std::string_view::npos; at = text.find(marker_, at + 1))
    found_ = {offset + at, found_[0], found_[1]};
}

std::uint64_t FileEndFinder::size() const {
  if (found_[0] == 0) return added_;
  for (const std::uint64_t earlier : {found_[1], found_[2]}) {
    if (earlier != 0 && earlier + marker_.size() < found_[0]) return earlier;
  }
  return found_[0];
}

}  // namespace varnok
