// TableModel: a screen's table as one flat list for a ListView: for each section
// its title, its rows and its footer. Rows are asked of the screen when they
// come into view, and remembered; a change is told only for those that differ.
//
// Main thread.

#pragma once

#include <QAbstractListModel>
#include <QHash>
#include <QQmlEngine>
#include <optional>
#include <vector>

#include "platform/screen.h"

namespace varnok {

class TableModel : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("belongs to a page")
  Q_PROPERTY(QStringList indexTitles READ indexTitles NOTIFY indexTitlesChanged)
  Q_PROPERTY(int rows READ rows NOTIFY rowsChanged)

 public:
  enum Kind { Header, Row, Footer };
  Q_ENUM(Kind)

  // The screen is asked until detach().
  explicit TableModel(const Screen& screen, QObject* parent = nullptr);

  // The screen is about to go: what was shown stays, nothing is asked any more.
  void detach() { screen_ = nullptr; }

  // The screen changed.
  void refresh();

  // The row about to be removed, so that the removal is shown at its place.
  void expectRemoval(const IndexPath& indexPath) { expectedRemoval_ = indexPath; }

  // Nothing for a title or footer.
  std::optional<IndexPath> indexPathAt(int item) const;
  Q_INVOKABLE bool isRow(int item) const { return indexPathAt(item).has_value(); }
  // -1 when there is no such row.
  Q_INVOKABLE int itemOfRow(int section, int row) const;
  // Where section `section` begins.
  Q_INVOKABLE int itemOfSection(int section) const;

  QStringList indexTitles() const { return indexTitles_; }
  int rows() const { return rows_; }

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

 Q_SIGNALS:
  void indexTitlesChanged();
  void rowsChanged();

 private:
  struct Section {
    int firstItem = 0;
    int rows = 0;
    bool hasTitle = false;
    bool hasFooter = false;
    QString title;
    QString footer;

    int items() const { return rows + (hasTitle ? 1 : 0) + (hasFooter ? 1 : 0); }
    int firstRow() const { return firstItem + (hasTitle ? 1 : 0); }
    bool sameShape(const Section& other) const {
      return rows == other.rows && hasTitle == other.hasTitle && hasFooter == other.hasFooter;
    }
  };
  using Layout = std::vector<Section>;

  Layout currentLayout() const;
  void adopt(Layout layout);
  bool adoptOneResized(Layout& layout);
  void refreshRows();
  void refreshIndexTitles();
  const Section* sectionAt(int item) const;
  const TableRow& rowAt(int item, const IndexPath& indexPath) const;
  bool isLast(const Section& section, const IndexPath& indexPath) const;
  QVariant headingData(const Section& section, int item, int role) const;
  QVariant rowData(const TableRow& row, int role) const;

  const Screen* screen_;
  Layout layout_;
  int items_ = 0;
  int rows_ = 0;
  QStringList indexTitles_;
  std::optional<IndexPath> expectedRemoval_;
  mutable QHash<int, TableRow> shown_;  // By item; those in view and some more.
};

}  // namespace varnok
