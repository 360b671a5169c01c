// The screen in front as text for a terminal: lines of at most `columns`
// characters, read from top to bottom, that say everything in words and digits.

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/shell_mail_composer.h"
#include "platform/presentation_stack.h"

namespace varnok {

// A choice that the text offers.
struct ShellChoice {
  std::string key;  // What is typed: "3", "a", "b2".
  std::optional<IndexPath> row;
  std::string control = {};  // Where there is no row.
  int segment = 0;
  int button = 0;  // Of the question in front, where there is neither.
};

struct ScreenText {
  std::string text;
  std::vector<ShellChoice> choices;
};

ScreenText screenText(const PresentationStack& stack, const ShellMailComposer& mail, std::size_t columns);

}  // namespace varnok
