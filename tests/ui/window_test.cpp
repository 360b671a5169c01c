// The application used through its window: clicks, keys and swipes on one side,
// files, preferences and people on the other.

#include <QClipboard>
#include <QDateTime>
#include <QDir>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QTest>
#include <algorithm>
#include <fstream>
#include <future>

#include "app/preferences/preference_keys.h"
#include "contacts/address_book.h"
#include "ui/window_driver.h"
#include "web/http/http_test_client.h"

namespace varnok {
namespace {

WindowDriver::Setup withPeople(QSize size = {390, 844}) {
  WindowDriver::Setup setup;
  setup.size = size;
  setup.people = VARNOK_SAMPLE;
  return setup;
}

int peopleIn(WindowDriver& driver) {
  return ABAddressBookGetPersonCount(ABAddressBookCreateWithOptions(driver.services().contacts).get());
}

QStringList backupsOf(WindowDriver& driver) {
  return QDir(QString::fromStdString(driver.services().documents)).entryList(QDir::Files);
}

// A backup, its first-time notice answered.
void makeBackup(WindowDriver& driver) {
  QVERIFY(driver.click("btn_Backup"));
  if (driver.find("answer0") != nullptr) driver.click("answer0");
}

// The list of backups, one of them the last, one older.
void openBackups(WindowDriver& driver) {
  makeBackup(driver);
  const QString documents = QString::fromStdString(driver.services().documents);
  QVERIFY(QFile::copy(documents + "/" + backupsOf(driver).constFirst(), documents + "/older.vcf"));
  driver.click("btn_Settings");
  QVERIFY(driver.clickRow(1, 0));
  QCOMPARE(driver.page().table()->rows(), 2);
}

int rowOf(WindowDriver& driver, const QString& text) {
  const TableModel& table = *driver.page().table();
  const int role = table.roleNames().key("text");
  for (int row = 0; table.itemOfRow(0, row) >= 0; ++row) {
    if (table.data(table.index(table.itemOfRow(0, row)), role) == text) return row;
  }
  return -1;
}

}  // namespace

class WindowTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  // The pages have nothing to complain of.
  void init() { QTest::failOnWarning(complaintPattern()); }

  void backupWritesTheFileAndSaysSo();
  void aCancelledBackupLeavesNoFile();
  void aMailAsksForWhomItIs();
  void settingsSwitchStoresThePreference();
  void choiceOfAFormatIsShownAndUsed();
  void duplicatesAreRemovedAndTheirPageCloses();
  void aBackupIsDeletedBySwipeMouseOrKey_data();
  void aBackupIsDeletedBySwipeMouseOrKey();
  void theLastBackupStays();
  void markedPeopleAreDeletedAfterAQuestion();
  void wholeWayByKeyboard();
  void wideWindowShowsTheSettingsBesideTheirPage();
  void webAccessServesUntilItIsSwitchedOff();
  void aReminderIsPlannedAndCancelled();
  void anEmptyBookOffersAnImport();
  void aFileThatIsNoCardChangesNothing();
  void hebrewRunsFromTheRight();
  void nothingIsCutAtTwiceTheTextSize();
};

void WindowTest::backupWritesTheFileAndSaysSo() {
  WindowDriver driver(withPeople());
  const QString ready = driver.find("lbl_Backup")->property("text").toString();
  QVERIFY2(ready.startsWith(QString::number(peopleIn(driver))), qPrintable(ready));
  QVERIFY(driver.find("btn_Send") == nullptr);
  makeBackup(driver);
  QCOMPARE(backupsOf(driver).size(), 1);
  QFile file(QString::fromStdString(driver.services().documents) + "/" + backupsOf(driver).constFirst());
  QVERIFY(file.open(QIODevice::ReadOnly));
  QCOMPARE(file.readAll().count("BEGIN:VCARD"), peopleIn(driver));
  QVERIFY(driver.find("btn_Send") != nullptr);
  QVERIFY(driver.find("btn_Cancel") == nullptr);
}

