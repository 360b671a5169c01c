#include "platform/text_catalog.h"

#include <gtest/gtest.h>

#include <vector>

namespace varnok {
namespace {

// One text under the key "KEY".
class OneText final : public TextCatalog {
 public:
  explicit OneText(std::string text) : text_(std::move(text)) {}

 private:
  std::optional<std::string> lookup(std::string_view key, std::optional<std::int64_t> /*count*/) const override {
    return key == "KEY" ? std::optional(text_) : std::nullopt;
  }

  std::string text_;
};

TEST(TextCatalog, FillsPlaceholders) {
  struct Row {
    const char* name;
    const char* text;
    std::vector<std::string_view> arguments;
    const char* expected;
  };
  const Row rows[] = {
      {"in order", "%@ of %@", {"1", "2"}, "1 of 2"},
      {"numbered", "%2$@ of %1$@", {"1", "2"}, "2 of 1"},
      {"one twice", "%1$@, %1$@", {"a"}, "a, a"},
      {"a missing one becomes nothing and the result is trimmed", "Size: %@ %@", {"1.50 KB"}, "Size: 1.50 KB"},
      {"also at the beginning", "%2$@ %1$@", {"a"}, "a"},
      {"nothing is trimmed while all are there", " %@ ", {"a"}, " a "},
      {"without any argument", "%@", {}, ""},
      {"too many arguments", "%@", {"a", "b"}, "a"},
      {"a percent sign", "100%% of %@", {"x"}, "100% of x"},
      {"an escaped percent sign before the rest of a placeholder", "%%@", {"x"}, "%@"},
      {"a lone percent sign stays", "5 % %@ %", {"x"}, "5 % x %"},
      {"no argument has the number nought", "%0$@", {"x"}, "%0$@"},
      {"an argument is not searched for placeholders", "%@ %@", {"%@", "b"}, "%@ b"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const OneText catalog(row.text);
    // The interface takes a list as written at the call.
    const auto& a = row.arguments;
    const std::string actual = a.empty()       ? catalog.format("KEY", {})
                               : a.size() == 1 ? catalog.format("KEY", {a[0]})
                                               : catalog.format("KEY", {a[0], a[1]});
    EXPECT_EQ(actual, row.expected);
  }
}

TEST(TextCatalog, AnUnknownKeyIsItsOwnText) {
  const OneText catalog("%@%%");
  EXPECT_EQ(catalog.text("OTHER"), "OTHER");
  EXPECT_EQ(catalog.format("OTHER", {"x"}), "OTHER");
  EXPECT_EQ(catalog.formatCount("OTHER", 3), "OTHER");
  EXPECT_EQ(catalog.text("KEY"), "%@%%");
  EXPECT_EQ(catalog.formatCount("KEY", -3), "-3%");
}

}  // namespace
}  // namespace varnok
