#include "platform/linux/eds/card_photo.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "backup/files/vnk_util.h"
#include "import/vcard_line.h"
#include "import/vcard_text.h"
#include "platform/image_codec.h"

namespace varnok {
namespace {

constexpr std::string_view kPhotoName = "PHOTO";
constexpr std::string_view kFileScheme = "file://";

// In bytes. No contact's picture is larger.
constexpr std::uintmax_t kLargestFile = std::uintmax_t{64} << 20U;

std::optional<VCardLine> photoLine(const Card& card) {
  for (const std::string& text : card.lines()) {
    const auto line = splitVCardLine(text);
    if (line && equalsIgnoringCase(line->name, kPhotoName) && !line->value.empty()) return line;
  }
  return std::nullopt;
}

bool isReference(const VCardLine& line) {
  return parseVCardParameters(line.parameters).isURI;
}

std::string pathOf(const VCardLine& line) {
  const std::string uri = unescaped(trimmedBlanks(line.value));
  return startsIgnoringCase(uri, kFileScheme) ? decodedPercents(std::string_view(uri).substr(kFileScheme.size())) : "";
}

// Where the service keeps the pictures of the books that lie on this machine.
std::string folderOfService() {
  const char* data = std::getenv("XDG_DATA_HOME");
  const char* home = std::getenv("HOME");
  const std::string base =
      data != nullptr && *data == '/' ? std::string(data) : std::string(home == nullptr ? "" : home) + "/.local/share";
  return base + "/evolution/addressbook/";
}

bool isOfService(const std::string& path) {
  std::error_code error;
  const std::filesystem::path real = std::filesystem::canonical(path, error);
  const std::filesystem::path folder = std::filesystem::canonical(folderOfService(), error);
  return !error && real.string().starts_with(folder.string() + "/");
}

std::optional<std::string> bytesOfFile(const std::string& path) {
  std::error_code error;
  const std::uintmax_t size =
      std::filesystem::is_regular_file(path, error) ? std::filesystem::file_size(path, error) : 0;
  if (error || size == 0 || size > kLargestFile) return std::nullopt;
  std::ifstream file(path, std::ios::binary);
  std::string bytes(static_cast<std::size_t>(size), '\0');
  if (!file.read(bytes.data(), static_cast<std::streamsize>(size))) return std::nullopt;
  const bool counts = imageTypeOf(bytes) != ImageType::other || isOfService(path);
  return counts ? std::optional(std::move(bytes)) : std::nullopt;
}

}  // namespace

bool hasPhoto(const Card& card) {
  const auto line = photoLine(card);
  if (!line) return false;
  if (!isReference(*line)) return true;
  const std::string path = pathOf(*line);
  if (path.empty() || ::access(path.c_str(), R_OK) != 0) return false;
  return isOfService(path) || bytesOfFile(path).has_value();
}

std::optional<std::string> photoOf(const Card& card) {
  const auto line = photoLine(card);
  if (!line) return std::nullopt;
  if (!isReference(*line)) return decodedBase64(line->value);
  return bytesOfFile(pathOf(*line));
}

void setPhoto(Card& card, const std::optional<std::string>& bytes) {
  for (std::size_t i = card.size(); i-- > 0;) {
    const auto line = splitVCardLine(card.lines()[i]);
    if (line && equalsIgnoringCase(line->name, kPhotoName)) card.erase(i);
  }
  if (!bytes || bytes->empty()) return;
  std::string line(kPhotoName);
  line += ";ENCODING=b;TYPE=";
  line += imageTypeOf(*bytes) == ImageType::png ? "PNG:" : "JPEG:";
  VNKUtil::appendBASE64(line, *bytes);
  card.append(std::move(line));
}

}  // namespace varnok
