// ProgressOverlay: runs one task in the background while an overlay is shown.
//
//   ProgressOverlay::showWhileExecuting(presenter, tasks, text, [](ProgressOverlay& overlay) {
//     ...                                 // On a background thread.
//     overlay.showCheckmark(removedText);
//     overlay.pause(1s);
//   });
//
// The overlay goes when the task has returned, after everything that the task
// posted to the main thread. `presenter` and `tasks` outlive the task; whatever
// else it uses, it keeps alive itself, and lets go of on the main thread.

#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "platform/screen_presenter.h"
#include "platform/task_runner.h"

namespace varnok {

class ProgressOverlay {
 public:
  using Work = std::function<void(ProgressOverlay&)>;

  // Main thread.
  static void showWhileExecuting(ScreenPresenter& presenter, TaskRunner& tasks, const std::string& text, Work work);

  // Any thread; shown a moment later.
  void setText(std::string text);
  void showCheckmark(std::string text);

  // Holds the task's thread, so that a text can be read.
  void pause(std::chrono::milliseconds time) { tasks_.sleep(time); }

 private:
  using Shown = std::shared_ptr<std::unique_ptr<ScreenPresenter::Overlay>>;  // Touched on the main thread.

  ProgressOverlay(TaskRunner& tasks, Shown shown) : tasks_(tasks), shown_(std::move(shown)) {}
  TaskRunner& tasks_;
  Shown shown_;
};

}  // namespace varnok
