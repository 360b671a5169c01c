// PresentationStack: what is in front of the user, for a presenter that draws
// it: the screens over the first one, the alerts and sheets that wait for their
// answer, the overlay.
//
// Lifetime. setTasks() and setRoot() once, before anything is presented; both
// outlive it. Threads. Main thread.

#pragma once

#include <deque>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/screen_presenter.h"
#include "platform/task_runner.h"

namespace varnok {

class PresentationStack : public ScreenPresenter {
 public:
  using Question = std::variant<AlertView, ActionSheet>;

  struct ShownOverlay {
    std::string text;
    bool checkmark = false;
  };

  void setTasks(TaskRunner& tasks) { tasks_ = &tasks; }
  // The first screen, which is never dismissed.
  void setRoot(Screen& root) { root_ = &root; }

  // Lets go of everything in front of the first screen, at the program's end:
  // before what the screens use goes.
  void close();

  // From the first screen to the one in front. Not empty once there is a root.
  std::vector<Screen*> screens() const;
  Screen& front() const;

  // The alert or sheet in front; null when none waits.
  const Question* question() const { return questions_.empty() ? nullptr : &questions_.front(); }
  // Presses a button of the one in front. False when there is no such button.
  bool answer(int index);

  const ShownOverlay* overlay() const { return overlays_.empty() ? nullptr : &overlays_.back(); }

  void present(std::shared_ptr<Screen> screen) override;
  void dismiss(const Screen& screen) override;
  void screenDidChange(Screen& screen) override;
  void showAlert(AlertView alert) override;
  void showActionSheet(ActionSheet sheet) override;
  std::unique_ptr<Overlay> showOverlay(const std::string& text) override;

 protected:
  // Something of the above is another now.
  virtual void presentationDidChange() {}

 private:
  class OverlayHandle;

  TaskRunner* tasks_ = nullptr;
  Screen* root_ = nullptr;
  std::vector<std::shared_ptr<Screen>> presented_;
  std::deque<Question> questions_;
  std::list<ShownOverlay> overlays_;  // The one in front last.
};

// The titles of a question's buttons, by index.
const std::vector<std::string>& buttonsOf(const PresentationStack::Question& question);

}  // namespace varnok
