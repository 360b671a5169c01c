#include "platform/linux/posix/log_services.h"

namespace varnok {
namespace {

std::string onOrOff(bool on) {
  return on ? "on" : "off";
}

}  // namespace

void LogCrashReporter::start() {
  log_.write("Crash reporting starts");
}

void LogFeedbackService::initialize(const FeedbackConfiguration& configuration) {
  log_.write("Feedback site " + configuration.site + ", forum " + std::to_string(configuration.forumIdentifier));
  log_.write("Feedback contact us " + onOrOff(configuration.showsContactUs) + ", forum " +
             onOrOff(configuration.showsForum) + ", post an idea " + onOrOff(configuration.showsPostIdea));
  setCustomFields(configuration.customFields);
}

void LogFeedbackService::setCustomFields(const std::map<std::string, std::string>& fields) {
  for (const auto& [key, value] : fields)
    log_.write(std::string(key).append(": ").append(value));
}

void LogIdleTimer::setIdleTimerDisabled(bool disabled) {
  if (disabled == disabled_) return;
  disabled_ = disabled;
  log_.write("Idle timer " + onOrOff(!disabled));
}

void LogStoreReview::requestReview() {
  log_.write("store review requested");
}

void LogStoreReview::openURL(const std::string& url) {
  log_.write("store page: " + url);
}

}  // namespace varnok
