#include "ui/table_model.h"

#include <algorithm>
#include <cstdlib>

namespace varnok {
namespace {

enum Role : int {
  kKind = Qt::UserRole,
  kText,
  kDetail,
  kAddress,
  kNote,
  kFirst,
  kLast,
  kApart,
  kBlank,
  kDisclosure,
  kSelectable,
  kChecked,
  kMarked,
  kSwitchState,
  kButton,
  kTone,
  kPressable,
  kSegments,
  kProgress,
  kBadge,
};

// More rows than any window shows at a time. Beyond it those far from the one
// asked for last are forgotten.
constexpr int kMostRemembered = 200;
constexpr int kNear = 80;

QString shown(const std::string& text) {
  return QString::fromStdString(text);
}

bool isAddress(std::string_view text) {
  return text.starts_with("http://") || text.starts_with("https://");
}

// A row that shows an address has it first, two blanks before anything else.
std::string_view addressOf(std::string_view text) {
  return isAddress(text) ? text.substr(0, text.find("  ")) : std::string_view();
}

bool isBlank(const TableRow& row) {
  return row.text.empty() && !row.detail && !row.accessoryView && !row.button && row.segments.empty() &&
         !row.progress && !row.badge && row.selectionStyle == RowSelection::none;
}

}  // namespace

TableModel::TableModel(const Screen& screen, QObject* parent) : QAbstractListModel(parent), screen_(&screen) {
  adopt(currentLayout());
  refreshIndexTitles();
}

QHash<int, QByteArray> TableModel::roleNames() const {
  return {{kKind, "kind"},
          {kText, "text"},
          {kDetail, "detail"},
          {kAddress, "address"},
          {kNote, "note"},
          {kFirst, "first"},
          {kLast, "last"},
          {kApart, "apart"},
          {kBlank, "blank"},
          {kDisclosure, "disclosure"},
          {kSelectable, "selectable"},
          {kChecked, "checked"},
          {kMarked, "marked"},
          {kSwitchState, "switchState"},
          {kButton, "button"},
          {kTone, "tone"},
          {kPressable, "pressable"},
          {kSegments, "segments"},
          {kProgress, "progress"},
          {kBadge, "badge"}};
}

int TableModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : items_;
}

TableModel::Layout TableModel::currentLayout() const {
  Layout layout;
  int firstItem = 0;
  const int sections = screen_->numberOfSections();
  for (int index = 0; index < sections; ++index) {
    const TableHeading heading = screen_->headingOfSection(index);
    Section section;
    section.firstItem = firstItem;
    section.rows = screen_->numberOfRowsInSection(index);
    section.title = shown(heading.title.value_or(""));
    section.footer = shown(heading.footer.value_or(""));
    section.hasTitle = !section.title.isEmpty();
    section.hasFooter = !section.footer.isEmpty();
    firstItem += section.items();
    layout.push_back(std::move(section));
  }
  return layout;
}

void TableModel::adopt(Layout layout) {
  layout_ = std::move(layout);
  items_ = layout_.empty() ? 0 : layout_.back().firstItem + layout_.back().items();
  const int before = rows_;
  rows_ = 0;
  for (const Section& section : layout_)
    rows_ += section.rows;
  if (before != rows_) Q_EMIT rowsChanged();
}

void TableModel::refresh() {
  if (screen_ == nullptr) return;
  Layout layout = currentLayout();
  if (std::ranges::equal(layout, layout_, &Section::sameShape)) {
    adopt(std::move(layout));
    refreshRows();
  } else if (!adoptOneResized(layout)) {
    beginResetModel();
    shown_.clear();
    adopt(std::move(layout));
    endResetModel();
  }
  expectedRemoval_.reset();
  refreshIndexTitles();
}

// Rows came to or went from one section alone: the view keeps its place. False
// when more has changed.
bool TableModel::adoptOneResized(Layout& layout) {
  if (layout.size() != layout_.size()) return false;
  const auto different = [](const Section& a, const Section& b) { return !a.sameShape(b); };
  const auto [before, after] = std::ranges::mismatch(layout_, layout, &Section::sameShape);
  const auto next = std::mismatch(std::next(before), layout_.end(), std::next(after), layout.end(),
                                  [&](const Section& a, const Section& b) { return !different(a, b); });
  if (next.first != layout_.end()) return false;
  if (before->hasTitle != after->hasTitle || before->hasFooter != after->hasFooter) return false;
  const int section = static_cast<int>(before - layout_.begin());
  const int change = after->rows - before->rows;
  const bool known = expectedRemoval_ && expectedRemoval_->section == section && change == -1;
  const int row = known ? expectedRemoval_->row : std::min(before->rows, after->rows);
  const int first = before->firstRow() + row;
  const int last = first + std::abs(change) - 1;
  shown_.clear();
  if (change < 0) {
    beginRemoveRows({}, first, last);
    adopt(std::move(layout));
    endRemoveRows();
  } else {
    beginInsertRows({}, first, last);
    adopt(std::move(layout));
    endInsertRows();
  }
  if (items_ > 0) Q_EMIT dataChanged(index(0), index(items_ - 1));
  return true;
}

