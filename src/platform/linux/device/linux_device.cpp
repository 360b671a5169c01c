#include "platform/linux/device/linux_device.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <string_view>

namespace varnok {
namespace {

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

// The locale of one category, empty when none is set.
std::string localeOf(const char* category) {
  for (const char* name : {"LC_ALL", category, "LANG"}) {
    if (std::string locale = environment(name); !locale.empty()) return locale;
  }
  return {};
}

std::string messagesLocale() {
  return localeOf("LC_MESSAGES");
}

bool isC(const std::string& locale) {
  return locale.empty() || locale == "C" || locale == "POSIX" || locale.starts_with("C.");
}

std::vector<std::string> split(const std::string& list) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  while (start <= list.size()) {
    const std::size_t end = std::min(list.find_first_of(",:", start), list.size());
    if (end > start) parts.push_back(list.substr(start, end - start));
    start = end + 1;
  }
  return parts;
}

// The first line of a small file of the system, without what pads it.
std::string firstLine(const std::string& path) {
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  constexpr std::string_view kPadding("\0 \t\r", 4);
  line.erase(line.find_last_not_of(kPadding) + 1);
  return line.substr(std::min(line.find_first_not_of(kPadding), line.size()));
}

std::string lowerCase(std::string text) {
  std::ranges::transform(text, text.begin(),
                         [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  return text;
}

// What boards carry whose maker wrote nothing there.
bool isPlaceholder(const std::string& text) {
  static constexpr std::string_view kPlaceholders[] = {
      "",       "0123456789", "all series",    "default string", "empty",     "invalid",
      "n/a",    "none",       "not available", "not applicable", "o.e.m.",    "oem",
      "system", "undefined",  "unknown",       "not specified",  "1234567890"};
  const std::string lower = lowerCase(text);
  return std::ranges::find(kPlaceholders, lower) != std::end(kPlaceholders) || lower.starts_with("to be filled by") ||
         lower.starts_with("system manufacturer") || lower.starts_with("system product") ||
         lower.starts_with("product name") || lower.starts_with("oem");
}

// The firmware's tables name maker and product apart; many makers begin the
// product's name with their own.
std::string modelOfFirmware(const std::string& root) {
  const std::string product = firstLine(root + "/sys/class/dmi/id/product_name");
  if (isPlaceholder(product)) return {};
  const std::string maker = firstLine(root + "/sys/class/dmi/id/sys_vendor");
  const std::string word = lowerCase(maker.substr(0, maker.find(' ')));
  return isPlaceholder(maker) || lowerCase(product).starts_with(word) ? product : maker + " " + product;
}

std::string modelName(const std::string& root) {
  if (std::string board = firstLine(root + "/proc/device-tree/model"); !isPlaceholder(board)) return board;
  const std::string machine = modelOfFirmware(root);
  return machine.empty() ? "Linux" : machine;
}

// The value of a line of os-release, which a shell must be able to read.
std::string unquoted(std::string_view value) {
  std::string text;
  char quote = 0;
  for (std::size_t i = 0; i < value.size(); ++i) {
    const char c = value[i];
    if (quote == 0 ? c == '"' || c == '\'' : c == quote) {
      quote = quote == 0 ? c : '\0';
    } else if (c == '\\' && quote != '\'' && i + 1 < value.size()) {
      text += value[++i];
    } else if (c != '\r') {
      text += c;
    }
  }
  return text;
}

// A system that goes without a version number has its name at least.
std::string systemVersion(const std::string& root) {
  std::string version;
  std::string name;
  std::ifstream file(root + "/etc/os-release");
  if (!file) file.open(root + "/usr/lib/os-release");
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("VERSION_ID=")) version = unquoted(line.substr(line.find('=') + 1));
    if (line.starts_with("PRETTY_NAME=")) name = unquoted(line.substr(line.find('=') + 1));
  }
  if (version.empty()) version = name;
  return version.empty() ? "-" : version;
}

}  // namespace

std::vector<std::string> preferredLanguages(const std::string& list) {
  std::vector<std::string> languages = split(list);
  const std::string locale = messagesLocale();
  if (languages.empty() && !isC(locale)) languages = split(environment("LANGUAGE"));
  if (languages.empty() && !isC(locale)) languages.push_back(locale);
  if (languages.empty()) languages.emplace_back("en");
  return languages;
}

std::string timeLocale() {
  const std::string locale = localeOf("LC_TIME");
  return isC(locale) ? std::string() : locale;
}

Device linuxDevice(std::vector<std::string> languages, const std::string& version, const std::string& root) {
  Device device;
  device.displayName = "Varnok";
  device.version = version;
  device.buildVersion = version;
  device.modelName = modelName(root);
  device.systemVersion = systemVersion(root);
  const std::string locale = messagesLocale();
  device.localeIdentifier = isC(locale) ? "en" : locale.substr(0, locale.find_first_of(".@"));
  device.appleLanguages = std::move(languages);
  return device;
}

}  // namespace varnok
