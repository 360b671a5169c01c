// Services that a desktop has no counterpart for, or none that this program may
// use: each tells the developers' log what it was asked.

#pragma once

#include <map>
#include <string>

#include "platform/crash_reporter.h"
#include "platform/developer_log.h"
#include "platform/feedback_service.h"
#include "platform/idle_timer.h"
#include "platform/store_review.h"

namespace varnok {

class LogCrashReporter : public CrashReporter {
 public:
  explicit LogCrashReporter(DeveloperLog& log) : log_(log) {}
  void start() override;

 private:
  DeveloperLog& log_;
};

class LogFeedbackService : public FeedbackService {
 public:
  explicit LogFeedbackService(DeveloperLog& log) : log_(log) {}
  void initialize(const FeedbackConfiguration& configuration) override;
  void setCustomFields(const std::map<std::string, std::string>& fields) override;
  void present() override { log_.write("Help desk opened"); }

 private:
  DeveloperLog& log_;
};

// Logs changes only: the last call wins, and repeating it means nothing.
class LogIdleTimer : public IdleTimer {
 public:
  explicit LogIdleTimer(DeveloperLog& log) : log_(log) {}
  void setIdleTimerDisabled(bool disabled) override;

 private:
  DeveloperLog& log_;
  bool disabled_ = false;
};

class LogStoreReview : public StoreReview {
 public:
  explicit LogStoreReview(DeveloperLog& log) : log_(log) {}
  void requestReview() override;
  void openURL(const std::string& url) override;

 private:
  DeveloperLog& log_;
};

}  // namespace varnok
