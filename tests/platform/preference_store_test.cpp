#include "platform/preference_store.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

#include "platform/testing/in_memory_preference_store.h"

namespace varnok {
namespace {

constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();

struct Reading {
  const char* name;
  Value stored;
  bool asBool;
  std::int64_t asInteger;
  double asDouble;
  std::optional<std::string> asString;
};

void PrintTo(const Reading& row, std::ostream* out) {
  *out << row.name;
}

struct ByName {
  std::string operator()(const ::testing::TestParamInfo<Reading>& row) const { return row.param.name; }
};

class TypedReads : public ::testing::TestWithParam<Reading> {};

TEST_P(TypedReads, ConvertWhatIsStored) {
  const Reading& row = GetParam();
  InMemoryPreferenceStore store;
  store.setValue(row.stored, "key");
  EXPECT_EQ(store.boolForKey("key"), row.asBool);
  EXPECT_EQ(store.integerForKey("key"), row.asInteger);
  EXPECT_DOUBLE_EQ(store.doubleForKey("key"), row.asDouble);
  EXPECT_EQ(store.stringForKey("key"), row.asString);
  EXPECT_EQ(store.objectForKey("key"), row.stored);
}

Reading text(const char* name, const char* stored, bool asBool, std::int64_t asInteger, double asDouble) {
  return {name, stored, asBool, asInteger, asDouble, stored};
}

INSTANTIATE_TEST_SUITE_P(
    , TypedReads,
    ::testing::Values(
        text("Yes", "YES", true, 0, 0), text("No", "NO", false, 0, 0), text("MixedCase", "Yes", true, 0, 0),
        text("True", "true", true, 0, 0), text("False", "false", false, 0, 0), text("Empty", "", false, 0, 0),
        text("BlanksAlone", "  ", false, 0, 0), text("BlanksAndTabBeforeYes", " \t y", true, 0, 0),
        text("Plus", "+1", true, 1, 1), text("Minus", "-1", true, -1, -1), text("TwoSigns", "+-1", false, 0, 0),
        text("SignThenYes", "-yes", true, 0, 0), text("Zero", "0", false, 0, 0), text("Zeros", "000", false, 0, 0),
        text("ZerosThenYes", "00Y", true, 0, 0), text("BlankSignZeros", " -007", true, -7, -7),
        text("NumberThenText", " 12abc", true, 12, 12), text("TextThenNumber", "abc12", false, 0, 0),
        text("NotHexadecimal", "0x1", false, 0, 0), text("Exponent", "1e3", true, 1, 1000),
        text("Fraction", "2.75", true, 2, 2.75), text("FractionBelowOne", "0.5", false, 0, 0.5),
        text("TooLargeForAnInteger", "99999999999999999999", true, kMost, 1e20),
        text("TooSmallForAnInteger", "-99999999999999999999", true, kLeast, -1e20),
        Reading{"BoolTrue", true, true, 1, 1, "1"}, Reading{"BoolFalse", false, false, 0, 0, "0"},
        Reading{"Integer", 42, true, 42, 42, "42"}, Reading{"IntegerZero", 0, false, 0, 0, "0"},
        Reading{"RealIsTruncated", -2.9, true, -2, -2.9, "-2.9"}, Reading{"RealBelowOne", 0.25, true, 0, 0.25, "0.25"},
        Reading{"SecondsHaveNoExponent", 1709647629.5, true, 1709647629, 1709647629.5, "1709647629.5"},
        Reading{"HugeReal", 1e300, true, kMost, 1e300, "1e+300"},
        Reading{"HugeNegativeReal", -1e300, true, kLeast, -1e300, "-1e+300"},
        Reading{"InstantIsNoNumber", Instant(std::chrono::seconds(7)), false, 0, 0, std::nullopt},
        Reading{"ArrayIsNoNumber", ValueArray{Value(1)}, false, 0, 0, std::nullopt},
        Reading{"DictionaryIsNoNumber", ValueDictionary{{"a", Value(1)}}, false, 0, 0, std::nullopt}),
    ByName());

TEST(PreferenceStore, AbsentKeysReadAsNothing) {
  const InMemoryPreferenceStore store;
  EXPECT_FALSE(store.boolForKey("key"));
  EXPECT_EQ(store.integerForKey("key"), 0);
  EXPECT_EQ(store.doubleForKey("key"), 0.0);
  EXPECT_EQ(store.stringForKey("key"), std::nullopt);
  EXPECT_EQ(store.objectForKey("key"), std::nullopt);
  EXPECT_EQ(store.originOf("key"), PreferenceStore::Origin::absent);
}

TEST(PreferenceStore, LooksInTheRunThenTheStoredThenTheRegisteredLayer) {
  using Origin = PreferenceStore::Origin;
  InMemoryPreferenceStore store;
  store.registerDefaults({{"key", "registered"}, {"other", "registered"}});
  EXPECT_EQ(store.stringForKey("key"), "registered");
  EXPECT_EQ(store.originOf("key"), Origin::registered);
  store.setValue("stored", "key");
  EXPECT_EQ(store.stringForKey("key"), "stored");
  EXPECT_EQ(store.originOf("key"), Origin::stored);
  store.setVolatileValue("run", "key");
  EXPECT_EQ(store.stringForKey("key"), "run");
  EXPECT_EQ(store.originOf("key"), Origin::run);
  store.removeObjectForKey("key");
  EXPECT_EQ(store.stringForKey("key"), "registered");
  store.registerDefaults({{"other", "again"}});
  EXPECT_EQ(store.stringForKey("key"), std::nullopt);
  EXPECT_EQ(store.stringForKey("other"), "again");
}

TEST(PreferenceStore, ASetChangesTheRunLayerToo) {
  InMemoryPreferenceStore store;
  store.setVolatileValue("run", "key");
  store.setInteger(5, "key");
  EXPECT_EQ(store.integerForKey("key"), 5);
  EXPECT_EQ(store.originOf("key"), PreferenceStore::Origin::run);
}

TEST(PreferenceStore, SwitchesReadTogetherFollowEveryChange) {
  constexpr std::array<std::string_view, 2> kKeys{"one", "two"};
  constexpr std::array<std::string_view, 1> kOther{"other"};
  InMemoryPreferenceStore store;
  EXPECT_EQ(store.boolsForKeys(kKeys), 0b00U);
  store.registerDefaults({{"one", "YES"}, {"two", "NO"}, {"other", "YES"}});
  EXPECT_EQ(store.boolsForKeys(kKeys), 0b01U);
  EXPECT_EQ(store.boolsForKeys(kOther), 0b1U);
  store.setValue("YES", "two");
  EXPECT_EQ(store.boolsForKeys(kKeys), 0b11U);
  store.setBool(false, "one");
  EXPECT_EQ(store.boolsForKeys(kKeys), 0b10U);
  store.removeObjectForKey("one");
  EXPECT_EQ(store.boolsForKeys(kKeys), 0b11U);
  store.setVolatileValue("NO", "one");
  EXPECT_EQ(store.boolsForKeys(kKeys), 0b10U);
  store.setValue("YES", "one");
  EXPECT_EQ(store.boolsForKeys(kKeys), 0b11U);
}

TEST(PreferenceStore, TakesNumbersInTurn) {
  InMemoryPreferenceStore store;
  store.flushStatus = {Status::Code::noSpace, "full"};
  Status status;
  EXPECT_EQ(store.takeNumberForKey("key", status), 0);
  EXPECT_EQ(status.code(), Status::Code::noSpace);
  EXPECT_EQ(store.takeNumberForKey("key", status), 1);
  EXPECT_EQ(store.integerForKey("key"), 2);
  EXPECT_EQ(store.flushes, 2);
}

}  // namespace
}  // namespace varnok
