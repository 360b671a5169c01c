#include "settings/fields/export_type_view_controller.h"

#include "app/preferences/preference_keys.h"
#include "platform/check.h"
#include "platform/text_key.h"

namespace varnok {

void ExportTypeViewController::viewDidLoad() {
  dataSource_ = {"vcf", "csv"};
  TableSection section;
  section.title = texts_.text(text_key::TYPE);
  const std::optional<std::string> stored = preferences_.stringForKey(key::EXPORT_TYPE);
  for (const std::string& type : dataSource_) {
    TableRow row;
    row.text = texts_.text(type);
    row.checked = type == stored;
    if (row.checked) selectedIndex_ = static_cast<std::int32_t>(section.rows.size());
    section.rows.push_back(std::move(row));
  }
  sections_ = {std::move(section)};
}

void ExportTypeViewController::didSelectRowAtIndexPath(const IndexPath& indexPath) {
  const auto count = static_cast<int>(dataSource_.size());
  if (indexPath.section != 0 || indexPath.row < 0 || indexPath.row >= count) return;
  selectedIndex_ = indexPath.row;
  int row = 0;
  for (TableRow& shown : sections_.front().rows)
    shown.checked = row++ == selectedIndex_;
  presenter_.screenDidChange(*this);
}

void ExportTypeViewController::onTap_Done() {
  VARNOK_CHECK(!dataSource_.empty());
  preferences_.setObject(dataSource_[static_cast<std::size_t>(selectedIndex_)], key::EXPORT_TYPE);
  delegate_.exportTypeDidFinish();
}

}  // namespace varnok
