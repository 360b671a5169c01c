#include "platform/linux/posix/posix_clock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <thread>

#include "platform/linux/posix/temporary_directory.h"

namespace varnok {
namespace {

constexpr Instant kWinter{std::chrono::seconds(1709647629)};  // 2024-03-05 14:07:09 UTC.
constexpr Instant kSummer{std::chrono::seconds(1720188429)};  // 2024-07-05 14:07:09 UTC.

// A zone for one test; written out, so that no zone files are needed.
class Zone {
 public:
  explicit Zone(const char* zone) { ::setenv("TZ", zone, /*overwrite=*/1); }
  Zone(const Zone&) = delete;
  Zone& operator=(const Zone&) = delete;
  ~Zone() { ::setenv("TZ", "UTC", /*overwrite=*/1); }
};

constexpr const char* kBerlin = "CET-1CEST,M3.5.0,M10.5.0/3";

TEST(PosixClock, FollowsAChangeOfTheZone) {
  const PosixClock clock;
  const Zone first("UTC0");
  EXPECT_EQ(clock.localTime(kWinter), (LocalTime{2024, 3, 5, 14, 7, 9}));
  const Zone second(kBerlin);
  EXPECT_EQ(clock.localTime(kWinter), (LocalTime{2024, 3, 5, 15, 7, 9}));
  EXPECT_EQ(clock.localTime(kSummer), (LocalTime{2024, 7, 5, 16, 7, 9}));
  EXPECT_EQ(clock.instantOf({2024, 3, 5, 15, 7, 9}), kWinter);
  EXPECT_EQ(clock.instantOf({2024, 7, 5, 16, 7, 9}), kSummer);
}

// A file of zone rules as the system has them, without rules but for the one
// offset.
std::string zoneFile(std::int32_t secondsEast) {
  const auto word = [](std::int32_t value) {
    std::string bytes(4, '\0');
    for (int i = 0; i < 4; ++i)
      bytes[static_cast<std::size_t>(i)] = static_cast<char>(value >> (24 - 8 * i));
    return bytes;
  };
  const std::string body =
      word(0) + word(0) + word(0) + word(0) + word(1) + word(4) + word(secondsEast) + std::string("\0\0ABC\0", 6);
  return "TZif" + std::string(16, '\0') + body;
}

void put(const std::string& path, const std::string& content) {
  std::ofstream(path + ".new") << content;
  std::filesystem::rename(path + ".new", path);
}

// Also where the system names its own file in TZ.
TEST(PosixClock, FollowsAChangeOfTheZoneFile) {
  const TemporaryDirectory directory;
  const std::string path = directory.path() + "/zone";
  put(path, zoneFile(3600));
  const PosixClock clock;
  const Zone zone((":" + path).c_str());
  EXPECT_EQ(clock.localTime(kWinter).hour, 15);
  put(path, zoneFile(7200));
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  while (clock.localTime(kWinter).hour == 15 && std::chrono::steady_clock::now() < end)
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(clock.localTime(kWinter).hour, 16);
  EXPECT_EQ(clock.instantOf({2024, 3, 5, 16, 7, 9}), kWinter);
  EXPECT_EQ(std::getenv("TZ"), ":" + path);
}

TEST(PosixClock, NamesTheZoneThatALinkLeadsTo) {
  const TemporaryDirectory directory;
  std::filesystem::create_symlink("/usr/share/zoneinfo/Asia/Tokyo", directory.path() + "/rules");
  std::filesystem::create_symlink("rules", directory.path() + "/localtime");
  const Zone zone((":" + directory.path() + "/localtime").c_str());
  EXPECT_EQ(PosixClock().timeZone(), "Asia/Tokyo");
}

TEST(PosixClock, NamesTheZone) {
  const PosixClock clock;
  for (const auto& [given, named] :
       {std::pair("Europe/Vienna", "Europe/Vienna"), std::pair(":Asia/Tokyo", "Asia/Tokyo"),
        std::pair("/usr/share/zoneinfo/America/Lima", "America/Lima"), std::pair("", "UTC"),
        std::pair("/elsewhere", "UTC")}) {
    const Zone zone(given);
    EXPECT_EQ(clock.timeZone(), named) << given;
  }
}

TEST(PosixClock, ReadsTimesBefore1970AndFarAway) {
  const PosixClock clock;
  const Zone zone("UTC0");
  const LocalTime birthday{1899, 12, 31, 23, 59, 59};
  EXPECT_EQ(clock.localTime(clock.instantOf(birthday)), birthday);
  EXPECT_EQ(clock.localTime(Instant(std::chrono::seconds(-1))), (LocalTime{1969, 12, 31, 23, 59, 59}));
  EXPECT_EQ(clock.localTime(Instant(std::chrono::seconds(std::numeric_limits<std::int64_t>::max()))), LocalTime());
}

TEST(PosixClock, AnHourSkippedOrRepeatedGivesAnInstantBesideIt) {
  const PosixClock clock;
  const Zone zone(kBerlin);
  const Instant skipped = clock.instantOf({2024, 3, 31, 2, 30, 0});
  const Instant change{std::chrono::seconds(1711846800)};
  EXPECT_LE(std::chrono::abs(skipped - change), std::chrono::minutes(30));
  const LocalTime repeated{2024, 10, 27, 2, 30, 0};
  EXPECT_EQ(clock.localTime(clock.instantOf(repeated)), repeated);
}

}  // namespace
}  // namespace varnok
