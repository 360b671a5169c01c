// Application: the core, its platform and the window over them, in their order
// of life. Main thread; one for the process.

#pragma once

#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <memory>

#include "app/startup/varnok_app_delegate.h"
#include "host/linux_platform.h"
#include "ui/address_book_choice.h"
#include "ui/contact_import.h"
#include "ui/desktop_settings.h"
#include "ui/mail_question.h"
#include "ui/qt_presenter.h"
#include "ui/qt_task_runner.h"
#include "ui/texts.h"

namespace varnok {

class Application {
 public:
  // Null with a Status when the platform cannot be had.
  static std::unique_ptr<Application> make(const PlatformOptions& options, Status& status);
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;
  ~Application();

  // Opens the window. Null when a page cannot be loaded; the log says why.
  QQuickWindow* open(const LaunchOptions& options = {});

  // Another address book was chosen: the event loop ends with this, and an
  // application made anew works with that book.
  static constexpr int kAgain = 100;

  // An address of the application's own scheme, or a vCard file to import.
  void openURL(const QUrl& url);

  DesktopSettings& desktop() { return *desktop_; }
  QtPresenter& presenter() { return *presenter_; }
  VarnokAppDelegate& delegate() { return *delegate_; }
  LinuxPlatform& platform() { return *platform_; }
  MailQuestion& mail() { return *mail_; }
  ContactImport& contactImport() { return *import_; }
  const QtTaskRunner& tasks() const { return *tasks_; }

 private:
  Application() = default;

  std::unique_ptr<QtPresenter> presenter_;
  std::unique_ptr<MailQuestion> mail_;
  QtTaskRunner* tasks_ = nullptr;  // The platform's.
  std::unique_ptr<LinuxPlatform> platform_;
  std::unique_ptr<DesktopSettings> desktop_;
  std::unique_ptr<Texts> texts_;
  std::unique_ptr<VarnokAppDelegate> delegate_;
  std::unique_ptr<ContactImport> import_;
  std::unique_ptr<AddressBookChoice> books_;
  std::unique_ptr<QQmlApplicationEngine> engine_;
};

// Once, before the first Application: the pages and their types, which a static
// library would leave out, and the style they stand on.
void registerPages();

}  // namespace varnok
