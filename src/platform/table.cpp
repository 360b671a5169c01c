#include "platform/table.h"

#include <array>

#include <fmt/format.h>

namespace varnok {
namespace {

void appendLine(std::string& text, std::string_view indent, std::string_view key, std::string_view value) {
  for (const std::string_view piece : {indent, key, std::string_view(": "), value, std::string_view("\n")})
    text += piece;
}

std::string described(const TableSwitch& control) {
  return "switch " + std::to_string(control.tag) + (control.on ? " on" : " off") + (control.enabled ? "" : " disabled");
}

std::string described(const TableButton& button) {
  constexpr std::array kTones{"plain", "green", "blue", "red"};
  return fmt::format("{} button {}{}", kTones[static_cast<std::size_t>(button.tone)], button.title,
                     button.enabled ? "" : " disabled");
}

void appendRow(std::string& text, const TableRow& row, const TableKeys& keys) {
  constexpr std::string_view kIndent = "    ";
  appendLine(text, "  - ", keys.text, row.text);
  if (row.detail) appendLine(text, kIndent, keys.detail, *row.detail);
  appendLine(text, kIndent, keys.selectionStyle, std::to_string(static_cast<int>(row.selectionStyle)));
  appendLine(text, kIndent, keys.accesorType, std::to_string(static_cast<int>(row.accesorType)));
  if (row.accessoryView) appendLine(text, kIndent, keys.accessoryView, described(*row.accessoryView));
  if (row.button) appendLine(text, kIndent, keys.accessoryView, described(*row.button));
  for (const std::string& segment : row.segments)
    appendLine(text, kIndent, keys.accessoryView, "segment " + segment);
  if (row.progress) appendLine(text, kIndent, keys.accessoryView, fmt::format("progress {:.2f}", *row.progress));
  if (row.badge) appendLine(text, kIndent, keys.accessoryView, "badge " + *row.badge);
  if (row.checked) text += "    checkmark\n";
  if (row.marked) text += "    marked\n";
}

}  // namespace

std::string describe(const std::vector<TableSection>& sections, const TableKeys& keys) {
  std::string text;
  for (const TableSection& section : sections) {
    if (section.title) appendLine(text, "", keys.title, *section.title);
    text += keys.rows;
    text += ":\n";
    for (const TableRow& row : section.rows)
      appendRow(text, row, keys);
    if (section.footer) appendLine(text, "", keys.footer, *section.footer);
  }
  return text;
}

}  // namespace varnok
