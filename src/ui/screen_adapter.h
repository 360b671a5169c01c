// ScreenAdapter: one screen for QML: plain data, and the actions passed on.
//
// A screen that is dismissed leaves its adapter behind for as long as its page
// slides away; the page then still shows what it showed. Main thread.

#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>

#include "platform/screen.h"
#include "ui/table_model.h"

namespace varnok {

class ScreenAdapter : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the presenter")
  Q_PROPERTY(QString name READ name CONSTANT)
  Q_PROPERTY(QString title READ title NOTIFY changed)
  Q_PROPERTY(QString header READ header NOTIFY changed)
  // By name: {text, hidden, enabled, segments}.
  Q_PROPERTY(QVariantMap controls READ controls NOTIFY changed)
  // The visible ones that are neither labels nor among those with a place of
  // their own, in order: {name, text, enabled, segments}.
  Q_PROPERTY(QVariantList buttons READ buttons NOTIFY changed)
  // The control that leaves the screen; empty when there is none.
  Q_PROPERTY(QString closing READ closing NOTIFY changed)
  Q_PROPERTY(int progressMax READ progressMax NOTIFY changed)
  Q_PROPERTY(int progressValue READ progressValue NOTIFY changed)
  Q_PROPERTY(varnok::TableModel* table READ table CONSTANT)
  Q_PROPERTY(bool valuesBeside READ valuesBeside CONSTANT)
  // Rows are values to choose among, one of them checked.
  Q_PROPERTY(bool choice READ choice CONSTANT)
  Q_PROPERTY(bool multipleSelection READ multipleSelection NOTIFY changed)
  Q_PROPERTY(bool deletable READ deletable NOTIFY changed)
  Q_PROPERTY(bool editing READ editing NOTIFY changed)

 public:
  explicit ScreenAdapter(Screen& screen, QObject* parent = nullptr);

  // Null after detach().
  const Screen* screen() const { return screen_; }
  void detach();
  void refresh();

  QString name() const { return name_; }
  QString title() const { return title_; }
  QString header() const { return header_; }
  QVariantMap controls() const { return controls_; }
  QVariantList buttons() const { return buttons_; }
  QString closing() const { return closing_; }
  int progressMax() const { return progress_.maxValue; }
  int progressValue() const { return progress_.currentValue; }
  TableModel* table() { return &table_; }
  // A row's detail is a value beside its text, not a line below it.
  bool valuesBeside() const;
  bool choice() const;
  bool multipleSelection() const { return multipleSelection_; }
  bool deletable() const { return deletable_; }
  bool editing() const { return editing_; }

  // What the user did; false when the screen has no such thing or is gone.
  // Rows are named by their place in the table model.
  Q_INVOKABLE bool tap(const QString& control, int segment = 0);
  Q_INVOKABLE bool close() { return tap(closing_); }
  Q_INVOKABLE bool selectRow(int item);
  Q_INVOKABLE bool switchRow(int item, bool on);
  Q_INVOKABLE bool pressRow(int item);
  Q_INVOKABLE bool markRow(int item, bool on);
  Q_INVOKABLE bool deleteRow(int item);
  Q_INVOKABLE void scrolled(double contentOffset);

 Q_SIGNALS:
  void changed();

 private:
  void readControls();

  Screen* screen_;
  QString name_;
  QString title_;
  QString header_;
  QVariantMap controls_;
  QVariantList buttons_;
  QString closing_;
  ScreenProgress progress_;
  bool multipleSelection_ = false;
  bool deletable_ = false;
  bool editing_ = false;
  TableModel table_;
};

}  // namespace varnok
