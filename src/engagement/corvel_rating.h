// CorvelRating: decides when to ask for a rating in the store, and asks.
//
// It counts uses and significant events (completed backups) for each version
// of the application, and asks only after the second event, when the user has
// neither rated nor declined, not within two days of the last request, and
// when the device is online.
//
// Lifetime. One object for the process, made in main. Threads. The entry points
// may be called from any thread and work on one of their own; the request
// itself is made on the main thread.

#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/clock.h"
#include "platform/developer_log.h"
#include "platform/device.h"
#include "platform/network_monitor.h"
#include "platform/preference_store.h"
#include "platform/store_review.h"
#include "platform/task_runner.h"

namespace varnok {

struct CorvelRatingServices {
  PreferenceStore& preferences;
  const Clock& clock;
  const Device& device;
  NetworkMonitor& network;
  StoreReview& store;
  TaskRunner& tasks;
  DeveloperLog& log;
};

class CorvelRating {
 public:
  explicit CorvelRating(CorvelRatingServices services) : services_(services) {}
  CorvelRating(const CorvelRating&) = delete;
  CorvelRating& operator=(const CorvelRating&) = delete;
  ~CorvelRating() = default;

  void appLaunched() { appLaunched(/*canPromptForRating=*/true); }
  void appLaunched(bool canPromptForRating);
  void appEnteredForeground(bool canPromptForRating) { appLaunched(canPromptForRating); }
  void userDidSignificantEvent(bool canPromptForRating);
  void appWillResignActive() { hideRatingAlert(); }

  // Opens the store's page, and counts as having rated this version.
  void rateApp();

  // Answers of an alert whose buttons are decline, rate and remind later.
  void clickedButtonAtIndex(int index);

  bool ratingConditionsHaveBeenMet() const;
  bool connectedToNetwork();
  void incrementUseCount();
  void incrementSignificantEventCount();
  void showRatingAlert();
  void hideRatingAlert();

 private:
  enum class Counted { use, event };

  void increment(Counted counted);
  void startVersion(const std::string& version, Counted counted);
  void countAndRate(Counted counted, bool canPromptForRating);
  // Writes the changes out. What is lost is a count.
  void flush();

  CorvelRatingServices services_;
  std::mutex counting_;                // Two events at once are two.
  std::function<void()> ratingAlert_;  // Dismisses the alert in front; empty, since none is ever shown.
};

}  // namespace varnok