void WindowTest::aCancelledBackupLeavesNoFile() {
  const QTemporaryDir folder;
  WindowDriver::Setup setup;
  setup.people = folder.filePath("many.vcf").toStdString();
  {
    std::ofstream many(setup.people);
    for (int i = 0; i < 5000; ++i)
      many << "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Person " << i << "\r\nTEL:" << i << "\r\nEND:VCARD\r\n";
  }
  WindowDriver driver(setup);
  driver.press("btn_Backup");
  QVERIFY(QTest::qWaitFor([&] { return driver.find("btn_Cancel") != nullptr && driver.page().progressValue() > 0; }));
  QVERIFY(driver.page().progressValue() < 5000);
  driver.click("btn_Cancel");
  QCOMPARE(backupsOf(driver), QStringList());
  QVERIFY(driver.find("btn_Send") == nullptr);
  QCOMPARE(peopleIn(driver), 5000);
  makeBackup(driver);
  QCOMPARE(backupsOf(driver).size(), 1);
}

// Without a mail program there is sendmail, which knows nobody.
void WindowTest::aMailAsksForWhomItIs() {
  const QTemporaryDir folder;
  const QString sent = folder.filePath("sent");
  const QString program = folder.filePath("sendmail");
  {
    QFile script(program);
    QVERIFY(script.open(QIODevice::WriteOnly));
    script.write(("#!/bin/sh\ncat > '" + sent + "'\n").toUtf8());
    script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
  }
  qputenv("VARNOK_SENDMAIL", program.toUtf8());
  WindowDriver driver(withPeople());
  qunsetenv("VARNOK_SENDMAIL");
  makeBackup(driver);
  driver.click("btn_Send");
  QQuickItem* to = driver.find("mailTo");
  QVERIFY(to != nullptr && to->hasActiveFocus());

  driver.type("nobody");
  driver.key(Qt::Key_Return);
  QVERIFY(driver.find("mailTo") != nullptr);
  driver.key(Qt::Key_Escape);
  QVERIFY(driver.find("mailTo") == nullptr);
  QVERIFY(!QFile::exists(sent));
  makeBackup(driver);
  driver.click("btn_Send");
  QCOMPARE(driver.find("mailTo")->property("text").toString(), QString());

  driver.type("ada@example.org, bob@example.org");
  driver.click("mailSend");
  QVERIFY(driver.find("mailTo") == nullptr);
  QFile message(sent);
  QVERIFY(message.open(QIODevice::ReadOnly));
  const QByteArray text = message.readAll();
  QVERIFY2(text.startsWith("To: ada@example.org") && text.contains("bob@example.org"), text.left(200).constData());
  QVERIFY(text.contains(backupsOf(driver).constLast().toUtf8()));
}

void WindowTest::settingsSwitchStoresThePreference() {
  WindowDriver driver(withPeople());
  driver.click("btn_Settings");
  driver.clickRow(0, 1);
  QCOMPARE(driver.page().name(), "ExportTypeConfigurationViewController");
  QVERIFY(driver.services().preferences.boolForKey(key::EXPORT_CONF_PHONES));
  driver.clickRow(1, 0);
  QVERIFY(!driver.services().preferences.boolForKey(key::EXPORT_CONF_PHONES));
  QCOMPARE(driver.row(1, 0)->property("switchState").toInt(), 0);
  driver.click("back");
  QCOMPARE(driver.page().name(), "VarnokSettingsViewController");
}

void WindowTest::choiceOfAFormatIsShownAndUsed() {
  WindowDriver driver(withPeople());
  driver.click("btn_Settings");
  driver.clickRow(0, 0);
  driver.clickRow(0, 1);
  if (driver.page().name() != "VarnokSettingsViewController") driver.click("back");
  QCOMPARE(driver.row(0, 0)->property("detail").toString(), "CSV");
  driver.click("back");
  driver.click("answer0");  // No reminders.
  driver.click("back");
  QCOMPARE(driver.page().name(), "VarnokViewController");
  makeBackup(driver);
  QVERIFY(backupsOf(driver).constFirst().endsWith(".csv"));
}

