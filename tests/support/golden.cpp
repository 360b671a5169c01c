#include "support/golden.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace varnok {
namespace {

void writeWholeFile(const std::filesystem::path& path, std::string_view bytes) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// The line of `text` that holds `offset`.
std::string_view lineAt(std::string_view text, std::size_t offset) {
  offset = std::min(offset, text.size());
  const std::size_t start = offset == 0 ? 0 : text.rfind('\n', offset - 1) + 1;
  return text.substr(start, text.find('\n', offset) - start);
}

}  // namespace

std::string printable(std::string_view bytes) {
  std::string result;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n') {
      result += "\\n";
    } else if (c == '\r') {
      result += "\\r";
    } else if (c == '\\') {
      result += "\\\\";
    } else if (byte < 0x20 || byte > 0x7e) {
      constexpr std::string_view kDigits = "0123456789abcdef";
      result += "\\x";
      result += kDigits[byte >> 4U];
      result += kDigits[byte & 15U];
    } else {
      result += c;
    }
  }
  return result;
}

std::string readWholeFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return std::move(bytes).str();
}

testing::AssertionResult matchesGolden(const std::string& name, std::string_view actual) {
  const std::filesystem::path golden = std::filesystem::path(VARNOK_GOLDEN_DIR) / name;
  if (const char* update = std::getenv("UPDATE_GOLDEN"); update != nullptr && *update == '1') {
    writeWholeFile(golden, actual);
    return testing::AssertionSuccess();
  }
  if (!std::filesystem::exists(golden)) return testing::AssertionFailure() << name << " does not exist";
  const std::string expected = readWholeFile(golden.string());
  if (expected == actual) return testing::AssertionSuccess();
  const auto differs = std::ranges::mismatch(expected, actual);
  const auto offset = static_cast<std::size_t>(differs.in1 - expected.begin());
  writeWholeFile(std::filesystem::current_path() / (name + ".actual"), actual);
  return testing::AssertionFailure() << name << " differs in line "
                                     << std::count(expected.begin(), differs.in1, '\n') + 1 << "\n  expected \""
                                     << printable(lineAt(expected, offset)) << "\"\n  actual   \""
                                     << printable(lineAt(actual, offset)) << "\"";
}

}  // namespace varnok
