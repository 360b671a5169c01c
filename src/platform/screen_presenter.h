// ScreenPresenter: puts screens, alerts and sheets in front of the user. The
// touch application, the terminal and the tests each have one. Main thread.

#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/action_sheet.h"
#include "platform/alert_view.h"

namespace varnok {

// A screen without a toolkit: plain state and named actions.
class Screen {
 public:
  Screen() = default;
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;
  virtual ~Screen() = default;

  virtual std::string_view screenName() const = 0;
};

class ScreenPresenter {
 public:
  // Shown until destroyed.
  class Overlay {
   public:
    virtual ~Overlay() = default;
    virtual void setText(const std::string& text) = 0;
  };

  virtual ~ScreenPresenter() = default;

  // `screen` changed; draw it again. Costs little when called often.
  virtual void screenDidChange(Screen& screen) = 0;

  // Alerts and sheets queue: one in front, the next when it is answered.
  virtual void showAlert(AlertView alert) = 0;
  virtual void showActionSheet(ActionSheet sheet) = 0;

  virtual std::unique_ptr<Overlay> showOverlay(const std::string& text) = 0;
};

}  // namespace varnok