void WindowTest::duplicatesAreRemovedAndTheirPageCloses() {
  WindowDriver driver(withPeople());
  const int before = peopleIn(driver);
  makeBackup(driver);
  driver.click("btn_Settings");
  driver.clickRow(4, 0);
  QCOMPARE(driver.page().name(), "DuplicateRecordsTableViewController");
  QCOMPARE(driver.page().table()->rows(), 2);
  driver.click("clearDuplicates");
  QCOMPARE(driver.page().name(), "VarnokSettingsViewController");
  QCOMPARE(peopleIn(driver), before - 2);
}

void WindowTest::aBackupIsDeletedBySwipeMouseOrKey_data() {
  QTest::addColumn<QString>("way");
  for (const char* way : {"swipe", "edit", "key"})
    QTest::newRow(way) << way;
}

void WindowTest::aBackupIsDeletedBySwipeMouseOrKey() {
  QFETCH(QString, way);
  WindowDriver driver(withPeople());
  openBackups(driver);
  const int row = rowOf(driver, "older.vcf");
  QVERIFY(row >= 0);
  if (way == "swipe") {
    const QQuickItem& item = *driver.row(0, row);
    driver.swipe(item);
    QCOMPARE(driver.page().table()->rows(), 2);  // Open, not yet deleted.
    const QPointF bin = item.mapToScene({item.width() - 40, item.height() / 2});
    QTest::mouseClick(&driver.window(), Qt::LeftButton, Qt::NoModifier, bin.toPoint());
    driver.settle();
  } else if (way == "edit") {
    driver.click("headerAction");
    const QQuickItem* bin = WindowDriver::findIn(*driver.row(0, row), "delete");
    QVERIFY(bin != nullptr);
    driver.click(*bin);
  } else {
    for (int step = 0; step <= row; ++step)
      driver.key(Qt::Key_Down);
    driver.key(Qt::Key_Delete);
  }
  QCOMPARE(driver.page().table()->rows(), 1);
  QVERIFY(!backupsOf(driver).contains("older.vcf"));
}

void WindowTest::theLastBackupStays() {
  WindowDriver driver(withPeople());
  openBackups(driver);
  for (int step = 0; step <= 1 - rowOf(driver, "older.vcf"); ++step)
    driver.key(Qt::Key_Down);
  driver.key(Qt::Key_Delete);
  QVERIFY(driver.application().presenter().questionAdapter()->shown());
  driver.key(Qt::Key_Escape);
  QVERIFY(!driver.application().presenter().questionAdapter()->shown());
  QCOMPARE(backupsOf(driver).size(), 2);
}

void WindowTest::markedPeopleAreDeletedAfterAQuestion() {
  WindowDriver driver(withPeople());
  const int before = peopleIn(driver);
  driver.click("btn_Settings");
  driver.clickRow(3, 1);
  QCOMPARE(driver.page().name(), "RemoveRecordsViewController");
  driver.clickRow(0, 0);
  driver.clickRow(1, 0);
  QVERIFY(driver.row(1, 0)->property("marked").toBool());
  driver.click("trash0");
  driver.click("answer0");
  QCOMPARE(peopleIn(driver), before);
  driver.click("trash0");
  driver.click("answer1");
  QCOMPARE(peopleIn(driver), before - 2);
  QCOMPARE(driver.page().table()->rows(), before - 2);
}

