#include "settings/fields/export_type_configuration_view_controller.h"

#include <algorithm>
#include <array>

#include "app/preferences/preference_keys.h"
#include "platform/text_key.h"

namespace varnok {
namespace {

struct FieldSwitch {
  int tag;
  std::string_view key;   // The preference.
  std::string_view text;  // The key of the row's text.
  bool vCardOnly = false;
};
constexpr std::array kSwitches{
    FieldSwitch{1, key::EXPORT_CONF_PHONES, text_key::EXPORT_CONF_PHONES},
    FieldSwitch{2, key::EXPORT_CONF_EMAILS, text_key::EXPORT_CONF_EMAILS},
    FieldSwitch{3, key::EXPORT_CONF_URLS, text_key::EXPORT_CONF_URLS},
    FieldSwitch{4, key::EXPORT_CONF_ADRS, text_key::EXPORT_CONF_ADRS},
    FieldSwitch{5, key::EXPORT_CONF_DATES, text_key::EXPORT_CONF_DATES},
    FieldSwitch{6, key::EXPORT_CONF_NOTES, text_key::EXPORT_CONF_NOTES},
    FieldSwitch{7, key::EXPORT_CONF_PHOTOS, text_key::EXPORT_CONF_PHOTOS, /*vCardOnly=*/true},
    FieldSwitch{8, key::EXPORT_CONF_SHRINK, text_key::EXPORT_CONF_SHRINK, /*vCardOnly=*/true},
};

TableRow rowWithSwitch(std::string text, int tag, bool on) {
  TableRow row;
  row.text = std::move(text);
  row.accessoryView = TableSwitch{tag, on};
  return row;
}

}  // namespace

void ExportTypeConfigurationViewController::viewDidLoad() {
  dataSource_.clear();
  if (isVCF()) dataSource_.push_back(multipleFilesSection());
  dataSource_.push_back(fieldsSection(text_key::FIELDS, /*vCardOnly=*/false));
  if (isVCF()) dataSource_.push_back(fieldsSection(text_key::Optimization, /*vCardOnly=*/true));
}

std::vector<ScreenControl> ExportTypeConfigurationViewController::controls() const {
  return {{.name = "onTap_Done", .text = texts_.text(text_key::DONE)}};
}

bool ExportTypeConfigurationViewController::tapControl(std::string_view control, int /*segment*/) {
  if (control != "onTap_Done") return false;
  onTap_Done();
  return true;
}

bool ExportTypeConfigurationViewController::switchRow(const IndexPath& indexPath, bool on) {
  if (!hasRow(*this, indexPath)) return false;
  const std::optional<TableSwitch> control = cellForRowAtIndexPath(indexPath).accessoryView;
  if (!control) return false;
  if (control->tag == kMultipleVCFTag) {
    toggleMultipleVCF(on);
  } else {
    toggleSwitch(control->tag, on);
  }
  return true;
}

TableSection ExportTypeConfigurationViewController::multipleFilesSection() const {
  TableSection section;
  section.rows.push_back(
      rowWithSwitch(texts_.text(text_key::MULTIPLE_VCF), kMultipleVCFTag, preferences_.boolForKey(key::multipleVCF)));
  section.footer = texts_.text(text_key::MULTIPLE_VCF_INFO);
  return section;
}

TableSection ExportTypeConfigurationViewController::fieldsSection(std::string_view titleKey, bool vCardOnly) const {
  TableSection section;
  section.title = texts_.text(titleKey);
  for (const FieldSwitch& field : kSwitches) {
    if (field.vCardOnly != vCardOnly) continue;
    section.rows.push_back(rowWithSwitch(texts_.text(field.text), field.tag, preferences_.boolForKey(field.key)));
  }
  return section;
}

void ExportTypeConfigurationViewController::toggleSwitch(int tag, bool on) {
  const auto* field = std::ranges::find(kSwitches, tag, &FieldSwitch::tag);
  if (field != kSwitches.end() && (!field->vCardOnly || isVCF())) {
    preferences_.setObject(on ? "YES" : "NO", field->key);
  }
  preferences_.synchronize().ignore("the next backup reads the new value all the same");
  show(tag, on);
}

void ExportTypeConfigurationViewController::toggleMultipleVCF(bool on) {
  preferences_.setBool(on, key::multipleVCF);
  preferences_.synchronize().ignore("the next backup reads the new value all the same");
  show(kMultipleVCFTag, on);
}

bool ExportTypeConfigurationViewController::isVCF() const {
  return preferences_.stringForKey(key::EXPORT_TYPE) == "vcf";
}

void ExportTypeConfigurationViewController::show(int tag, bool on) {
  for (TableSection& section : dataSource_) {
    for (TableRow& row : section.rows) {
      if (row.accessoryView && row.accessoryView->tag == tag) row.accessoryView->on = on;
    }
  }
  presenter_.screenDidChange(*this);
}

}  // namespace varnok
