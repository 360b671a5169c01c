#include "platform/progress_overlay.h"

namespace varnok {

void ProgressOverlay::showWhileExecuting(ScreenPresenter& presenter, TaskRunner& tasks, const std::string& text,
                                         Work work) {
  auto shown = std::make_shared<std::unique_ptr<ScreenPresenter::Overlay>>(presenter.showOverlay(text));
  tasks.globalQueue([&tasks, shown = std::move(shown), work = std::move(work)]() mutable {
    ProgressOverlay overlay(tasks, shown);
    work(overlay);
    // A screen that only the task still held goes on the main thread.
    tasks.mainThread([shown = std::move(shown), done = std::move(work)] { shown->reset(); });
  });
}

void ProgressOverlay::setText(std::string text) {
  tasks_.mainThread([shown = shown_, text = std::move(text)] { (*shown)->setText(text); });
}

void ProgressOverlay::showCheckmark(std::string text) {
  tasks_.mainThread([shown = shown_, text = std::move(text)] {
    (*shown)->showCheckmark();
    (*shown)->setText(text);
  });
}

}  // namespace varnok
