// Pictures of every screen, to look at.
//
//   ui_screenshots DIRECTORY [SIZE=390x844,...] [SCHEME=light,dark] [LANGUAGE=en,de,he] [SCALE=1]

#include <QDir>
#include <QGuiApplication>
#include <QTest>

#include "ui/window_driver.h"

namespace varnok {
namespace {

class Album {
 public:
  Album(QString directory, WindowDriver::Setup setup) : directory_(std::move(directory)), setup_(std::move(setup)) {
    prefix_ = QString("%1x%2-%3-%4")
                  .arg(setup_.size.width())
                  .arg(setup_.size.height())
                  .arg(QString::fromStdString(setup_.languages), setup_.dark ? "dark" : "light");
    if (setup_.textScale != 1) prefix_ += QString("-%1").arg(setup_.textScale);
  }

  void emptyBook() {
    WindowDriver driver(setup_);
    take(driver, "01-first-run");
  }

  void everyScreen() {
    WindowDriver::Setup setup = setup_;
    setup.people = VARNOK_SAMPLE;
    setup.preferences = {{"EXPORT_CONF_PHOTOS", "YES"}};
    WindowDriver driver(setup);
    take(driver, "02-ready");
    driver.click("btn_Backup");
    take(driver, "03-first-backup-alert");
    driver.click("answer0");
    take(driver, "04-finished");
    mail(driver);
    driver.click("btn_Settings");
    take(driver, "05-settings");
    scrollDown(driver);
    take(driver, "06-settings-end");
    page(driver, 0, 0, "07-format");
    page(driver, 0, 1, "08-fields");
    restore(driver);
    driver.clickRow(2, 0);
    if (driver.row(2, 1) != nullptr) take(driver, "12-web-access");
    driver.clickRow(2, 0);
    page(driver, 3, 1, "13-repeat");
    duplicates(driver);
    removal(driver);
    overlay(driver);
    driver.click("back");
    take(driver, "20-reminder-question");
  }

 private:
  void take(WindowDriver& driver, const QString& name) {
    driver.picture().save(directory_ + "/" + prefix_ + "-" + name + ".png");
  }

  static void scrollDown(WindowDriver& driver) {
    QMetaObject::invokeMethod(driver.find("table"), "positionViewAtEnd");
    driver.settle();
  }

  // Opens the page of a row, and leaves it.
  void page(WindowDriver& driver, int section, int row, const QString& name) {
    driver.clickRow(section, row);
    take(driver, name);
    leave(driver);
  }

  static void leave(WindowDriver& driver) {
    driver.page().close();
    driver.settle();
  }

  void mail(WindowDriver& driver) {
    driver.application().mail().ask({{}, "Varnok", "", false, {{"", "text/vcard", "2026-03-14_41.vcf"}}},
                                    [](const auto&) {});
    take(driver, "21-mail");
    driver.key(Qt::Key_Escape);
  }

  void restore(WindowDriver& driver) {
    driver.clickRow(1, 0);
    take(driver, "09-backups");
    driver.click("headerAction");
    take(driver, "10-backups-edited");
    driver.click("headerAction");
    driver.clickRow(0, 0);
    take(driver, "11-backup-sheet");
    driver.key(Qt::Key_Escape);
    leave(driver);
  }

  void duplicates(WindowDriver& driver) {
    driver.clickRow(4, 0);
    take(driver, "14-duplicates");
    leave(driver);
  }

  void removal(WindowDriver& driver) {
    driver.clickRow(4, 1);
    take(driver, "15-delete-contacts");
    driver.clickRow(0, 0);
    driver.clickRow(1, 0);
    scrollDown(driver);
    take(driver, "16-delete-contacts-end");
    driver.click("trash0");
    take(driver, "17-delete-selected-question");
    driver.key(Qt::Key_Escape);
    driver.click("trash1");
    take(driver, "18-delete-all-sheet");
    driver.key(Qt::Key_Escape);
    leave(driver);
  }

  void overlay(WindowDriver& driver) {
    auto shown = driver.services().presenter.showOverlay(driver.services().texts.text("REMOVING"));
    take(driver, "19-overlay");
    shown.reset();
    driver.settle();
  }

  QString directory_;
  WindowDriver::Setup setup_;
  QString prefix_;
};

QStringList choice(const QStringList& arguments, const QString& name, const QString& otherwise) {
  for (const QString& argument : arguments) {
    if (argument.startsWith(name + "=")) return argument.mid(name.size() + 1).split(',');
  }
  return otherwise.split(',');
}

void takeAll(const QString& directory, const QStringList& arguments) {
  for (const QString& size : choice(arguments, "SIZE", "390x844,844x390,1024x768,1440x900")) {
    for (const QString& scheme : choice(arguments, "SCHEME", "light,dark")) {
      for (const QString& language : choice(arguments, "LANGUAGE", "en,de,he")) {
        WindowDriver::Setup setup;
        setup.size = {size.section('x', 0, 0).toInt(), size.section('x', 1).toInt()};
        setup.languages = language.toStdString();
        setup.dark = scheme == "dark";
        setup.textScale = choice(arguments, "SCALE", "1").constFirst().toDouble();
        Album album(directory, setup);
        album.emptyBook();
        album.everyScreen();
      }
    }
  }
}

}  // namespace
}  // namespace varnok

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  QGuiApplication gui(argc, argv);
  varnok::registerPages();
  varnok::Complaints::install();
  QDir().mkpath(QString::fromLocal8Bit(argv[1]));
  varnok::takeAll(QString::fromLocal8Bit(argv[1]), gui.arguments().mid(2));
  return varnok::Complaints::count() == 0 ? 0 : 1;
}
