#include "app/startup/varnok_app_delegate.h"

#include <fmt/format.h>

#include "app/preferences/export_settings.h"
#include "app/preferences/preference_keys.h"
#include "contacts/address_book.h"

namespace varnok {
namespace {

// Where the help desk lives, and the forum that is ours there.
constexpr const char* kFeedbackSite = "feedback.invalid";
constexpr int kFeedbackForum = 1;

// The region of "language_REGION"; an identifier without "_" as a whole.
std::string country(const std::string& localeIdentifier) {
  const std::size_t bar = localeIdentifier.rfind('_');
  return bar == std::string::npos ? localeIdentifier : localeIdentifier.substr(bar + 1);
}

std::string lastBackupText(const PreferenceStore& preferences, const Clock& clock) {
  const std::optional<Instant> last = timeOfLastBackup(preferences);
  if (!last) return "-";
  const LocalTime local = clock.localTime(*last);
  return fmt::format("{:02}-{:02}-{:04} {:02}:{:02}", local.day, local.month, local.year, local.hour, local.minute);
}

void signInEnded(const Services& services, const DropboxRedirectResult& result) {
  switch (result.outcome) {
    case DropboxRedirectResult::Outcome::success:
      services.log.write("Success! User is logged into Dropbox.");
      if (services.dropboxClient.hasAuthorizedClient()) services.notifications.post("returnMainMenu");
      break;
    case DropboxRedirectResult::Outcome::cancelled:
      services.log.write("Authorization flow was manually canceled by user!");
      break;
    case DropboxRedirectResult::Outcome::error: services.log.write("Error: " + result.description); break;
  }
}

}  // namespace

VarnokAppDelegate::VarnokAppDelegate(Services services) : services_(std::move(services)) {}

void VarnokAppDelegate::initialize(PreferenceStore& preferences) {
  preferences.registerDefaults(registeredDefaults());
}

bool VarnokAppDelegate::didFinishLaunchingWithOptions(const LaunchOptions& options) {
  services_.dropbox.startSession();
  services_.crashReporter.start();
  markFirstLaunch();
  // A reminder asks for a backup that can be restored, whatever was chosen last.
  if (options.localNotification) services_.preferences.setObject("vcf", key::EXPORT_TYPE);
  viewController_ = std::make_unique<VarnokViewController>(viewServices(services_));
  window_ = {viewController_.get(), /*keyAndVisible=*/true, StatusBarStyle::lightContent};
  viewController_->viewDidLoad();
  startFeedback();
  return true;
}

void VarnokAppDelegate::markFirstLaunch() {
  if (services_.preferences.objectForKey(key::AppFirstOpened)) return;
  services_.preferences.setObject("YES", key::AppFirstOpened);
  services_.preferences.synchronize().ignore("at worst the next launch counts as the first once more");
}

void VarnokAppDelegate::startFeedback() {
  FeedbackConfiguration configuration;
  configuration.site = kFeedbackSite;
  configuration.forumIdentifier = kFeedbackForum;
  services_.feedback.initialize(configuration);
  services_.feedback.setCustomFields({{"Device Data", deviceDataLine()}});
}

std::string VarnokAppDelegate::deviceDataLine() {
  const Device& device = services_.device;
  const auto addressBook = ABAddressBookCreateWithOptions(services_.contacts);
  return fmt::format("{} V{} , {} , iOS{} , Country:{} , Language:{} , Contacts Count:{}, Last Backup:{}",
                     device.displayName == "Varnok" ? "VNKPro" : "VNK", device.version, device.modelName,
                     device.systemVersion, country(device.localeIdentifier), device.appleLanguages.front(),
                     ABAddressBookGetPersonCount(addressBook.get()),
                     lastBackupText(services_.preferences, services_.clock));
}

bool VarnokAppDelegate::openURL(const std::string& url) {
  services_.log.write("VarnokBackup Pro");
  services_.dropboxClient.handleRedirectURL(
      url, [services = services_](const DropboxRedirectResult& result) { signInEnded(services, result); });
  return true;
}

void VarnokAppDelegate::didReceiveLocalNotification(ApplicationState state) {
  if (state == ApplicationState::inactive) services_.preferences.setObject("vcf", key::EXPORT_TYPE);
}

void VarnokAppDelegate::applicationDidBecomeActive() {
  services_.notifications.post("applicationDidBecomeActive");
}

}  // namespace varnok
