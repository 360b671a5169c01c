#include "cli/linux_platform.h"

#include <cstdlib>

#include "app/preferences/preference_keys.h"
#include "app/startup/varnok_app_delegate.h"
#include "platform/linux/device/linux_device.h"

namespace varnok {
namespace {

std::string parentOf(const std::string& path) {
  return path.substr(0, path.rfind('/'));
}

Status makePlaces(const Paths& paths) {
  for (const std::string& directory : {paths.documents, parentOf(paths.contacts), parentOf(paths.preferences)}) {
    if (Status status = makeDirectories(directory); !status.ok()) return status;
  }
  return {};
}

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

// Daemons that mail programs stand in for live outside a user's search path.
SendmailMailComposer::Settings mailSettings() {
  const std::string path = environment("PATH");
  return {environment("VARNOK_SENDMAIL"), (path.empty() ? "" : path + ":") + "/usr/sbin:/usr/lib"};
}

CurlDropboxClient::Settings dropboxSettings(const Paths& paths) {
  return {paths.dropboxAccount, paths.useKeyring, environment("VARNOK_DROPBOX_API"), environment("VARNOK_DROPBOX_CA")};
}

ValueArray arrayOf(const std::vector<std::string>& texts) {
  return {texts.begin(), texts.end()};
}

}  // namespace

std::unique_ptr<LinuxPlatform> LinuxPlatform::make(const PlatformOptions& options, ScreenPresenter& presenter,
                                                   Status& status) {
  Paths paths = pathsFor(options.home);
  status = makePlaces(paths);
  if (!status.ok()) return nullptr;
  auto preferences = PreferenceFileStore::open(paths.preferences, status);
  if (preferences == nullptr) return nullptr;
  VarnokAppDelegate::initialize(*preferences);
  for (const auto& [name, value] : options.preferences)
    preferences->setVolatileValue(value, name);
  removeStaleParts(paths.documents);
  removeStaleParts(parentOf(paths.dropboxAccount));
  return std::unique_ptr<LinuxPlatform>(
      new LinuxPlatform(std::move(paths), options, std::move(preferences), presenter));
}

LinuxPlatform::LinuxPlatform(Paths paths, const PlatformOptions& options,
                             std::unique_ptr<PreferenceFileStore> preferences, ScreenPresenter& presenter)
    : paths_(std::move(paths)),
      presenter_(presenter),
      device_(linuxDevice(preferredLanguages(options.languages), VARNOK_VERSION)),
      preferences_(std::move(preferences)),
      log_(paths_.log),
      dates_(clock_),
      collation_(device_.localeIdentifier),
      texts_(MoTextCatalog::load(paths_.texts, device_.appleLanguages)),
      contacts_(paths_.contacts),
      reminders_(paths_.reminder, files_),
      mail_(mailSettings(), tasks_, clock_, log_),
      handOver_("xdg-open", tasks_, presenter_, *texts_, log_),
      idleTimer_(log_),
      dropboxClient_(dropboxSettings(paths_), tasks_, clock_, log_),
      dropbox_(dropboxClient_, *preferences_, log_),
      network_(log_),
      storeReview_(log_),
      rating_({*preferences_, clock_, device_, network_, storeReview_, tasks_, log_}),
      crashReporter_(log_),
      feedback_(log_) {
  preferences_->setVolatileValue(arrayOf(device_.appleLanguages), key::AppleLanguages);
}

Services LinuxPlatform::services(MailComposer* composer) {
  MailComposer& mail = composer == nullptr ? mail_ : *composer;
  return {*preferences_,  contacts_, files_,   *texts_,    codec_,           collation_,        clock_,
          dates_,         random_,   images_,  tasks_,     presenter_,       notifications_,    reminders_,
          mail,           handOver_, network_, idleTimer_, dropboxClient_,   dropbox_,          rating_,
          crashReporter_, feedback_, log_,     device_,    paths_.documents, paths_.backupLock, paths_.webPages};
}

}  // namespace varnok
