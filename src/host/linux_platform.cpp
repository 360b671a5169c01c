#include "host/linux_platform.h"

#include <cstdlib>
#include <filesystem>

#include "app/preferences/preference_keys.h"
#include "app/startup/varnok_app_delegate.h"
#include "platform/linux/device/linux_device.h"
#include "platform/linux/eds/eds_contact_store.h"
#include "platform/linux/sqlite/sqlite_contact_store.h"

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

// Somebody sits at a screen that can show another program's window.
bool hasDesktop() {
  return !environment("WAYLAND_DISPLAY").empty() || !environment("DISPLAY").empty();
}

// A program that was named goes before what the desktop has.
DesktopMailComposer::Settings desktopMailSettings(const Paths& paths) {
  return {hasDesktop() && environment("VARNOK_SENDMAIL").empty(), paths.mail, {}};
}

CurlDropboxClient::Settings dropboxSettings(const Paths& paths) {
  return {paths.dropboxAccount, paths.useKeyring, environment("VARNOK_DROPBOX_API"), environment("VARNOK_DROPBOX_CA")};
}

// The program that the desktop calls, beside this one.
std::string reminderProgram() {
  std::error_code error;
  return (std::filesystem::read_symlink("/proc/self/exe", error).parent_path() / "varnokctl").string();
}

// What the desktop calls has the environment of a session, not this one.
ReminderCall reminderCall(const Paths& paths) {
  ReminderCall call{reminderProgram(), paths.home, {}};
  for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "VARNOK_RESOURCES"}) {
    if (std::string value = environment(name); value.starts_with('/')) call.environment.emplace_back(name, value);
  }
  return call;
}

constexpr std::string_view kEmbedded = "sqlite";

std::string chosenStore(const PreferenceStore& preferences) {
  return preferences.stringForKey(key::CONTACT_STORE).value_or(std::string(kEmbedded));
}

// A store that was asked for by a wrong name is not silently another one.
Status checkStore(const PreferenceStore& preferences) {
  Status status;
  preferenceValue(*findPreferenceKey(key::CONTACT_STORE), chosenStore(preferences), status);
  return status;
}

std::unique_ptr<ContactStoreProvider> makeContacts(const Paths& paths, const PreferenceStore& preferences,
                                                   const TextCodec& codec, const Clock& clock, TaskRunner& tasks) {
  const std::string store = chosenStore(preferences);
  if (store == kEmbedded) return std::make_unique<SQLiteContactStoreProvider>(paths.contacts);
  const std::size_t colon = store.find(':');
  std::string source = colon == std::string::npos ? std::string() : store.substr(colon + 1);
  return std::make_unique<EdsContactStoreProvider>(
      EdsContactStoreProvider::Settings{std::move(source), paths.desktopNumbers}, codec, clock, tasks);
}

ValueArray arrayOf(const std::vector<std::string>& texts) {
  return {texts.begin(), texts.end()};
}

}  // namespace

std::unique_ptr<LinuxPlatform> LinuxPlatform::make(const PlatformOptions& options, ScreenPresenter& presenter,
                                                   std::unique_ptr<TaskRunner> tasks, Status& status) {
  Paths paths = pathsFor(options.home);
  status = makePlaces(paths);
  if (!status.ok()) return nullptr;
  auto preferences = PreferenceFileStore::open(paths.preferences, status);
  if (preferences == nullptr) return nullptr;
  VarnokAppDelegate::initialize(*preferences);
  for (const auto& [name, value] : options.preferences)
    preferences->setVolatileValue(value, name);
  status = checkStore(*preferences);
  if (!status.ok()) return nullptr;
  removeStaleParts(paths.documents);
  removeStaleParts(parentOf(paths.dropboxAccount));
  removeOldAttachments(paths.mail);
  return std::unique_ptr<LinuxPlatform>(
      new LinuxPlatform(std::move(paths), options, std::move(preferences), presenter, std::move(tasks)));
}

LinuxPlatform::LinuxPlatform(Paths paths, const PlatformOptions& options,
                             std::unique_ptr<PreferenceFileStore> preferences, ScreenPresenter& presenter,
                             std::unique_ptr<TaskRunner> tasks)
    : paths_(std::move(paths)),
      presenter_(presenter),
      device_(linuxDevice(preferredLanguages(options.languages), VARNOK_VERSION)),
      preferences_(std::move(preferences)),
      log_(paths_.log),
      dates_(clock_, timeLocale()),
      collation_(device_.localeIdentifier),
      texts_(MoTextCatalog::load(paths_.texts, device_.appleLanguages)),
      contacts_(makeContacts(paths_, *preferences_, codec_, clock_, *tasks)),
      reminders_({paths_.reminder, paths_.userConfiguration, paths_.userData}, reminderCall(paths_), files_, *tasks,
                 log_),
      sendmail_(mailSettings(), *tasks, clock_, log_),
      mail_(desktopMailSettings(paths_), sendmail_, *tasks, log_),
      handOver_("xdg-open", *tasks, presenter_, *texts_, log_),
      desktopHandOver_({hasDesktop(), {}}, handOver_, *tasks, log_),
      fileChooser_({options.windows && hasDesktop(), {}}, *tasks, log_),
      idleTimer_({}, *tasks, log_),
      dropboxClient_(dropboxSettings(paths_), *tasks, clock_, log_),
      dropbox_(dropboxClient_, *preferences_, log_),
      network_({}, *tasks, log_),
      storeReview_({.desktop = options.windows && hasDesktop()}, *tasks, log_),
      rating_({*preferences_, clock_, device_, network_, storeReview_, *tasks, log_}),
      crashReporter_(log_),
      feedback_(log_),
      tasks_(std::move(tasks)) {
  preferences_->setVolatileValue(arrayOf(device_.appleLanguages), key::AppleLanguages);
}

// What calls from the buses' thread ends before what it would post to.
LinuxPlatform::~LinuxPlatform() {
  mail_.stop();
  desktopHandOver_.stop();
  fileChooser_.stop();
  idleTimer_.stop();
  network_.stop();
  storeReview_.stop();
}

Services LinuxPlatform::services(MailComposer* composer) {
  MailComposer& mail = composer == nullptr ? mail_ : *composer;
  return {*preferences_,  *contacts_,       files_,   *texts_,    codec_,           collation_,        clock_,
          dates_,         random_,          images_,  *tasks_,    presenter_,       notifications_,    reminders_,
          mail,           desktopHandOver_, network_, idleTimer_, dropboxClient_,   dropbox_,          rating_,
          crashReporter_, feedback_,        log_,     device_,    paths_.documents, paths_.backupLock, paths_.webPages};
}

}  // namespace varnok
