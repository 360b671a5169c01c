#include "ui/screen_adapter.h"

#include <algorithm>
#include <array>

namespace varnok {
namespace {

constexpr std::array<std::string_view, 3> kClosing{"onClick_Done", "onTap_Done", "close"};

// Controls that the page draws at a place of their own.
constexpr std::array<std::string_view, 5> kPlaced{"edit", "scrollTop", "activityIndicator", "onClick_Support", "trash"};

QString shown(const std::string& text) {
  return QString::fromStdString(text);
}

QStringList shown(const std::vector<std::string>& texts) {
  QStringList list;
  for (const std::string& text : texts)
    list.append(shown(text));
  return list;
}

}  // namespace

ScreenAdapter::ScreenAdapter(Screen& screen, QObject* parent)
    : QObject(parent), screen_(&screen), name_(shown(std::string(screen.screenName()))), table_(screen) {
  refresh();
}

void ScreenAdapter::detach() {
  screen_ = nullptr;
  table_.detach();
}

void ScreenAdapter::refresh() {
  if (screen_ == nullptr) return;
  title_ = shown(screen_->title().value_or(""));
  header_ = shown(screen_->tableHeader().value_or(""));
  progress_ = screen_->progressBar().value_or(ScreenProgress());
  multipleSelection_ = screen_->allowsMultipleSelection();
  deletable_ = screen_->allowsDeletion();
  editing_ = screen_->isEditing();
  readControls();
  table_.refresh();
  Q_EMIT changed();
}

void ScreenAdapter::readControls() {
  controls_.clear();
  buttons_.clear();
  closing_.clear();
  for (const ScreenControl& control : screen_->controls()) {
    const QString name = shown(control.name);
    const QVariantMap values{{"name", name},
                             {"text", shown(control.text)},
                             {"hidden", control.hidden},
                             {"enabled", control.enabled},
                             {"segments", shown(control.segments)}};
    controls_.insert(name, values);
    const std::string_view plain = control.name;
    if (std::ranges::find(kClosing, plain) != kClosing.end()) {
      closing_ = name;
    } else if (!control.hidden && !plain.starts_with("lbl_") && std::ranges::find(kPlaced, plain) == kPlaced.end()) {
      buttons_.append(values);
    }
  }
}

bool ScreenAdapter::valuesBeside() const {
  return name_ == "VarnokSettingsViewController";
}

bool ScreenAdapter::choice() const {
  return name_ == "ExportTypeViewController" || name_ == "ReminderViewController";
}

bool ScreenAdapter::tap(const QString& control, int segment) {
  if (screen_ == nullptr || control.isEmpty()) return false;
  const QVariantMap values = controls_.value(control).toMap();
  if (values.isEmpty() || values["hidden"].toBool() || !values["enabled"].toBool()) return false;
  return screen_->tapControl(control.toStdString(), segment);
}

bool ScreenAdapter::selectRow(int item) {
  const auto indexPath = table_.indexPathAt(item);
  return screen_ != nullptr && indexPath && screen_->selectRow(*indexPath);
}

bool ScreenAdapter::switchRow(int item, bool on) {
  const auto indexPath = table_.indexPathAt(item);
  return screen_ != nullptr && indexPath && screen_->switchRow(*indexPath, on);
}

bool ScreenAdapter::pressRow(int item) {
  const auto indexPath = table_.indexPathAt(item);
  return screen_ != nullptr && indexPath && screen_->pressRow(*indexPath);
}

bool ScreenAdapter::markRow(int item, bool on) {
  const auto indexPath = table_.indexPathAt(item);
  return screen_ != nullptr && indexPath && screen_->markRow(*indexPath, on);
}

bool ScreenAdapter::deleteRow(int item) {
  const auto indexPath = table_.indexPathAt(item);
  if (screen_ == nullptr || !deletable_ || !indexPath) return false;
  table_.expectRemoval(*indexPath);
  return screen_->deleteRow(*indexPath);
}

void ScreenAdapter::scrolled(double contentOffset) {
  if (screen_ != nullptr) screen_->scrollViewDidScroll(contentOffset);
}

}  // namespace varnok