void TableModel::refreshRows() {
  const QHash<int, TableRow> before = std::exchange(shown_, {});
  for (auto remembered = before.cbegin(); remembered != before.cend(); ++remembered) {
    const auto indexPath = indexPathAt(remembered.key());
    if (!indexPath) continue;
    if (rowAt(remembered.key(), *indexPath) == remembered.value()) continue;
    const QModelIndex changed = index(remembered.key());
    Q_EMIT dataChanged(changed, changed);
  }
  for (const Section& section : layout_) {
    if (section.hasTitle) Q_EMIT dataChanged(index(section.firstItem), index(section.firstItem), {kText});
    if (!section.hasFooter) continue;
    const QModelIndex footer = index(section.firstRow() + section.rows);
    Q_EMIT dataChanged(footer, footer, {kText});
  }
}

void TableModel::refreshIndexTitles() {
  QStringList titles;
  for (const std::string& title : screen_->sectionIndexTitles())
    titles.append(shown(title));
  if (titles == indexTitles_) return;
  indexTitles_ = std::move(titles);
  Q_EMIT indexTitlesChanged();
}

const TableModel::Section* TableModel::sectionAt(int item) const {
  if (item < 0 || item >= items_) return nullptr;
  // The last one that begins at or before it; empty sections have no items.
  const auto after = std::ranges::upper_bound(layout_, item, {}, &Section::firstItem);
  return &*std::prev(after);
}

std::optional<IndexPath> TableModel::indexPathAt(int item) const {
  const Section* section = sectionAt(item);
  if (section == nullptr) return std::nullopt;
  const int row = item - section->firstRow();
  if (row < 0 || row >= section->rows) return std::nullopt;
  return IndexPath{static_cast<int>(section - layout_.data()), row};
}

int TableModel::itemOfRow(int section, int row) const {
  if (section < 0 || section >= static_cast<int>(layout_.size())) return -1;
  const Section& found = layout_[static_cast<std::size_t>(section)];
  return row < 0 || row >= found.rows ? -1 : found.firstRow() + row;
}

int TableModel::itemOfSection(int section) const {
  if (section < 0 || section >= static_cast<int>(layout_.size())) return -1;
  return layout_[static_cast<std::size_t>(section)].firstItem;
}

const TableRow& TableModel::rowAt(int item, const IndexPath& indexPath) const {
  static const TableRow kNone;
  if (const auto found = shown_.constFind(item); found != shown_.cend()) return *found;
  if (screen_ == nullptr) return kNone;
  if (shown_.size() >= kMostRemembered) {
    shown_.removeIf([item](const auto& entry) { return std::abs(entry.key() - item) > kNear; });
  }
  return *shown_.insert(item, screen_->cellForRowAtIndexPath(indexPath));
}

// A row with nothing on it takes no place: the one before it ends the group.
bool TableModel::isLast(const Section& section, const IndexPath& indexPath) const {
  if (indexPath.row + 1 == section.rows) return true;
  if (indexPath.row + 2 != section.rows) return false;
  return isBlank(rowAt(section.firstRow() + indexPath.row + 1, {indexPath.section, indexPath.row + 1}));
}

QVariant TableModel::data(const QModelIndex& index, int role) const {
  const Section* section = sectionAt(index.row());
  if (section == nullptr) return {};
  const auto indexPath = indexPathAt(index.row());
  if (!indexPath) return headingData(*section, index.row(), role);
  switch (role) {
    case kKind: return Row;
    case kFirst: return indexPath->row == 0;
    case kLast: return isLast(*section, *indexPath);
    case kApart: return indexPath->row == 0 && !section->hasTitle && index.row() > 0;
    default: return rowData(rowAt(index.row(), *indexPath), role);
  }
}

QVariant TableModel::headingData(const Section& section, int item, int role) const {
  const bool isTitle = section.hasTitle && item == section.firstItem;
  switch (role) {
    case kKind: return isTitle ? Header : Footer;
    case kText: return isTitle ? section.title : section.footer;
    default: return rowData(TableRow(), role);
  }
}

QVariant TableModel::rowData(const TableRow& row, int role) const {
  switch (role) {
    case kText: return shown(row.text);
    case kDetail: return shown(row.detail.value_or(""));
    case kAddress: return shown(std::string(addressOf(row.text)));
    case kNote: {
      const std::size_t length = addressOf(row.text).size();
      return length == 0 ? QString() : shown(row.text.substr(length)).trimmed();
    }
    case kFirst:
    case kLast:
    case kApart: return false;
    case kBlank: return isBlank(row);
    case kDisclosure: return row.accesorType == RowAccessory::disclosure;
    case kSelectable: return row.selectionStyle == RowSelection::highlight;
    case kChecked: return row.checked;
    case kMarked: return row.marked;
    case kSwitchState: return row.accessoryView ? int{row.accessoryView->on} : -1;
    case kButton: return shown(row.button ? row.button->title : "");
    case kTone: return row.button ? static_cast<int>(row.button->tone) : 0;
    case kPressable: return row.accessoryView ? row.accessoryView->enabled : !row.button || row.button->enabled;
    case kSegments: {
      QStringList titles;
      for (const std::string& title : row.segments)
        titles.append(shown(title));
      return titles;
    }
    case kProgress: return row.progress.value_or(-1.0);
    case kBadge: return shown(row.badge.value_or(""));
    default: return {};
  }
}

}  // namespace varnok
