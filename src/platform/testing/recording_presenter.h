// A ScreenPresenter that keeps what was shown, for the test to read and answer.
//
//   presenter.alerts.front().message
//   presenter.answer(1);              // Presses a button of the alert in front.

#pragma once

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "platform/check.h"
#include "platform/screen_presenter.h"

namespace varnok {

class RecordingPresenter : public ScreenPresenter {
 public:
  std::deque<AlertView> alerts;  // Waiting for their answer, the one in front first.
  std::deque<ActionSheet> sheets;
  std::vector<std::string> overlays;  // Texts of those shown now.
  int redraws = 0;

  void screenDidChange(Screen& /*screen*/) override { ++redraws; }
  void showAlert(AlertView alert) override { alerts.push_back(std::move(alert)); }
  void showActionSheet(ActionSheet sheet) override { sheets.push_back(std::move(sheet)); }
  std::unique_ptr<Overlay> showOverlay(const std::string& text) override {
    overlays.push_back(text);
    return std::make_unique<ShownOverlay>(overlays);
  }

  void answer(int index) {
    VARNOK_CHECK(!alerts.empty());
    const AlertView alert = std::move(alerts.front());
    alerts.pop_front();
    if (alert.delegate) alert.delegate(alert, index);
  }

  void choose(int index) {
    VARNOK_CHECK(!sheets.empty());
    const ActionSheet sheet = std::move(sheets.front());
    sheets.pop_front();
    if (sheet.delegate) sheet.delegate(sheet, index);
  }

 private:
  class ShownOverlay : public Overlay {
   public:
    explicit ShownOverlay(std::vector<std::string>& overlays) : overlays_(overlays) {}
    ShownOverlay(const ShownOverlay&) = delete;
    ShownOverlay& operator=(const ShownOverlay&) = delete;
    ~ShownOverlay() override { overlays_.pop_back(); }
    void setText(const std::string& text) override { overlays_.back() = text; }

   private:
    std::vector<std::string>& overlays_;
  };
};

}  // namespace varnok
