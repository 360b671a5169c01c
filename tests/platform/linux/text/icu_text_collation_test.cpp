#include "platform/linux/text/icu_text_collation.h"

#include <gtest/gtest.h>

namespace varnok {
namespace {

TEST(IcuTextCollation, OrdersAsTheLanguageDoes) {
  struct Row {
    const char* locale;
    std::string before;
    std::string after;
  };
  const Row rows[] = {
      {"de_DE", "ärger", "Zebra"},
      {"sv_SE", "Zebra", "ärger"},
      {"tr_TR", "ısı", "isim"},
      {"en", "", " "},
      {"en", " ", "7"},
      {"en", "7", "a"},
      {"en", "Jose", "José"},
      {"no_such_language", "a", "B"},
      {"en", "a", std::string(500, 'b')},
      {"en", "a\xFF", "b"},
  };
  for (const Row& row : rows) {
    const IcuTextCollation collation(row.locale);
    EXPECT_LT(collation.sortKey(row.before), collation.sortKey(row.after)) << row.before << " " << row.after;
  }
}

TEST(IcuTextCollation, TakesLargeAndSmallLettersForTheSame) {
  const IcuTextCollation collation("de_DE");
  EXPECT_EQ(collation.sortKey("ÄRGER"), collation.sortKey("ärger"));
  EXPECT_NE(collation.sortKey("Arger"), collation.sortKey("Ärger"));
}

TEST(IcuTextCollation, KeysOneBehindTheOtherOrderByTheFirstText) {
  const IcuTextCollation collation("en");
  EXPECT_LT(collation.sortKey("Ada") + collation.sortKey("Zander"),
            collation.sortKey("Adam") + collation.sortKey("Adler"));
}

TEST(IcuTextCollation, WritesCapitalsOfTheLanguage) {
  EXPECT_EQ(IcuTextCollation("tr_TR").upperCase("iı"), "İI");
  EXPECT_EQ(IcuTextCollation("de_DE").upperCase("iß"), "ISS");
  EXPECT_EQ(IcuTextCollation("en").upperCase("\xC3"), "\uFFFD");
}

}  // namespace
}  // namespace varnok
