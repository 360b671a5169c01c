#include "app/preferences/choice_screen.h"

#include "platform/check.h"
#include "platform/text_key.h"

namespace varnok {

void ChoiceScreen::viewDidLoad() {
  dataSource_ = choice_.values;
  TableSection section;
  section.title = texts_.text(choice_.headerText);
  const std::optional<std::string> stored = preferences_.stringForKey(choice_.preference);
  for (const std::string& value : dataSource_) {
    TableRow row;
    row.text = texts_.text(value);
    row.checked = value == stored;
    if (row.checked) selectedIndex_ = static_cast<std::int32_t>(section.rows.size());
    section.rows.push_back(std::move(row));
  }
  sections_ = {std::move(section)};
}

std::vector<ScreenControl> ChoiceScreen::controls() const {
  return {{.name = "onTap_Done", .text = texts_.text(text_key::DONE)}};
}

bool ChoiceScreen::tapControl(std::string_view control, int /*segment*/) {
  if (control != "onTap_Done") return false;
  onTap_Done();
  return true;
}

bool ChoiceScreen::selectRow(const IndexPath& indexPath) {
  if (!hasRow(*this, indexPath)) return false;
  didSelectRowAtIndexPath(indexPath);
  return true;
}

void ChoiceScreen::didSelectRowAtIndexPath(const IndexPath& indexPath) {
  if (!hasRow(*this, indexPath)) return;
  selectedIndex_ = indexPath.row;
  int row = 0;
  for (TableRow& shown : sections_.front().rows)
    shown.checked = row++ == selectedIndex_;
  presenter_.screenDidChange(*this);
}

void ChoiceScreen::onTap_Done() {
  VARNOK_CHECK(!dataSource_.empty());
  preferences_.setObject(dataSource_[static_cast<std::size_t>(selectedIndex_)], choice_.preference);
  didFinish();
}

}  // namespace varnok