void WindowTest::wholeWayByKeyboard() {
  WindowDriver driver(withPeople());
  driver.find("btn_Settings")->forceActiveFocus(Qt::TabFocusReason);
  driver.key(Qt::Key_Return);
  QCOMPARE(driver.page().name(), "VarnokSettingsViewController");
  driver.key(Qt::Key_Down);
  driver.key(Qt::Key_Down);
  QVERIFY(driver.row(0, 1)->property("focused").toBool());
  driver.key(Qt::Key_Return);
  QCOMPARE(driver.page().name(), "ExportTypeConfigurationViewController");
  driver.key(Qt::Key_Down);
  driver.key(Qt::Key_Space);
  QVERIFY(driver.services().preferences.boolForKey(key::multipleVCF));
  driver.key(Qt::Key_Escape);
  QCOMPARE(driver.page().name(), "VarnokSettingsViewController");

  // What comes next is shown, wherever it is.
  const QRectF all(QPointF(), driver.window().size());
  bool helped = false;
  for (int i = 0; i < 6; ++i) {
    driver.key(Qt::Key_Tab);
    const QQuickItem* reached = driver.window().activeFocusItem();
    QVERIFY2(all.contains(reached->mapRectToScene(reached->boundingRect())), qPrintable(reached->objectName()));
    helped = helped || reached->objectName() == "onClick_Support";
  }
  QVERIFY(helped);
}

void WindowTest::wideWindowShowsTheSettingsBesideTheirPage() {
  WindowDriver driver(withPeople({1024, 768}));
  driver.click("btn_Settings");
  driver.clickRow(0, 1);
  QCOMPARE(driver.page().name(), "ExportTypeConfigurationViewController");
  const QQuickItem* primary = driver.find("primary");
  const QQuickItem* secondary = driver.find("secondary");
  QVERIFY(primary != nullptr && secondary != nullptr);
  QVERIFY(primary->width() + secondary->width() <= 1024);
  // Another setting leaves the page that is open.
  QQuickItem* first = WindowDriver::findIn(*driver.find("primary"), "table");
  QQuickItem* row = nullptr;
  QMetaObject::invokeMethod(first, "itemAtIndex", Q_RETURN_ARG(QQuickItem*, row), Q_ARG(int, 1));
  driver.click(*row);
  QCOMPARE(driver.page().name(), "ExportTypeViewController");
  QCOMPARE(driver.application().presenter().pages().size(), 3);
  // Narrow again, the page covers the settings.
  driver.window().resize(600, 768);
  driver.settle();
  QCOMPARE(driver.find("secondary")->width(), 600.0);
}

void WindowTest::webAccessServesUntilItIsSwitchedOff() {
  WindowDriver driver(withPeople());
  makeBackup(driver);
  driver.click("btn_Settings");
  QQuickItem* row = driver.row(2, 0);
  if (!row->property("pressable").toBool()) QSKIP("no network address here");
  driver.click(*row);
  QVERIFY(driver.row(2, 1) != nullptr);  // Scrolled to.
  QVERIFY(driver.click("copyAddress"));
  const QUrl address(QGuiApplication::clipboard()->text());
  QCOMPARE(driver.row(2, 1)->property("address").toString(), address.toString());
  const auto answerTo = [&](const std::string& path) {
    const auto ask = [&] {
      HTTPTestClient client(static_cast<std::uint16_t>(address.port()));
      client.send("GET " + path + " HTTP/1.1\r\nConnection: close\r\nHost: " + address.authority().toStdString() +
                  "\r\n\r\n");
      return client.receiveAll();
    };
    // The server asks things of this thread.
    auto answer = std::async(std::launch::async, ask);
    const bool answered =
        QTest::qWaitFor([&] { return answer.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }, 20000);
    return answered ? QByteArray::fromStdString(answer.get()) : QByteArray();
  };
  QVERIFY(answerTo("/").startsWith("HTTP/1.1 200"));
  QCOMPARE(answerTo("/records.json").count("\"id\":"), peopleIn(driver));
  QVERIFY(answerTo("/download.html").startsWith("HTTP/1.1 200"));
  driver.clickRow(2, 0);
  QCOMPARE(driver.row(2, 1)->property("address").toString(), QString());
  QVERIFY(!HTTPTestClient(static_cast<std::uint16_t>(address.port())).isConnected());
}

