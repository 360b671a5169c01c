// TerminalPresenter: the screens of a command that asks nothing. An alert is
// kept for the command to print, and answered with its first, harmless button;
// an action sheet with its cancel button.

#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/screen_presenter.h"
#include "platform/task_runner.h"

namespace varnok {

class TerminalPresenter : public ScreenPresenter {
 public:
  // Where answers are given, on its main thread; set before the first screen.
  void setTasks(TaskRunner& tasks) { tasks_ = &tasks; }

  // Called whenever a screen changed; empty to stop.
  void onChange(std::function<void()> observer) { observer_ = std::move(observer); }

  // The texts of the alerts so far, oldest first; forgotten by this call.
  std::vector<std::string> takeAlerts() { return std::exchange(alerts_, {}); }

  // The addresses to be opened so far; forgotten by this call.
  std::vector<std::string> takeURLs() { return std::exchange(urls_, {}); }

  // The commands show no screen over the first one.
  void present(std::shared_ptr<Screen> /*screen*/) override {}
  void dismiss(const Screen& /*screen*/) override {}
  void screenDidChange(Screen& screen) override;
  void showAlert(AlertView alert) override;
  void showActionSheet(ActionSheet sheet) override;
  std::unique_ptr<Overlay> showOverlay(const std::string& text) override;
  void openURL(const std::string& url) override { urls_.push_back(url); }

 private:
  TaskRunner* tasks_ = nullptr;
  std::function<void()> observer_;
  std::vector<std::string> alerts_;
  std::vector<std::string> urls_;
};

}  // namespace varnok
