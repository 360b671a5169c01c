#include "cli/terminal_presenter.h"

namespace varnok {
namespace {

class NoOverlay : public ScreenPresenter::Overlay {
 public:
  void setText(const std::string& /*text*/) override {}
  void showCheckmark() override {}
};

}  // namespace

void TerminalPresenter::screenDidChange(Screen& /*screen*/) {
  if (observer_) observer_();
}

void TerminalPresenter::showAlert(AlertView alert) {
  alerts_.push_back(alert.message ? alert.title + ": " + *alert.message : alert.title);
  if (!alert.delegate) return;
  tasks_->mainThread([alert = std::move(alert)] { alert.delegate(alert, 0); });
}

void TerminalPresenter::showActionSheet(ActionSheet sheet) {
  if (!sheet.delegate) return;
  tasks_->mainThread([sheet = std::move(sheet)] { sheet.delegate(sheet, sheet.cancelButtonIndex); });
}

std::unique_ptr<ScreenPresenter::Overlay> TerminalPresenter::showOverlay(const std::string& /*text*/) {
  return std::make_unique<NoOverlay>();
}

}  // namespace varnok
