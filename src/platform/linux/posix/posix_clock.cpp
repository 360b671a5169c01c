#include "platform/linux/posix/posix_clock.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string_view>

namespace varnok {
namespace {

// The zone that a file of the system's zone rules is for, also by its links;
// empty for any other file.
std::string zoneOfFile(const std::string& path) {
  constexpr std::string_view kRules = "zoneinfo/";
  std::error_code error;
  std::string name = path;
  for (int links = 0; links < 8 && !name.empty(); ++links) {
    const std::size_t rules = name.find(kRules);
    if (rules != std::string::npos) return name.substr(rules + kRules.size());
    const auto target = std::filesystem::read_symlink(name, error);
    name = error ? std::string() : (std::filesystem::path(name).parent_path() / target).string();
  }
  return {};
}

// Systems that copy the rules to their place have the name beside it.
std::string zoneOfSystem() {
  std::string zone = zoneOfFile("/etc/localtime");
  if (zone.empty()) std::getline(std::ifstream("/etc/timezone"), zone);
  return zone;
}

// The path of a zone file in TZ, which a colon may introduce; null when it has
// none.
const char* pathIn(const char* variable) {
  if (*variable == ':') ++variable;
  return *variable == '/' ? variable : nullptr;
}

// Another text when the file is another or has been written to.
std::string identityOf(const char* path) {
  struct stat file {};
  if (::stat(path, &file) != 0) return {};
  return std::to_string(file.st_dev) + ' ' + std::to_string(file.st_ino) + ' ' + std::to_string(file.st_mtim.tv_sec) +
         ' ' + std::to_string(file.st_mtim.tv_nsec);
}

std::int64_t coarseSeconds() {
  timespec time{};
  ::clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
  return time.tv_sec;
}

}  // namespace

double PosixClock::now() const {
  timespec time{};
  ::clock_gettime(CLOCK_REALTIME, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// localtime_r() keeps the zone it found first; tzset() looks again. With TZ set
// that compares two texts; without, it asks for the state of the zone file, so
// it is done once a second.
void PosixClock::followZone() const {
  if (const char* variable = std::getenv("TZ")) {
    ::tzset();
    if (pathIn(variable) != nullptr) {
      followZoneFile(variable);
    } else {
      lookedAt_.store(-1, std::memory_order_relaxed);
    }
    return;
  }
  const std::int64_t now = coarseSeconds();
  if (lookedAt_.exchange(now, std::memory_order_relaxed) != now) ::tzset();
}

// tzset() reads a file that TZ names when the text of TZ is another, not when
// the file is. So it is shown another text for the same file.
void PosixClock::followZoneFile(const char* variable) const {
  const std::int64_t now = coarseSeconds();
  if (lookedAt_.exchange(now, std::memory_order_relaxed) == now) return;
  const std::lock_guard lock(zoneFile_);
  const std::string given = variable;
  std::string identity = given + ' ' + identityOf(pathIn(variable));
  if (identity == seenFile_) return;
  const bool first = seenFile_.empty();
  seenFile_ = std::move(identity);
  if (first) return;
  ::setenv("TZ", ("/" + std::string(pathIn(variable))).c_str(), /*overwrite=*/1);
  ::tzset();
  ::setenv("TZ", given.c_str(), /*overwrite=*/1);
  ::tzset();
}

LocalTime PosixClock::localTime(Instant instant) const {
  followZone();
  const std::time_t seconds = instant.time_since_epoch().count();
  std::tm fields{};
  if (::localtime_r(&seconds, &fields) == nullptr) return {};
  return {fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec};
}

Instant PosixClock::instantOf(const LocalTime& local) const {
  followZone();
  std::tm fields{};
  fields.tm_year = local.year - 1900;
  fields.tm_mon = local.month - 1;
  fields.tm_mday = local.day;
  fields.tm_hour = local.hour;
  fields.tm_min = local.minute;
  fields.tm_sec = local.second;
  fields.tm_isdst = -1;  // Whatever is in force then.
  return Instant(std::chrono::seconds(::mktime(&fields)));
}

std::string PosixClock::timeZone() const {
  const char* given = std::getenv("TZ");
  std::string zone = given == nullptr ? zoneOfSystem() : given;
  if (zone.starts_with(':')) zone.erase(0, 1);
  if (zone == "/etc/localtime") zone = zoneOfSystem();
  if (zone.starts_with('/')) zone = zoneOfFile(zone);
  return zone.empty() ? "UTC" : zone;
}

}  // namespace varnok
