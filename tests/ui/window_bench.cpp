// What the window costs: time to the first frame, the longest turn of the main
// thread while a backup runs and while a list scrolls, memory, idle time.
//
//   ui_bench [PEOPLE of the start and the list] [PEOPLE of the backup]

#include <sys/resource.h>

#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QGuiApplication>
#include <QTest>
#include <QTimer>
#include <cstdio>
#include <cstdlib>

#include "ui/window_driver.h"

namespace varnok {
namespace {

// Knows the longest event since it was asked last.
class TimedApplication : public QGuiApplication {
 public:
  using QGuiApplication::QGuiApplication;

  bool notify(QObject* receiver, QEvent* event) override {
    if (depth_ > 0) return QGuiApplication::notify(receiver, event);
    ++depth_;
    QElapsedTimer timer;
    timer.start();
    const int type = event->type();
    const bool taken = QGuiApplication::notify(receiver, event);
    --depth_;
    if (timer.nsecsElapsed() > longest_) {
      longest_ = timer.nsecsElapsed();
      longestType_ = type;
    }
    if (timer.nsecsElapsed() > 8'000'000) ++late_;
    return taken;
  }

  void report(const char* what) {
    std::printf("%s: longest turn %.2f ms (event %d), %d over 8 ms\n", what, static_cast<double>(longest_) / 1e6,
                longestType_, late_);
    longest_ = 0;
    late_ = 0;
  }

 private:
  int depth_ = 0;
  int late_ = 0;
  int longestType_ = 0;
  qint64 longest_ = 0;
};

// A file of `count` people, in `directory`.
QString makePeople(const QString& directory, int count) {
  const QString path = directory + "/people.vcf";
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly)) return {};
  for (int index = 0; index < count; ++index) {
    file.write(
        QString("BEGIN:VCARD\r\nVERSION:3.0\r\nN:%1%2;Person;;;\r\nFN:Person %1%2\r\nTEL;TYPE=CELL:+1 202 555 %3\r\n"
                "EMAIL:person%3@example.org\r\nEND:VCARD\r\n")
            .arg(QChar('A' + index % 26))
            .arg(index)
            .arg(index)
            .toUtf8());
  }
  return path;
}

double megabytes() {
  QFile status("/proc/self/status");
  if (!status.open(QIODevice::ReadOnly)) return 0;
  for (const QByteArray& line : status.readAll().split('\n')) {
    if (line.startsWith("VmRSS:")) return line.mid(6).trimmed().split(' ').constFirst().toDouble() / 1024;
  }
  return 0;
}

double cpuMilliseconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto of = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
  };
  return of(usage.ru_utime) + of(usage.ru_stime);
}

void measureStartAndList(TimedApplication& gui, const QString& people) {
  WindowDriver::Setup setup;
  setup.people = people.toStdString();
  setup.motion = true;
  WindowDriver driver(setup);
  std::printf("start: first frame %lld ms after the platform was made\n",
              static_cast<long long>(driver.millisecondsToFirstFrame()));
  std::printf("memory: %.1f MB with the main page\n", megabytes());
  driver.click("btn_Settings");
  driver.clickRow(3, 1);
  gui.report("opening the list");
  QQuickItem* table = driver.find("table");
  for (int step = 0; step < 300; ++step) {
    table->setProperty("contentY", table->property("contentY").toDouble() + 90);
    QTest::qWait(16);
  }
  gui.report("scrolling the list");
  std::printf("memory: %.1f MB after the list\n", megabytes());
  driver.settle();
  const double before = cpuMilliseconds();
  QEventLoop loop;
  QTimer::singleShot(5000, &loop, &QEventLoop::quit);
  loop.exec();
  std::printf("idle: %.1f ms of processor in 5 s\n", cpuMilliseconds() - before);
}

void measureBackup(TimedApplication& gui, const QString& people) {
  WindowDriver::Setup setup;
  setup.people = people.toStdString();
  setup.motion = true;
  WindowDriver driver(setup);
  gui.report("start");
  QElapsedTimer timer;
  timer.start();
  int frames = 0;
  QObject::connect(&driver.window(), &QQuickWindow::frameSwapped, [&frames] { ++frames; });
  driver.click("btn_Backup");
  std::printf("backup: %lld ms, %d frames\n", static_cast<long long>(timer.elapsed()), frames);
  gui.report("backup");
  std::printf("memory: %.1f MB after the backup\n", megabytes());
}

}  // namespace
}  // namespace varnok

int main(int argc, char** argv) {
  varnok::TimedApplication gui(argc, argv);
  varnok::registerPages();
  const QTemporaryDir directory;
  const int list = argc > 1 ? std::atoi(argv[1]) : 10000;
  const int backup = argc > 2 ? std::atoi(argv[2]) : 100000;
  varnok::measureStartAndList(gui, varnok::makePeople(directory.path(), list));
  varnok::measureBackup(gui, varnok::makePeople(directory.path(), backup));
  return 0;
}
