// VarnokAppDelegate: start-up in its order, and the platform's events.
//
// Lifetime. initialize() once, before any instance; one instance that lives as
// long as the application and owns the main screen. Main thread.

#pragma once

#include <memory>
#include <string>

#include "app/startup/services.h"

namespace varnok {

// How the application came to be launched, or is running.
struct LaunchOptions {
  bool localNotification = false;  // The user opened a backup reminder.
};

enum class ApplicationState : int { active = 0, inactive = 1, background = 2 };

enum class StatusBarStyle : int { darkContent = 0, lightContent = 1 };

// The application's window, for the front end to open.
struct ApplicationWindow {
  Screen* rootViewController = nullptr;
  bool keyAndVisible = false;
  StatusBarStyle statusBarStyle = StatusBarStyle::darkContent;
};

class VarnokAppDelegate {
 public:
  explicit VarnokAppDelegate(Services services);

  // Registers the defaults of the preferences. They are not stored.
  static void initialize(PreferenceStore& preferences);

  bool didFinishLaunchingWithOptions(const LaunchOptions& options);

  // Answers true for every URL, also for those of others.
  bool openURL(const std::string& url);

  void didReceiveLocalNotification(ApplicationState state);
  void applicationDidBecomeActive();
  void applicationWillResignActive() {}
  void applicationDidEnterBackground() {}
  void applicationWillEnterForeground() {}
  void applicationWillTerminate() {}

  // The main screen; null before start-up.
  VarnokViewController* viewController() { return viewController_.get(); }

  const ApplicationWindow& window() const { return window_; }

  // One line about the device, for the feedback service.
  std::string deviceDataLine();

 private:
  void markFirstLaunch();
  void startFeedback();

  Services services_;
  std::unique_ptr<VarnokViewController> viewController_;
  ApplicationWindow window_;
};

}  // namespace varnok
