#include "ui/window_driver.h"

#include <QElapsedTimer>
#include <QTest>
#include <atomic>
#include <fstream>
#include <sstream>

#include "contacts/address_book.h"
#include "import/contact_importer.h"
#include "platform/check.h"

namespace varnok {
namespace {

constexpr int kLongest = 30000;  // Milliseconds that any piece of work may take.

std::atomic<int> complaints = 0;
QtMessageHandler usual = nullptr;

void countComplaint(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  const bool isComplaint = type != QtDebugMsg && type != QtInfoMsg;
  if (isComplaint && complaintPattern().match(message).hasMatch()) ++complaints;
  usual(type, context, message);
}

template <class Visit>
void visitVisible(const QQuickItem& item, Visit visit) {
  for (QQuickItem* child : item.childItems()) {
    if (!child->isVisible()) continue;
    visit(*child);
    visitVisible(*child, visit);
  }
}

QPoint middleOf(const QQuickItem& item) {
  return item.mapToScene({item.width() / 2, item.height() / 2}).toPoint();
}

}  // namespace

QRegularExpression complaintPattern() {
  return QRegularExpression("^(?!There are still \"\\d+\" items in the process of being created)");
}

void Complaints::install() {
  if (usual == nullptr) usual = qInstallMessageHandler(&countComplaint);
}

int Complaints::count() {
  return complaints;
}

WindowDriver::WindowDriver(const Setup& setup) {
  PlatformOptions options;
  options.home = home_.path().toStdString();
  options.languages = setup.languages;
  options.preferences = setup.preferences;
  Status status;
  application_ = Application::make(options, status);
  VARNOK_CHECK(application_ != nullptr);
  if (!setup.people.empty()) importPeople(setup.people);
  application_->desktop().setDark(setup.dark);
  application_->desktop().setMotion(setup.motion);
  application_->desktop().setTextScale(setup.textScale);
  QElapsedTimer timer;
  timer.start();
  window_ = application_->open();
  VARNOK_CHECK(window_ != nullptr);
  window_->resize(setup.size);
  bool shown = false;
  const auto connection = QObject::connect(window_, &QQuickWindow::frameSwapped, [&shown] { shown = true; });
  VARNOK_CHECK(QTest::qWaitFor([&shown] { return shown; }, kLongest));
  firstFrame_ = timer.elapsed();
  QObject::disconnect(connection);
  window_->requestActivate();
  settle();
}

void WindowDriver::importPeople(const std::string& path) {
  const Services services = this->services();
  const auto addressBook = ABAddressBookCreateWithOptions(services.contacts);
  ContactImporter importer(*addressBook, services.codec, services.clock);
  std::stringstream bytes;
  bytes << std::ifstream(path).rdbuf();
  importer.beginFile(path);
  VARNOK_CHECK(importer.feed(bytes.str()).ok());
  VARNOK_CHECK(importer.endFile().ok());
  VARNOK_CHECK(ABAddressBookSave(addressBook.get()).ok());
}

QQuickItem* WindowDriver::find(const QString& objectName) const {
  return findIn(*window_->contentItem(), objectName);
}

QQuickItem* WindowDriver::findIn(QQuickItem& item, const QString& objectName) {
  QQuickItem* found = nullptr;
  visitVisible(item, [&](QQuickItem& child) {
    if (child.objectName() == objectName && child.isEnabled()) found = &child;
  });
  return found;
}

std::vector<QQuickItem*> WindowDriver::textsIn(const QQuickItem& item) {
  std::vector<QQuickItem*> texts;
  visitVisible(item, [&](QQuickItem& child) {
    if (child.inherits("QQuickText") && !child.property("text").toString().isEmpty()) texts.push_back(&child);
  });
  return texts;
}

QQuickItem* WindowDriver::row(int section, int row) {
  const int item = page().table()->itemOfRow(section, row);
  QQuickItem* table = find("table");
  if (item < 0 || table == nullptr) return nullptr;
  QMetaObject::invokeMethod(table, "positionViewAtIndex", Q_ARG(int, item), Q_ARG(int, 1));
  settle();
  QQuickItem* shown = nullptr;
  QMetaObject::invokeMethod(table, "itemAtIndex", Q_RETURN_ARG(QQuickItem*, shown), Q_ARG(int, item));
  return shown;
}

bool WindowDriver::click(const QString& objectName) {
  const QQuickItem* item = find(objectName);
  if (item == nullptr) return false;
  click(*item);
  return true;
}

bool WindowDriver::clickRow(int section, int row) {
  const QQuickItem* item = this->row(section, row);
  if (item == nullptr) return false;
  click(*item);
  return true;
}

void WindowDriver::click(const QQuickItem& item) {
  QTest::mouseClick(window_, Qt::LeftButton, Qt::NoModifier, middleOf(item));
  settle();
}

void WindowDriver::press(const QString& objectName) {
  QTest::mouseClick(window_, Qt::LeftButton, Qt::NoModifier, middleOf(*find(objectName)));
}

void WindowDriver::type(const QString& text) {
  for (const QChar c : text)
    QTest::keyClick(window_, c.toLatin1());
  settle();
}

void WindowDriver::key(Qt::Key key) {
  QTest::keyClick(window_, key);
  settle();
}

void WindowDriver::swipe(const QQuickItem& item) {
  const int y = middleOf(item).y();
  const int end = static_cast<int>(item.width()) - 60;
  QTest::mousePress(window_, Qt::LeftButton, Qt::NoModifier, {end, y});
  for (int x = end; x > 60; x -= 20)
    QTest::mouseMove(window_, {x, y}, 5);
  QTest::mouseRelease(window_, Qt::LeftButton, Qt::NoModifier, {60, y}, 5);
  settle();
}

void WindowDriver::settle() {
  // Twice: the first answer may have set off more.
  for (int round = 0; round < 2; ++round) {
    QCoreApplication::processEvents();
    VARNOK_CHECK(QTest::qWaitFor([this] { return application_->tasks().idle(); }, kLongest));
    QTest::qWait(30);
  }
}

QImage WindowDriver::picture() {
  settle();
  return window_->grabWindow();
}

}  // namespace varnok
