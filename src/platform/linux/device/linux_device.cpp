#include "platform/linux/device/linux_device.h"

#include <cstdlib>
#include <fstream>

namespace varnok {
namespace {

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

// The locale of messages, empty when none is set.
std::string messagesLocale() {
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    if (std::string locale = environment(name); !locale.empty()) return locale;
  }
  return {};
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

// The first line of a small file of the system, without a trailing zero.
std::string firstLine(const char* path) {
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  while (!line.empty() && (line.back() == '\0' || line.back() == ' '))
    line.pop_back();
  return line;
}

std::string modelName() {
  for (const char* path : {"/proc/device-tree/model", "/sys/class/dmi/id/product_name"}) {
    if (std::string name = firstLine(path); !name.empty()) return name;
  }
  return "Linux";
}

std::string systemVersion() {
  std::ifstream file("/etc/os-release");
  for (std::string line; std::getline(file, line);) {
    if (!line.starts_with("VERSION_ID=")) continue;
    std::string version = line.substr(line.find('=') + 1);
    std::erase(version, '"');
    return version;
  }
  return "-";
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

Device linuxDevice(std::vector<std::string> languages, const std::string& version) {
  Device device;
  device.displayName = "Varnok";
  device.version = version;
  device.buildVersion = version;
  device.modelName = modelName();
  device.systemVersion = systemVersion();
  const std::string locale = messagesLocale();
  device.localeIdentifier = isC(locale) ? "en" : locale.substr(0, locale.find_first_of(".@"));
  device.appleLanguages = std::move(languages);
  return device;
}

}  // namespace varnok
