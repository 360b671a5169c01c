// ScreenPresenter: puts screens, alerts and sheets in front of the user. The
// touch application, the terminal and the tests each have one. Main thread,
// where nothing else is said.

#pragma once

#include <memory>
#include <string>

#include "platform/action_sheet.h"
#include "platform/alert_view.h"
#include "platform/screen.h"

namespace varnok {

class ScreenPresenter {
 public:
  // In front of everything until destroyed, which happens on the main thread.
  class Overlay {
   public:
    virtual ~Overlay() = default;
    virtual void setText(const std::string& text) = 0;
    // Shows a check mark in place of the activity.
    virtual void showCheckmark() = 0;
  };

  virtual ~ScreenPresenter() = default;

  // Covers the screen in front with `screen`, after its viewDidLoad() and
  // viewWillAppear(). The presenter keeps it until it is dismissed.
  virtual void present(std::shared_ptr<Screen> screen) = 0;

  // Takes `screen` and all above it away and lets go of them, but not before
  // the operation of theirs that is under way has returned. The one uncovered
  // gets viewWillAppear(). A screen that is not shown is left alone.
  virtual void dismiss(const Screen& screen) = 0;

  // `screen` changed; draw it again. Costs little when called often.
  virtual void screenDidChange(Screen& screen) = 0;

  // Alerts and sheets queue: one in front, the next when it is answered.
  virtual void showAlert(AlertView alert) = 0;
  virtual void showActionSheet(ActionSheet sheet) = 0;

  virtual std::unique_ptr<Overlay> showOverlay(const std::string& text) = 0;

  // In the user's browser.
  virtual void openURL(const std::string& url) = 0;
};

}  // namespace varnok
