// varnok: the touch application.

#include <QCommandLineParser>
#include <QFileInfo>
#include <QGuiApplication>
#include <cstdio>

#include "app/preferences/preference_keys.h"
#include "platform/linux/dbus/single_instance.h"
#include "ui/application.h"

namespace varnok {
namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

bool readSettings(const QStringList& settings, PlatformOptions& options) {
  for (const QString& setting : settings) {
    const qsizetype equals = setting.indexOf('=');
    if (equals < 0) return false;
    const std::string name = setting.left(equals).toStdString();
    const PreferenceKey* known = findPreferenceKey(name);
    if (known == nullptr || known->kind == PreferenceKey::Kind::readOnly) return false;
    options.preferences.emplace_back(name, setting.mid(equals + 1).toStdString());
  }
  return true;
}

// A name of a file, or an address of any scheme.
QUrl urlOf(const QString& argument) {
  const QFileInfo file(argument);
  return file.exists() ? QUrl::fromLocalFile(file.absoluteFilePath()) : QUrl(argument);
}

class StandardErrorLog : public DeveloperLog {
 public:
  void write(std::string_view line) override { qInfo("%.*s", static_cast<int>(line.size()), line.data()); }
};

ApplicationRequest requestOf(const QCommandLineParser& parser) {
  ApplicationRequest request;
  if (parser.isSet("reminder")) {
    request.kind = ApplicationRequest::Kind::action;
    request.action = kReminderAction;
  } else if (!parser.positionalArguments().isEmpty()) {
    request.kind = ApplicationRequest::Kind::open;
    for (const QString& argument : parser.positionalArguments())
      request.uris.push_back(urlOf(argument).toString(QUrl::FullyEncoded).toStdString());
  }
  return request;
}

void declareOptions(QCommandLineParser& parser) {
  parser.addHelpOption();
  parser.addVersionOption();
  parser.addOptions({{"home", "keep everything under this folder", "DIR"},
                     {"store", "which contact store: sqlite, eds, or eds:BOOK", "STORE"},
                     {"language", "preferred languages, most preferred first, with commas", "LL"},
                     {"set", "KEY=VALUE: a preference for this run only", "KEY=VALUE"},
                     {"reminder", "opened by a reminder"}});
  parser.addPositionalArgument("FILE", "vCard files to import, or an address of the application's", "[FILE...]");
}

// False, with a line on stderr, when they are wrong.
bool readOptions(const QCommandLineParser& parser, PlatformOptions& options) {
  options.home = parser.value("home").toStdString();
  options.languages = parser.value("language").toStdString();
  options.windows = true;
  if (parser.isSet("store")) options.preferences.emplace_back(key::CONTACT_STORE, parser.value("store").toStdString());
  if (readSettings(parser.values("set"), options)) return true;
  std::fputs("varnok: --set takes KEY=VALUE with a key that `varnokctl settings` lists\n", stderr);
  return false;
}

// The application that runs now, and what others ask of it.
class Running {
 public:
  // What `request` asks, of the application and its window.
  void carryOut(const ApplicationRequest& request) {
    if (application_ == nullptr) return;
    for (const std::string& uri : request.uris)
      application_->openURL(QUrl(QString::fromStdString(uri)));
    if (request.action == kReminderAction) {
      application_->delegate().didReceiveLocalNotification(ApplicationState::inactive);
    }
    if (!request.activationToken.empty()) qputenv("XDG_ACTIVATION_TOKEN", request.activationToken.c_str());
    window_->show();
    window_->raise();
    window_->requestActivate();
  }

  // Until the user leaves; its exit status, or Application::kAgain.
  int run(const PlatformOptions& options, const ApplicationRequest& request) {
    Status status;
    const auto application = Application::make(options, status);
    if (application == nullptr) {
      std::fprintf(stderr, "varnok: %s\n", status.message().c_str());
      return kFailed;
    }
    application->desktop().follow();
    window_ = application->open({.localNotification = request.action == kReminderAction});
    if (window_ == nullptr) return kFailed;
    application_ = application.get();
    for (const std::string& uri : request.uris)
      application->openURL(QUrl(QString::fromStdString(uri)));
    const int result = QGuiApplication::exec();
    application_ = nullptr;
    return result;
  }

 private:
  Application* application_ = nullptr;
  QQuickWindow* window_ = nullptr;
};

int run(const QGuiApplication& gui) {
  QCommandLineParser parser;
  declareOptions(parser);
  parser.process(gui);
  PlatformOptions options;
  if (!readOptions(parser, options)) return kWrongUsage;
  ApplicationRequest request = requestOf(parser);

  Running running;
  QtTaskRunner tasks;
  StandardErrorLog log;
  std::unique_ptr<SingleInstance> instance;
  // Homes of their own would share the one name on the bus.
  if (options.home.empty() && qEnvironmentVariableIsEmpty("VARNOK_HOME")) {
    instance = std::make_unique<SingleInstance>(
        tasks, log, [&running](const ApplicationRequest& asked) { running.carryOut(asked); });
    if (instance->start(request) == SingleInstance::Role::second) return 0;
  }
  int result = running.run(options, request);
  while (result == Application::kAgain) {
    // The store of the command line was for the first time.
    std::erase_if(options.preferences, [](const auto& set) { return set.first == key::CONTACT_STORE; });
    request = {};
    result = running.run(options, request);
  }
  return result;
}

}  // namespace
}  // namespace varnok

int main(int argc, char** argv) {
  QGuiApplication::setApplicationName("varnok");
  QGuiApplication::setApplicationDisplayName("Varnok");
  QGuiApplication::setApplicationVersion(VARNOK_VERSION);
  QGuiApplication::setDesktopFileName(varnok::kApplicationID);
  const QGuiApplication gui(argc, argv);
  varnok::registerPages();
  return varnok::run(gui);
}
