#include "platform/presentation_stack.h"

#include <algorithm>

#include "platform/check.h"

namespace varnok {

class PresentationStack::OverlayHandle : public Overlay {
 public:
  OverlayHandle(PresentationStack& stack, std::list<ShownOverlay>::iterator shown) : stack_(stack), shown_(shown) {}
  OverlayHandle(const OverlayHandle&) = delete;
  OverlayHandle& operator=(const OverlayHandle&) = delete;
  ~OverlayHandle() override {
    stack_.overlays_.erase(shown_);
    stack_.presentationDidChange();
  }

  void setText(const std::string& text) override {
    shown_->text = text;
    stack_.presentationDidChange();
  }
  void showCheckmark() override {
    shown_->checkmark = true;
    stack_.presentationDidChange();
  }

 private:
  PresentationStack& stack_;
  std::list<ShownOverlay>::iterator shown_;
};

void PresentationStack::close() {
  questions_.clear();
  // The one in front first: it may refer to those below.
  while (!presented_.empty())
    presented_.pop_back();
}

std::vector<Screen*> PresentationStack::screens() const {
  std::vector<Screen*> all;
  if (root_ != nullptr) all.push_back(root_);
  for (const auto& screen : presented_)
    all.push_back(screen.get());
  return all;
}

Screen& PresentationStack::front() const {
  VARNOK_CHECK(root_ != nullptr);
  return presented_.empty() ? *root_ : *presented_.back();
}

bool PresentationStack::answer(int index) {
  if (questions_.empty()) return false;
  if (index < 0 || index >= static_cast<int>(buttonsOf(questions_.front()).size())) return false;
  // Out of the queue first: its answer may bring up the next one.
  const Question answered = std::move(questions_.front());
  questions_.pop_front();
  std::visit(
      [index](const auto& question) {
        if (question.delegate) question.delegate(question, index);
      },
      answered);
  presentationDidChange();
  return true;
}

void PresentationStack::present(std::shared_ptr<Screen> screen) {
  presented_.push_back(screen);
  screen->viewDidLoad();
  screen->viewWillAppear();
  presentationDidChange();
}

void PresentationStack::dismiss(const Screen& screen) {
  const auto found = std::ranges::find(presented_, &screen, &std::shared_ptr<Screen>::get);
  if (found == presented_.end()) return;
  // One of them may be in the middle of the operation that dismisses it.
  tasks_->mainThread([gone = std::vector(found, presented_.end())] {});
  presented_.erase(found, presented_.end());
  front().viewWillAppear();
  presentationDidChange();
}

void PresentationStack::screenDidChange(Screen& /*screen*/) {
  presentationDidChange();
}

void PresentationStack::showAlert(AlertView alert) {
  questions_.emplace_back(std::move(alert));
  presentationDidChange();
}

void PresentationStack::showActionSheet(ActionSheet sheet) {
  questions_.emplace_back(std::move(sheet));
  presentationDidChange();
}

std::unique_ptr<ScreenPresenter::Overlay> PresentationStack::showOverlay(const std::string& text) {
  overlays_.push_back({text});
  presentationDidChange();
  return std::make_unique<OverlayHandle>(*this, std::prev(overlays_.end()));
}

const std::vector<std::string>& buttonsOf(const PresentationStack::Question& question) {
  return std::visit([](const auto& shown) -> const std::vector<std::string>& { return shown.buttons; }, question);
}

}  // namespace varnok
