#include "platform/linux/posix/preference_file_store.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <functional>
#include <random>

#include "platform/linux/posix/preference_file_format.h"
#include "platform/linux/posix/temporary_directory.h"

namespace varnok {
namespace {

std::unique_ptr<PreferenceFileStore> opened(const std::string& path) {
  Status status;
  auto store = PreferenceFileStore::open(path, status);
  EXPECT_TRUE(status.ok()) << status.message();
  return store;
}

Status statusOfOpening(const std::string& path) {
  Status status;
  EXPECT_EQ(PreferenceFileStore::open(path, status), nullptr);
  return status;
}

ino_t inodeOf(const std::string& path) {
  struct stat information {};
  EXPECT_EQ(::stat(path.c_str(), &information), 0);
  return information.st_ino;
}

pid_t inChild(const std::function<void()>& work) {
  const pid_t child = ::fork();
  if (child != 0) return child;
  work();
  ::_exit(::testing::Test::HasFailure() ? 1 : 0);
}

int statusOf(pid_t child) {
  int status = -1;
  EXPECT_EQ(::waitpid(child, &status, 0), child);
  return status;
}

Value nested(int depth) {
  return depth == 0 ? Value("core") : Value(ValueArray{nested(depth - 1)});
}

const ValueDictionary kEveryKind = {
    {"true", true},
    {"false", false},
    {"integer", std::int64_t{-9007199254740993}},
    {"real", 0.1},
    {"text", "größe\n"},
    {"empty", ""},
    {"instant", Instant(std::chrono::seconds(1709647629))},
    {"array", ValueArray{Value("en"), Value(1), Value(ValueArray{}), Value(true)}},
    {"dictionary", ValueDictionary{{"a", ValueDictionary{{"b", Value(2.5)}}}, {"", Value("x")}}},
    {"", "the empty key"},
    {"deep", nested(32)},
};

TEST(PreferenceFileStore, KeepsEveryKindOfValue) {
  const TemporaryDirectory directory;
  const std::string path = directory / "preferences.db";
  for (const auto& [key, value] : kEveryKind)
    opened(path)->setValue(value, key);
  const auto store = opened(path);
  for (const auto& [key, value] : kEveryKind)
    EXPECT_EQ(store->objectForKey(key), value) << key;
  struct stat information {};
  ASSERT_EQ(::stat(path.c_str(), &information), 0);
  EXPECT_EQ(information.st_mode & 0777U, 0600U);
}

TEST(PreferenceFileStore, KeepsTheNewestValueWhateverItsKind) {
  const TemporaryDirectory directory;
  const std::string path = directory / "preferences.db";
  const auto store = opened(path);
  const Value values[] = {1, 2, "text", 3, 4.5, 5.5, true, false, "a", "b", 7};
  for (const Value& value : values) {
    store->setValue(value, "key");
    EXPECT_EQ(opened(path)->objectForKey("key"), value);
  }
  store->removeObjectForKey("key");
  EXPECT_EQ(opened(path)->objectForKey("key"), std::nullopt);
  store->setInteger(8, "key");
  EXPECT_EQ(opened(path)->objectForKey("key"), Value(8));
}

TEST(PreferenceFileStore, TheCounterDoesNotMakeTheFileGrow) {
  const TemporaryDirectory directory;
  const std::string path = directory / "preferences.db";
  const auto store = opened(path);
  store->setInteger(0, "vnk.export.itemCount");
  const auto size = std::filesystem::file_size(path);
  for (int i = 0; i < 1000; ++i)
    store->setInteger(store->integerForKey("vnk.export.itemCount") + 1, "vnk.export.itemCount");
  EXPECT_EQ(std::filesystem::file_size(path), size);
  EXPECT_EQ(opened(path)->integerForKey("vnk.export.itemCount"), 1000);
}

TEST(PreferenceFileStore, SeesWhatAnotherProcessSets) {
  const TemporaryDirectory directory;
  const std::string path = directory / "preferences.db";
  const auto ours = opened(path);
  const auto theirs = opened(path);
  theirs->setValue("text", "key");
  EXPECT_EQ(ours->stringForKey("key"), "text");
  theirs->setInteger(1, "key");
  EXPECT_EQ(ours->integerForKey("key"), 1);
  theirs->setInteger(2, "key");
  EXPECT_EQ(ours->integerForKey("key"), 2);
  theirs->setValue("text again", "key");
  ours->setInteger(3, "key");  // Its slot is dead by now.
  EXPECT_EQ(theirs->integerForKey("key"), 3);
  theirs->removeObjectForKey("key");
  EXPECT_EQ(ours->objectForKey("key"), std::nullopt);
}

TEST(PreferenceFileStore, SwitchesReadTogetherFollowAnotherProcess) {
  constexpr std::array<std::string_view, 1> kKeys{"key"};
  const TemporaryDirectory directory;
  const std::string path = directory / "preferences.db";
  const auto ours = opened(path);
  const auto theirs = opened(path);
  for (const Value& value : {Value("YES"), Value("NO"), Value(true), Value(false), Value("YES")}) {
    theirs->setValue(value, "key");
    EXPECT_EQ(ours->boolsForKeys(kKeys), theirs->boolForKey("key") ? 1U : 0U);
  }
  theirs->removeObjectForKey("key");
  EXPECT_EQ(ours->boolsForKeys(kKeys), 0U);
}

// A file with three records, and what it holds.
std::string threeRecords(const std::string& path) {
  const auto store = opened(path);
  store->setValue("one", "first");
  store->setInteger(2, "second");
  const std::string before = contentOf(path);
  store->setValue(ValueArray{Value("three"), Value(3)}, "third");
  return before;
}

TEST(PreferenceFileStore, ATornLastRecordLosesNothingElse) {
  const TemporaryDirectory directory;
  const std::string path = directory / "preferences.db";
  const std::size_t before = threeRecords(path).size();
  const std::string whole = contentOf(path);
  for (std::size_t length = before; length < whole.size(); ++length) {
    setContent(path, whole.substr(0, length));
    {
      const auto store = opened(path);
      EXPECT_EQ(store->stringForKey("first"), "one");
      EXPECT_EQ(store->integerForKey("second"), 2);
      EXPECT_EQ(store->objectForKey("third"), std::nullopt) << length;
      store->setValue("four", "fourth");
      EXPECT_TRUE(store->synchronize().ok());
    }
    const auto again = opened(path);
    EXPECT_EQ(again->integerForKey("second"), 2);
    EXPECT_EQ(again->stringForKey("fourth"), "four");
  }
}

TEST(PreferenceFileStore, AFlippedByteNeverLosesTheRecordsBeforeIt) {
  const TemporaryDirectory directory;
  const std::string path = directory / "preferences.db";
  const std::size_t lastRecord = threeRecords(path).size();
  const std::string whole = contentOf(path);
  for (std::size_t at = 0; at < whole.size(); ++at) {
    std::string damaged = whole;
    damaged[at] = static_cast<char>(damaged[at] ^ 0x5A);
    setContent(path, damaged);
    Status status;
    const auto store = PreferenceFileStore::open(path, status);
    if (store == nullptr) {
      EXPECT_LT(at, kPreferenceHeaderSize);
      EXPECT_EQ(contentOf(path), damaged);  // Left for a person to look at.
      continue;
    }
    if (at < lastRecord) continue;
    EXPECT_EQ(store->stringForKey("first"), "one") << at;
    EXPECT_EQ(store->integerForKey("second"), 2) << at;
    EXPECT_EQ(store->objectForKey("third"), std::nullopt) << at;
  }
}

TEST(PreferenceFileStore, RefusesWhatItDidNotWrite) {
  const TemporaryDirectory directory;
  const std::string path = directory / "preferences.db";
  setContent(path, "[General]\nkey=value\nsomething longer than a header\n");
  EXPECT_EQ(statusOfOpening(path).code(), Status::Code::corrupt);
  std::string newer = preferenceHeader();
  newer[8] = 2;
  setContent(path, newer);
  EXPECT_EQ(statusOfOpening(path).code(), Status::Code::newerVersion);
  EXPECT_EQ(contentOf(path), newer);
  EXPECT_EQ(statusOfOpening(directory / "missing/preferences.db").code(), Status::Code::notFound);
  EXPECT_EQ(statusOfOpening("/dev/null").code(), Status::Code::invalidArgument);
}

TEST(PreferenceFileStore, AHeaderCutOffIsAFreshFile) {
  const TemporaryDirectory directory;
  const std::string path = directory / "preferences.db";
  for (std::size_t length = 0; length < kPreferenceHeaderSize; ++length) {
    setContent(path, preferenceHeader().substr(0, length));
    opened(path)->setInteger(1, "key");
    EXPECT_EQ(opened(path)->integerForKey("key"), 1);
  }
}

void makeGarbage(PreferenceFileStore& store) {
  for (int i = 0; i < 8; ++i)
    store.setValue(std::string(100'000, i % 2 == 0 ? 'a' : 'b'), "garbage");
  store.setValue("", "garbage");
}

TEST(PreferenceFileStore, IsCompactedOnlyWhenMostOfItIsGarbage) {
  const TemporaryDirectory directory;
  const std::string path = directory / "preferences.db";
  const auto held = opened(path);
  held->setInteger(1, "count");
  held->setValue(std::string(150'000, 'x'), "large");
  const ino_t before = inodeOf(path);
  opened(path);
  EXPECT_EQ(inodeOf(path), before);
  makeGarbage(*held);
  held->setInteger(2, "count");
  const auto fresh = opened(path);
  EXPECT_NE(inodeOf(path), before);
  EXPECT_LT(std::filesystem::file_size(path), 151'000U);
  held->setInteger(3, "count");  // Into the file that was replaced.
  EXPECT_EQ(fresh->integerForKey("count"), 3);
  EXPECT_EQ(fresh->stringForKey("large")->size(), 150'000U);
}

// Each process sets its keys and raises its counter while a third one forces
// the file to be replaced again and again.
TEST(PreferenceFileStore, TwoProcessesAtOnceLoseNoKey) {
  constexpr int kKeys = 2000;
  const TemporaryDirectory directory;
  const std::string path = directory / "preferences.db";
  const auto work = [&](const std::string& name) {
    const auto store = opened(path);
    for (int i = 1; i <= kKeys; ++i) {
      store->setInteger(i, name + "count");
      store->setInteger(store->integerForKey("shared") + 1, "shared");
      store->setValue(name + std::to_string(i), name + std::to_string(i));
      EXPECT_EQ(store->integerForKey(name + "count"), i);
    }
    EXPECT_TRUE(store->synchronize().ok());
  };
  const pid_t first = inChild([&] { work("a"); });
  const pid_t second = inChild([&] { work("b"); });
  int replaced = 0;
  int running = 2;
  while (running > 0) {
    makeGarbage(*opened(path));
    const ino_t before = inodeOf(path);
    opened(path);
    if (inodeOf(path) != before) ++replaced;
    int status = 0;
    while (::waitpid(-1, &status, WNOHANG) > 0) {
      EXPECT_EQ(status, 0);
      --running;
    }
  }
  EXPECT_GT(replaced, 0);  // Else nothing was tried. A busy machine gives few turns.
  EXPECT_NE(first, second);
  const auto store = opened(path);
  for (const std::string name : {"a", "b"}) {
    EXPECT_EQ(store->integerForKey(name + "count"), kKeys);
    for (int i = 1; i <= kKeys; ++i)
      EXPECT_EQ(store->stringForKey(name + std::to_string(i)), name + std::to_string(i));
  }
}

TEST(PreferenceFileStore, AKilledProcessLosesNothingThatWasSet) {
  const TemporaryDirectory directory;
  const std::string path = directory / "preferences.db";
  std::mt19937 random(20240305);
  for (int round = 0; round < 20; ++round) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t child = inChild([&] {
      const auto store = opened(path);
      for (int i = 1;; ++i) {
        store->setInteger(i, "count");
        store->setValue(std::to_string(i), "text");
        if (i % 50 == 0) makeGarbage(*opened(path));
        if (::write(ends[1], &i, sizeof i) != sizeof i) break;
      }
    });
    ::close(ends[1]);
    const auto steps = static_cast<int>(random() % 200) + 1;
    int acknowledged = 0;
    for (int i = 0; i < steps; ++i)
      ASSERT_EQ(::read(ends[0], &acknowledged, sizeof acknowledged), 4);
    ::kill(child, SIGKILL);
    statusOf(child);
    while (::read(ends[0], &acknowledged, sizeof acknowledged) == sizeof acknowledged)
      continue;
    ::close(ends[0]);
    const auto store = opened(path);
    EXPECT_GE(store->integerForKey("count"), acknowledged);
    EXPECT_LE(store->integerForKey("count"), acknowledged + 1);
    EXPECT_GE(store->integerForKey("text"), acknowledged);
  }
}

TEST(PreferenceFileStore, AFullDiskIsReportedUntilTheValuesAreWritten) {
  const TemporaryDirectory directory;
  const std::string path = directory / "preferences.db";
  const int status = statusOf(inChild([&] {
    std::signal(SIGXFSZ, SIG_IGN);
    const auto store = opened(path);
    store->setInteger(1, "count");
    rlimit limit{};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    const rlim_t unlimited = limit.rlim_cur;
    limit.rlim_cur = std::filesystem::file_size(path) + 100;
    ::setrlimit(RLIMIT_FSIZE, &limit);
    store->setValue(std::string(500, 'x'), "text");
    EXPECT_EQ(store->synchronize().code(), Status::Code::noSpace);
    EXPECT_EQ(store->stringForKey("text")->size(), 500U);
    EXPECT_EQ(opened(path)->objectForKey("text"), std::nullopt);
    store->setInteger(2, "count");  // In its slot, which is there.
    EXPECT_EQ(opened(path)->integerForKey("count"), 2);
    limit.rlim_cur = unlimited;
    ::setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_TRUE(store->synchronize().ok());
  }));
  EXPECT_EQ(status, 0);
  EXPECT_EQ(opened(path)->stringForKey("text")->size(), 500U);
}

TEST(PreferenceFileStore, AValueTooDeepForTheFileCountsForTheRun) {
  const TemporaryDirectory directory;
  const std::string path = directory / "preferences.db";
  const auto store = opened(path);
  store->setValue(nested(40), "deep");
  store->setValue("kept", "other");
  EXPECT_EQ(store->objectForKey("deep"), nested(40));
  EXPECT_EQ(store->synchronize().code(), Status::Code::invalidArgument);
  EXPECT_EQ(opened(path)->stringForKey("other"), "kept");
  store->removeObjectForKey("deep");
  EXPECT_TRUE(store->synchronize().ok());
}

}  // namespace
}  // namespace varnok
