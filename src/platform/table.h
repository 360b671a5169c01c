// A table of a screen as plain data: what the touch application draws, the
// terminal prints and the tests compare.

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace varnok {

// The accessory at a row's end. The numbers are the platform's.
enum class RowAccessory : int { none = 0, disclosure = 1 };

enum class RowSelection : int { none = 0, highlight = 1 };

struct TableSwitch {
  int tag = 0;  // Says what it switches.
  bool on = false;
  bool enabled = true;

  bool operator==(const TableSwitch&) const = default;
};

// A row that is one wide button.
struct TableButton {
  enum class Tone { plain, green, blue, red };  // Of its background.

  std::string title;
  bool enabled = true;
  Tone tone = Tone::plain;

  bool operator==(const TableButton&) const = default;
};

struct TableRow {
  std::string text;
  std::optional<std::string> detail;  // The value beside the text.
  RowAccessory accesorType = RowAccessory::none;
  RowSelection selectionStyle = RowSelection::none;
  bool checked = false;                      // Carries the checkmark of a choice.
  bool marked = false;                       // Chosen, in a table of multiple selection.
  std::optional<TableSwitch> accessoryView;  // A control in the row.
  std::optional<TableButton> button = std::nullopt;
  std::vector<std::string> segments = {};           // Titles of a momentary segmented control.
  std::optional<double> progress = std::nullopt;    // The filled fraction of a bar, 0 to 1.
  std::optional<std::string> badge = std::nullopt;  // A short text at the row's end.

  bool operator==(const TableRow&) const = default;
};

struct TableSection {
  std::optional<std::string> title;
  std::vector<TableRow> rows;
  std::optional<std::string> footer;

  bool operator==(const TableSection&) const = default;
};

struct TableHeading {
  std::optional<std::string> title;
  std::optional<std::string> footer;
};

// The keys under which a screen knows the parts of its table.
struct TableKeys {
  std::string_view title = "section.title";
  std::string_view rows = "section.rows";
  std::string_view footer = "sectionFooter";
  std::string_view text = "row.textLabel.text";
  std::string_view detail = "row.detailTextLabel.text";
  std::string_view accesorType = "row.accesorType";
  std::string_view selectionStyle = "row.selectionStyle";
  std::string_view accessoryView = "row.accessoryView";
};

// The table as text that a person can read and compare; absent parts are left
// out.
//
//   section.title: FIELDS
//   section.rows:
//     - row.textLabel.text: Phone Numbers
//       row.selectionStyle: 0
//       row.accesorType: 0
//       row.accessoryView: switch 1 on
//   sectionFooter: ...
std::string describe(const std::vector<TableSection>& sections, const TableKeys& keys = {});

}  // namespace varnok
