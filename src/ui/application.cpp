#include "ui/application.h"

#include <QGuiApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QQuickStyle>
#include <QTranslator>

// Made by the build from the pages' list.
extern void qml_register_types_Varnok();  // NOLINT(readability-identifier-naming)
int qInitResources_qmlcache_varnok_ui();  // NOLINT(readability-identifier-naming)

namespace varnok {

void registerPages() {
  QQuickStyle::setStyle("Basic");
  qml_register_types_Varnok();
  qInitResources_qmlcache_varnok_ui();
}

std::unique_ptr<Application> Application::make(const PlatformOptions& options, Status& status) {
  auto presenter = std::make_unique<QtPresenter>();
  auto tasks = std::make_unique<QtTaskRunner>();
  QtTaskRunner* runner = tasks.get();
  auto platform = LinuxPlatform::make(options, *presenter, std::move(tasks), status);
  if (platform == nullptr) return nullptr;
  std::unique_ptr<Application> application(new Application);
  application->presenter_ = std::move(presenter);
  application->mail_ = std::make_unique<MailQuestion>();
  application->tasks_ = runner;
  application->platform_ = std::move(platform);
  application->platform_->setMailRecipients(*application->mail_);
  const Services services = application->platform_->services();
  application->presenter_->setTasks(services.tasks);
  application->desktop_ = std::make_unique<DesktopSettings>(nullptr);
  application->texts_ = std::make_unique<Texts>(services.texts);
  application->delegate_ = std::make_unique<VarnokAppDelegate>(services);
  application->import_ = std::make_unique<ContactImport>(
      services, application->platform_->fileChooser(),
      [delegate = application->delegate_.get()] { delegate->applicationDidBecomeActive(); });
  application->books_ = std::make_unique<AddressBookChoice>(services, [] { QCoreApplication::exit(kAgain); });
  return application;
}

// The window goes before what its pages show, and the screens before what they
// work with.
Application::~Application() {
  engine_.reset();
  presenter_->close();
}

QQuickWindow* Application::open(const LaunchOptions& options) {
  const Services services = platform_->services();
  const QLocale locale(QString::fromStdString(services.device.appleLanguages.front()));
  QGuiApplication::setLayoutDirection(locale.textDirection());
  delegate_->didFinishLaunchingWithOptions(options);
  presenter_->setRoot(*delegate_->window().rootViewController);
  delegate_->applicationDidBecomeActive();
  presenter_->flush();

  engine_ = std::make_unique<QQmlApplicationEngine>();
  engine_->addImportPath("qrc:/");
  engine_->setProperty("varnok.texts", QVariant::fromValue(texts_.get()));
  engine_->setProperty("varnok.desktop", QVariant::fromValue(desktop_.get()));
  engine_->setInitialProperties({{"presenter", QVariant::fromValue(presenter_.get())},
                                 {"contactImport", QVariant::fromValue(import_.get())},
                                 {"books", QVariant::fromValue(books_.get())},
                                 {"mail", QVariant::fromValue(mail_.get())}});
  engine_->load(QUrl("qrc:/Varnok/Main.qml"));
  if (engine_->rootObjects().isEmpty()) return nullptr;
  auto* window = qobject_cast<QQuickWindow*>(engine_->rootObjects().constFirst());
  QObject::connect(qGuiApp, &QGuiApplication::applicationStateChanged, presenter_.get(),
                   [this](Qt::ApplicationState state) {
                     if (state == Qt::ApplicationActive) delegate_->applicationDidBecomeActive();
                   });
  return window;
}

void Application::openURL(const QUrl& url) {
  if (url.isLocalFile()) {
    import_->importUrls({url});
  } else {
    delegate_->openURL(url.toString().toStdString());
  }
}

}  // namespace varnok
