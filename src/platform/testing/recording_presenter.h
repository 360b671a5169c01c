// A ScreenPresenter that keeps what was shown, for the test to read and answer.
//
//   presenter.alerts.front().message
//   presenter.answer(1);              // Presses a button of the alert in front.

#pragma once

#include <algorithm>
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
  std::vector<std::string> overlays;             // Texts of those shown now.
  std::vector<std::shared_ptr<Screen>> screens;  // Presented ones, the one in front last.
  std::vector<std::string> urls;
  bool checkmark = false;  // On the overlay shown last.
  int redraws = 0;

  void present(std::shared_ptr<Screen> screen) override {
    screens.push_back(std::move(screen));
    screens.back()->viewDidLoad();
    screens.back()->viewWillAppear();
  }
  // Screens go at the next call of settle(), as they would after their
  // operation has returned.
  void dismiss(const Screen& screen) override {
    const auto found = std::ranges::find(screens, &screen, &std::shared_ptr<Screen>::get);
    if (found == screens.end()) return;
    gone_.insert(gone_.end(), found, screens.end());
    screens.erase(found, screens.end());
    if (!screens.empty()) screens.back()->viewWillAppear();
  }
  void settle() { gone_.clear(); }
  void openURL(const std::string& url) override { urls.push_back(url); }

  template <class T>
  T& front() {
    VARNOK_CHECK(!screens.empty());
    T* screen = dynamic_cast<T*>(screens.back().get());
    VARNOK_CHECK(screen != nullptr);
    return *screen;
  }

  void screenDidChange(Screen& /*screen*/) override { ++redraws; }
  void showAlert(AlertView alert) override { alerts.push_back(std::move(alert)); }
  void showActionSheet(ActionSheet sheet) override { sheets.push_back(std::move(sheet)); }
  std::unique_ptr<Overlay> showOverlay(const std::string& text) override {
    overlays.push_back(text);
    checkmark = false;
    return std::make_unique<ShownOverlay>(*this);
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
    explicit ShownOverlay(RecordingPresenter& presenter) : presenter_(presenter) {}
    ShownOverlay(const ShownOverlay&) = delete;
    ShownOverlay& operator=(const ShownOverlay&) = delete;
    ~ShownOverlay() override { presenter_.overlays.pop_back(); }
    void setText(const std::string& text) override { presenter_.overlays.back() = text; }
    void showCheckmark() override { presenter_.checkmark = true; }

   private:
    RecordingPresenter& presenter_;
  };

  std::vector<std::shared_ptr<Screen>> gone_;
};

}  // namespace varnok
