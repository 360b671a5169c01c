#include "platform/linux/posix/posix_clock.h"

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string_view>

namespace varnok {
namespace {

// The zone that a file of the system's zone rules is for.
std::string zoneOfFile(const std::string& path) {
  constexpr std::string_view kRules = "zoneinfo/";
  const std::size_t rules = path.find(kRules);
  return rules == std::string::npos ? "" : path.substr(rules + kRules.size());
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
  if (std::getenv("TZ") != nullptr) {
    ::tzset();
    lookedAt_.store(-1, std::memory_order_relaxed);
    return;
  }
  timespec time{};
  ::clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
  if (lookedAt_.exchange(time.tv_sec, std::memory_order_relaxed) != time.tv_sec) ::tzset();
}

LocalTime PosixClock::localTime(Instant instant) const {
  followZone();
  const std::time_t seconds = instant.time_since_epoch().count();
  std::tm fields{};
  if (::localtime_r(&seconds, &fields) == nullptr) return {};
  return {fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec};
}

Instant PosixClock::instantOf(const LocalTime& local) const {
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
  std::string zone;
  if (const char* given = std::getenv("TZ")) {
    zone = given;
    if (zone.starts_with(':')) zone.erase(0, 1);
    if (zone.starts_with('/')) zone = zoneOfFile(zone);
  } else {
    std::error_code error;
    zone = zoneOfFile(std::filesystem::read_symlink("/etc/localtime", error).string());
  }
  return zone.empty() ? "UTC" : zone;
}

}  // namespace varnok
