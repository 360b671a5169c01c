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

// Daemons that mail programs stand in for live outside a user's search path.
SendmailMailComposer::Settings mailSettings() {
  const char* program = std::getenv("VARNOK_SENDMAIL");
  const char* path = std::getenv("PATH");
  return {program == nullptr ? "" : program, (path == nullptr ? "" : std::string(path) + ":") + "/usr/sbin:/usr/lib"};
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
      texts_(MoTextCatalog::load(paths_.texts, device_.appleLanguages)),
      contacts_(paths_.contacts),
      mail_(mailSettings(), tasks_, clock_, log_),
      idleTimer_(log_),
      dropbox_(dropboxClient_, *preferences_, log_),
      storeReview_(log_),
      rating_({*preferences_, clock_, device_, network_, storeReview_, tasks_, log_}),
      crashReporter_(log_),
      feedback_(log_) {
  preferences_->setVolatileValue(arrayOf(device_.appleLanguages), key::AppleLanguages);
}

Services LinuxPlatform::services() {
  return {*preferences_,  contacts_,  files_,         *texts_, codec_,           clock_,           random_,  images_,
          tasks_,         presenter_, notifications_, mail_,   idleTimer_,       dropboxClient_,   dropbox_, rating_,
          crashReporter_, feedback_,  log_,           device_, paths_.documents, paths_.backupLock};
}

}  // namespace varnok
