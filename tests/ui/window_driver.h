// WindowDriver: the whole application over a home of its own, with its window
// driven as a finger, a mouse or a keyboard would. Main thread.

#pragma once

#include <QQuickItem>
#include <QQuickWindow>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <memory>
#include <string>
#include <vector>

#include "ui/application.h"

namespace varnok {

// Warnings that tell of a fault in a page. Rows far down that were still being
// made when a window went away are none.
QRegularExpression complaintPattern();

class WindowDriver {
 public:
  struct Setup {
    QSize size{390, 844};
    std::string languages = "en";
    std::vector<std::pair<std::string, std::string>> preferences = {};
    std::string people = {};  // A vCard file's path; empty: nobody.
    bool dark = false;
    bool motion = false;
    double textScale = 1;
  };

  explicit WindowDriver(const Setup& setup);

  Application& application() { return *application_; }
  QQuickWindow& window() { return *window_; }
  Services services() { return application_->platform().services(); }
  // The screen in front.
  Screen& front() { return application_->presenter().front(); }
  ScreenAdapter& page() { return *application_->presenter().pages().constLast(); }

  // The visible item of that name; the one in front where pages share one. Null
  // when there is none.
  QQuickItem* find(const QString& objectName) const;
  // The same, somewhere in `item`.
  static QQuickItem* findIn(QQuickItem& item, const QString& objectName);
  // The visible texts in `item`.
  static std::vector<QQuickItem*> textsIn(const QQuickItem& item);
  // The item that shows a row of the page in front, scrolled to; null when there
  // is no such row.
  QQuickItem* row(int section, int row);

  // False when there is no such item to click.
  bool click(const QString& objectName);
  bool clickRow(int section, int row);
  void click(const QQuickItem& item);
  // Without waiting for what it sets off.
  void press(const QString& objectName);
  void key(Qt::Key key);
  void type(const QString& text);
  // A finger along the row, from its end to its beginning.
  void swipe(const QQuickItem& item);

  // Until no work is left anywhere and what it changed is shown.
  void settle();

  QImage picture();

  // From before the first page was loaded until it was on the screen.
  qint64 millisecondsToFirstFrame() const { return firstFrame_; }

 private:
  void importPeople(const std::string& path);

  QTemporaryDir home_;
  std::unique_ptr<Application> application_;
  QQuickWindow* window_ = nullptr;  // The application's.
  qint64 firstFrame_ = 0;
};

// Counts what the pages complain of; installs itself for the process.
class Complaints {
 public:
  static void install();
  static int count();
};

}  // namespace varnok
