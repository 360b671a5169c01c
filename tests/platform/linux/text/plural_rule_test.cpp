#include "platform/linux/text/plural_rule.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace varnok {
namespace {

std::string nested(std::size_t depth) {
  return "nplurals=2; plural=" + std::string(depth, '(') + "n" + std::string(depth, ')') + ";";
}

TEST(PluralRule, FollowsRealRules) {
  struct Row {
    const char* name;
    std::string field;
    std::vector<std::pair<std::uint64_t, std::size_t>> forms;  // Count, expected form.
  };
  const Row rows[] = {
      {"English", "nplurals=2; plural=(n != 1);", {{0, 1}, {1, 0}, {2, 1}}},
      {"French", " nplurals = 2 ; plural = ( n>1 ) ; ", {{0, 0}, {1, 0}, {2, 1}}},
      {"Japanese, without a final semicolon", "nplurals=1; plural=0", {{0, 0}, {7, 0}}},
      {"Polish",
       "nplurals=3; plural=(n==1 ? 0 : n%10>=2 && n%10<=4 && (n%100<10 || n%100>=20) ? 1 : 2);",
       {{1, 0}, {2, 1}, {5, 2}, {12, 2}, {22, 1}, {112, 2}, {124, 1}}},
      {"Arabic",
       "nplurals=6; plural=n==0 ? 0 : n==1 ? 1 : n==2 ? 2 : n%100>=3 && n%100<=10 ? 3 : n%100>=11 ? 4 : 5;",
       {{0, 0}, {1, 1}, {2, 2}, {103, 3}, {111, 4}, {100, 5}}},
      {"Slovenian",
       "nplurals=4; plural=(n%100==1 ? 1 : n%100==2 ? 2 : n%100==3 || n%100==4 ? 3 : 0);",
       {{1, 1}, {102, 2}, {4, 3}, {5, 0}}},
      {"C precedence", "nplurals=9; plural=1 + 2 * 3 - n - 1 == 4 && !0 || 0;", {{2, 1}, {3, 0}}},
      {"not, twice", "nplurals=2; plural=!!n;", {{0, 0}, {5, 1}}},
      {"not binds to its operand only", "nplurals=2; plural=!n == 0;", {{0, 0}, {5, 1}}},
      {"division by zero gives zero", "nplurals=9; plural=4 / n + 4 % n;", {{0, 0}, {3, 2}}},
      {"a form beyond the last one is the first", "nplurals=2; plural=n;", {{1, 1}, {2, 0}}},
      {"the largest count", "nplurals=2; plural=n + 1 == 0;", {{std::numeric_limits<std::uint64_t>::max(), 1}}},
      {"deep, but not too deep", nested(40), {{1, 1}}},
  };
  for (const Row& row : rows) {
    const std::optional<PluralRule> rule = PluralRule::parse(row.field);
    ASSERT_TRUE(rule) << row.name;
    for (const auto& [count, form] : row.forms)
      EXPECT_EQ(rule->formFor(count), form) << row.name << ", " << count;
  }
}

TEST(PluralRule, RefusesWhatIsMalformed) {
  const std::string fields[] = {
      "",
      "nplurals=2;",
      "nplurals=0; plural=0;",
      "nplurals=99999999999999999999; plural=0;",
      "nplurals=2; plural=;",
      "nplurals=2; plural=n +;",
      "nplurals=2; plural=(n;",
      "nplurals=2; plural=n);",
      "nplurals=2; plural=n ? 1;",
      "nplurals=2; plural=n n;",
      "nplurals=2; plural=n = 1;",
      "nplurals=2; plural=x;",
      "nplurals=2; plural=-1;",
      nested(100000),
  };
  for (const std::string& field : fields)
    EXPECT_FALSE(PluralRule::parse(field)) << field.substr(0, 60);
}

}  // namespace
}  // namespace varnok
