// Screen: one page of the application, without a toolkit. Plain state that any
// front end can draw, and actions that it can pass on; the touch application,
// the terminal and the tests know no more of a screen than this.
//
// Threads. Main thread.

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/index_path.h"
#include "platform/table.h"

namespace varnok {

// A button, a label or a segmented control outside the table.
struct ScreenControl {
  std::string name;  // The operation's or the field's own: "btn_Backup", "onClick_Done", "trash".
  std::string text;
  bool hidden = false;
  bool enabled = true;
  std::vector<std::string> segments = {};  // Titles, of a segmented control.

  bool operator==(const ScreenControl&) const = default;
};

struct ScreenProgress {
  int minValue = 0;
  int maxValue = 0;
  int currentValue = 0;
};

class Screen {
 public:
  Screen() = default;
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;
  virtual ~Screen() = default;

  virtual std::string_view screenName() const = 0;

  // Once, before the screen is first shown.
  virtual void viewDidLoad() {}

  // Each time the screen comes to the front: presented, or uncovered when the
  // one above it goes.
  virtual void viewWillAppear() {}

  // Of the title bar; nothing where there is none.
  virtual std::optional<std::string> title() const { return std::nullopt; }
  // The line above the table.
  virtual std::optional<std::string> tableHeader() const { return std::nullopt; }
  virtual std::vector<ScreenControl> controls() const { return {}; }
  virtual std::optional<ScreenProgress> progressBar() const { return std::nullopt; }

  // The table, asked row by row, so that a long one costs what is seen of it.
  // An index outside it is the caller's mistake.
  virtual int numberOfSections() const { return 0; }
  virtual int numberOfRowsInSection(int /*section*/) const { return 0; }
  virtual TableHeading headingOfSection(int /*section*/) const { return {}; }
  virtual TableRow cellForRowAtIndexPath(const IndexPath& /*indexPath*/) const { return {}; }
  // The strip at the side: entry i jumps to section i. Empty where there is none.
  virtual std::vector<std::string> sectionIndexTitles() const { return {}; }

  // What can be done to rows: several marked together, single ones deleted.
  // While the table is being edited every row offers that in plain sight.
  virtual bool allowsMultipleSelection() const { return false; }
  virtual bool allowsDeletion() const { return false; }
  virtual bool isEditing() const { return false; }

  // How far the table has been scrolled down, in points.
  virtual void scrollViewDidScroll(double /*contentOffset*/) {}

  // What the user did. False when the screen has no such thing, and then
  // nothing happened; a front end offers what controls() and the rows show.
  virtual bool tapControl(std::string_view /*control*/, int /*segment*/) { return false; }
  virtual bool selectRow(const IndexPath& /*indexPath*/) { return false; }
  virtual bool switchRow(const IndexPath& /*indexPath*/, bool /*on*/) { return false; }
  virtual bool pressRow(const IndexPath& /*indexPath*/) { return false; }
  virtual bool markRow(const IndexPath& /*indexPath*/, bool /*on*/) { return false; }
  virtual bool deleteRow(const IndexPath& /*indexPath*/) { return false; }
};

// A screen whose whole table is kept as sections.
class TableScreen : public Screen {
 public:
  virtual const std::vector<TableSection>& sections() const = 0;

  int numberOfSections() const final { return static_cast<int>(sections().size()); }
  int numberOfRowsInSection(int section) const final { return static_cast<int>(at(section).rows.size()); }
  TableHeading headingOfSection(int section) const final { return {at(section).title, at(section).footer}; }
  TableRow cellForRowAtIndexPath(const IndexPath& indexPath) const final {
    return at(indexPath.section).rows.at(static_cast<std::size_t>(indexPath.row));
  }

 private:
  const TableSection& at(int section) const { return sections().at(static_cast<std::size_t>(section)); }
};

// Whether the table of `screen` has that row.
bool hasRow(const Screen& screen, const IndexPath& indexPath);

// The whole table of `screen`, for those who print it.
std::vector<TableSection> tableOf(const Screen& screen);

}  // namespace varnok
