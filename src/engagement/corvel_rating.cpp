#include "engagement/corvel_rating.h"

#include <fmt/format.h>

#include "app/preferences/preference_keys.h"

namespace varnok {
namespace {

// In seconds. Quirk: a first use up to a day in the future passes, so that in
// practice only the backups count.
constexpr double kUseBeforeAsking = -86400;
constexpr double kWaitBeforeAskingAgain = 172800;
constexpr std::int64_t kUsesBeforeAsking = 0;
constexpr std::int64_t kEventsBeforeAsking = 2;

constexpr const char* kTestPage = "http://www.example.com/";
constexpr std::chrono::seconds kTestPageLimit{20};

// The application's number in the store, and the store's link to its page.
constexpr int kStoreIdentifier = 1;
constexpr std::string_view kStoreLink = "appstream://varnok?id=APP_ID";
constexpr std::string_view kStoreLinkPlaceholder = "APP_ID";

}  // namespace

void CorvelRating::appLaunched(bool canPromptForRating) {
  services_.tasks.detached([this, canPromptForRating] { countAndRate(Counted::use, canPromptForRating); });
}

void CorvelRating::userDidSignificantEvent(bool canPromptForRating) {
  services_.tasks.detached([this, canPromptForRating] { countAndRate(Counted::event, canPromptForRating); });
}

void CorvelRating::countAndRate(Counted counted, bool canPromptForRating) {
  increment(counted);
  if (!canPromptForRating || !ratingConditionsHaveBeenMet() || !connectedToNetwork()) return;
  services_.tasks.mainThread([this] { showRatingAlert(); });
}

void CorvelRating::incrementUseCount() {
  increment(Counted::use);
}
void CorvelRating::incrementSignificantEventCount() {
  increment(Counted::event);
}

// Quirk: on the very first count the version was just stored, and it counts as
// a new version all the same.
void CorvelRating::increment(Counted counted) {
  const std::scoped_lock lock(counting_);
  PreferenceStore& preferences = services_.preferences;
  const std::string& version = services_.device.buildVersion;
  const auto counting = preferences.stringForKey(key::kAppiraterCurrentVersion);
  if (counting != version) {
    startVersion(version, counted);
  } else {
    if (preferences.doubleForKey(key::kAppiraterFirstUseDate) == 0) {
      preferences.setDouble(services_.clock.now(), key::kAppiraterFirstUseDate);
    }
    const auto counter = counted == Counted::use ? key::kAppiraterUseCount : key::kAppiraterSignificantEventCount;
    preferences.setInteger(static_cast<std::int32_t>(preferences.integerForKey(counter) + 1), counter);
  }
  flush();
}

// Quirk: the first use is now for a use, but not yet for an event.
void CorvelRating::startVersion(const std::string& version, Counted counted) {
  const bool use = counted == Counted::use;
  PreferenceStore& preferences = services_.preferences;
  preferences.setObject(version, key::kAppiraterCurrentVersion);
  preferences.setInteger(use ? 1 : 0, key::kAppiraterUseCount);
  preferences.setInteger(use ? 0 : 1, key::kAppiraterSignificantEventCount);
  preferences.setDouble(use ? services_.clock.now() : 0, key::kAppiraterFirstUseDate);
  preferences.setBool(/*value=*/false, key::kAppiraterRatedCurrentVersion);
  preferences.setBool(/*value=*/false, key::kAppiraterDeclinedToRate);
  preferences.setDouble(0, key::kAppiraterReminderRequestDate);
}

bool CorvelRating::ratingConditionsHaveBeenMet() const {
  const PreferenceStore& preferences = services_.preferences;
  const double now = services_.clock.now();
  return now - preferences.doubleForKey(key::kAppiraterFirstUseDate) >= kUseBeforeAsking &&
         preferences.integerForKey(key::kAppiraterUseCount) >= kUsesBeforeAsking &&
         preferences.integerForKey(key::kAppiraterSignificantEventCount) >= kEventsBeforeAsking &&
         !preferences.boolForKey(key::kAppiraterDeclinedToRate) &&
         !preferences.boolForKey(key::kAppiraterRatedCurrentVersion) &&
         now - preferences.doubleForKey(key::kAppiraterReminderRequestDate) >= kWaitBeforeAskingAgain;
}

bool CorvelRating::connectedToNetwork() {
  const auto flags = services_.network.reachabilityFlags();
  if (!flags) {
    services_.log.write("Error. Could not recover network reachability flags");
    return false;
  }
  const bool online = (flags->reachable && !flags->connectionRequired) || flags->transientConnection;
  return online && services_.network.canConnect(kTestPage, kTestPageLimit);
}

void CorvelRating::showRatingAlert() {
  services_.preferences.setDouble(services_.clock.now(), key::kAppiraterReminderRequestDate);
  flush();
  services_.store.requestReview();
}

void CorvelRating::rateApp() {
  std::string url(kStoreLink);
  url.replace(url.find(kStoreLinkPlaceholder), kStoreLinkPlaceholder.size(), fmt::format("{}", kStoreIdentifier));
  services_.preferences.setBool(/*value=*/true, key::kAppiraterRatedCurrentVersion);
  flush();
  services_.store.openURL(url);
}

void CorvelRating::clickedButtonAtIndex(int index) {
  switch (index) {
    case 0:
      services_.preferences.setBool(/*value=*/true, key::kAppiraterDeclinedToRate);
      flush();
      break;
    case 1: rateApp(); break;
    case 2:
      services_.preferences.setDouble(services_.clock.now(), key::kAppiraterReminderRequestDate);
      flush();
      break;
    default: break;
  }
}

void CorvelRating::hideRatingAlert() {
  if (ratingAlert_) ratingAlert_();
}

void CorvelRating::flush() {
  services_.preferences.synchronize().ignore("at worst a count is lost, and the request comes later");
}

}  // namespace varnok
