#include "ui/qt_presenter.h"

#include <QDesktopServices>
#include <QUrl>
#include <algorithm>

namespace varnok {

void QuestionAdapter::refresh() {
  const PresentationStack::Question* question = stack_.question();
  shown_ = question != nullptr;
  // What was asked stays on the card while that goes away.
  if (shown_) {
    title_ = std::visit([](const auto& asked) { return QString::fromStdString(asked.title); }, *question);
    const auto* alert = std::get_if<AlertView>(question);
    const auto* sheet = std::get_if<ActionSheet>(question);
    sheet_ = sheet != nullptr;
    message_ = alert != nullptr ? QString::fromStdString(alert->message.value_or("")) : QString();
    cancelIndex_ = sheet != nullptr ? sheet->cancelButtonIndex : 0;
    destructiveIndex_ = sheet != nullptr ? sheet->destructiveButtonIndex.value_or(-1) : -1;
    buttons_.clear();
    for (const std::string& button : buttonsOf(*question))
      buttons_.append(QString::fromStdString(button));
  }
  Q_EMIT changed();
}

void QtPresenter::present(std::shared_ptr<Screen> screen) {
  // A screen of long ago may have had the same place in memory.
  changed_.erase(screen.get());
  PresentationStack::present(std::move(screen));
}

void QtPresenter::dismiss(const Screen& screen) {
  const std::vector<Screen*> shown = screens();
  const auto found = std::ranges::find(shown, &screen);
  if (found == shown.begin()) return;
  for (auto gone = found; gone != shown.end(); ++gone) {
    const auto page = std::ranges::find(pages_, *gone, &ScreenAdapter::screen);
    if (page != pages_.end()) (*page)->detach();
    changed_.erase(*gone);
  }
  PresentationStack::dismiss(screen);
}

void QtPresenter::screenDidChange(Screen& screen) {
  changed_.insert(&screen);
  PresentationStack::screenDidChange(screen);
}

void QtPresenter::openURL(const std::string& url) {
  QDesktopServices::openUrl(QUrl(QString::fromStdString(url)));
}

void QtPresenter::presentationDidChange() {
  if (std::exchange(flushPlanned_, true)) return;
  QMetaObject::invokeMethod(this, "flush", Qt::QueuedConnection);
}

void QtPresenter::flush() {
  flushPlanned_ = false;
  for (ScreenAdapter* page : pages_) {
    if (page->screen() != nullptr && changed_.contains(page->screen())) page->refresh();
  }
  changed_.clear();
  if (updatePages()) Q_EMIT pagesChanged();
  question_.refresh();
  Q_EMIT overlayChanged();
}

// The adapters of dismissed screens stay until their pages let go of them.
bool QtPresenter::updatePages() {
  QList<ScreenAdapter*> pages;
  for (Screen* screen : screens()) {
    const auto known = std::ranges::find(pages_, screen, &ScreenAdapter::screen);
    pages.append(known != pages_.end() ? *known : new ScreenAdapter(*screen, this));
  }
  if (pages == pages_) return false;
  pages_ = std::move(pages);
  return true;
}

// For QML, which may only read it.
QQmlListProperty<ScreenAdapter> QtPresenter::listedPages() {
  using List = QQmlListProperty<ScreenAdapter>;
  return {this, &pages_, [](List* list) { return static_cast<QList<ScreenAdapter*>*>(list->data)->size(); },
          [](List* list, qsizetype index) { return static_cast<QList<ScreenAdapter*>*>(list->data)->at(index); }};
}

bool QtPresenter::closeAbove(ScreenAdapter* page) {
  if (page == nullptr || page->screen() == nullptr) return false;
  while (&front() != page->screen()) {
    Screen* last = &front();
    const auto above = std::ranges::find(pages_, last, &ScreenAdapter::screen);
    if (above == pages_.end() || !(*above)->close() || &front() == last || question() != nullptr) return false;
  }
  return question() == nullptr && overlay() == nullptr;
}

void QtPresenter::forget(ScreenAdapter* page) {
  if (page != nullptr && !pages_.contains(page)) page->deleteLater();
}

}  // namespace varnok