void WindowTest::aReminderIsPlannedAndCancelled() {
  WindowDriver driver(withPeople());
  const NotificationScheduler& reminders = driver.services().reminders;
  makeBackup(driver);
  QVERIFY(!reminders.pending());
  driver.click("btn_Settings");
  driver.clickRow(3, 0);
  driver.clickRow(3, 1);
  driver.clickRow(0, 0);
  if (driver.page().name() != "VarnokSettingsViewController") driver.click("back");
  driver.click("back");
  QCOMPARE(driver.page().name(), "VarnokViewController");
  const auto pending = reminders.pending();
  QVERIFY(pending.has_value());
  QVERIFY(pending->repeat == LocalNotification::Repeat::week);
  const auto ahead = pending->fireDate - Instant(std::chrono::seconds(QDateTime::currentSecsSinceEpoch()));
  QVERIFY(ahead > std::chrono::hours(24 * 7 - 1) && ahead <= std::chrono::hours(24 * 7));

  driver.click("btn_Settings");
  driver.clickRow(3, 0);
  driver.click("back");
  driver.click("answer0");  // Offered once more, and declined.
  driver.click("back");
  QCOMPARE(driver.page().name(), "VarnokViewController");
  QVERIFY(!reminders.pending());
}

void WindowTest::anEmptyBookOffersAnImport() {
  WindowDriver driver({});
  QVERIFY(driver.find("btn_Backup") == nullptr);
  // The button's text, and the title of the dialog.
  const auto titles = [&] {
    return std::ranges::count(WindowDriver::textsIn(*driver.window().contentItem()), QString("Import a vCard File"),
                              [](const QQuickItem* text) { return text->property("text").toString(); });
  };
  QCOMPARE(titles(), 1);
  driver.click("firstStep");
  QCOMPARE(titles(), 2);
  driver.key(Qt::Key_Escape);
  QCOMPARE(titles(), 1);
  driver.application().openURL(QUrl::fromLocalFile(VARNOK_SAMPLE));
  driver.settle();
  QVERIFY(peopleIn(driver) > 0);
  QVERIFY(driver.application().presenter().questionAdapter()->message().startsWith(QString::number(peopleIn(driver))));
  driver.click("answer0");
  QVERIFY(driver.find("firstStep") == nullptr);
  QVERIFY(driver.find("btn_Backup") != nullptr);
}

void WindowTest::aFileThatIsNoCardChangesNothing() {
  WindowDriver driver(withPeople());
  const int before = peopleIn(driver);
  driver.application().openURL(QUrl::fromLocalFile(QCoreApplication::applicationFilePath()));
  driver.settle();
  QVERIFY(driver.application().presenter().questionAdapter()->shown());
  QCOMPARE(peopleIn(driver), before);
}

void WindowTest::hebrewRunsFromTheRight() {
  WindowDriver::Setup setup = withPeople();
  setup.languages = "he";
  WindowDriver driver(setup);
  QVERIFY(driver.find("btn_Settings")->mapToScene({0, 0}).x() < 100);
  driver.click("btn_Settings");
  QVERIFY(driver.find("back")->mapToScene({0, 0}).x() > 290);
}

// Every text lies within the window's width, and none is elided.
void WindowTest::nothingIsCutAtTwiceTheTextSize() {
  WindowDriver::Setup setup = withPeople({360, 720});
  setup.languages = "de";
  setup.textScale = 2;
  WindowDriver driver(setup);
  makeBackup(driver);
  driver.click("btn_Settings");
  for (int section = 0; section < 6; ++section) {
    const QQuickItem* row = driver.row(section, 0);
    if (row == nullptr) continue;
    for (const QQuickItem* text : WindowDriver::textsIn(*row)) {
      const QRectF place = text->mapRectToScene(text->boundingRect());
      const QString shown = text->property("text").toString();
      QVERIFY2(place.left() >= 0 && place.right() <= 360, qPrintable(shown));
      QVERIFY2(!text->property("truncated").toBool(), qPrintable(shown));
      QVERIFY2(text->property("contentWidth").toDouble() <= text->width() + 1, qPrintable(shown));
    }
  }
}

}  // namespace varnok

int main(int argc, char** argv) {
  QGuiApplication gui(argc, argv);
  varnok::registerPages();
  varnok::WindowTest test;
  return QTest::qExec(&test, argc, argv);
}

#include "window_test.moc"
