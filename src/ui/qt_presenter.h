// QtPresenter: the screens, questions and overlays in front of the user, for
// QML. Changes are gathered and told once in a turn of the event loop.
//
// Main thread.

#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QStringList>
#include <set>

#include "platform/presentation_stack.h"
#include "ui/screen_adapter.h"

namespace varnok {

// The alert or sheet in front.
class QuestionAdapter : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the presenter")
  Q_PROPERTY(bool shown READ shown NOTIFY changed)
  Q_PROPERTY(bool sheet READ sheet NOTIFY changed)
  Q_PROPERTY(QString title READ title NOTIFY changed)
  Q_PROPERTY(QString message READ message NOTIFY changed)
  Q_PROPERTY(QStringList buttons READ buttons NOTIFY changed)
  // The button that changes nothing.
  Q_PROPERTY(int cancelIndex READ cancelIndex NOTIFY changed)
  // The button that destroys something; -1 when none does.
  Q_PROPERTY(int destructiveIndex READ destructiveIndex NOTIFY changed)

 public:
  explicit QuestionAdapter(PresentationStack& stack, QObject* parent = nullptr) : QObject(parent), stack_(stack) {}

  void refresh();

  bool shown() const { return shown_; }
  bool sheet() const { return sheet_; }
  QString title() const { return title_; }
  QString message() const { return message_; }
  QStringList buttons() const { return buttons_; }
  int cancelIndex() const { return cancelIndex_; }
  int destructiveIndex() const { return destructiveIndex_; }

  Q_INVOKABLE bool answer(int index) { return stack_.answer(index); }

 Q_SIGNALS:
  void changed();

 private:
  PresentationStack& stack_;
  const PresentationStack::Question* seen_ = nullptr;
  bool shown_ = false;
  bool sheet_ = false;
  QString title_;
  QString message_;
  QStringList buttons_;
  int cancelIndex_ = 0;
  int destructiveIndex_ = -1;
};

class QtPresenter : public QObject, public PresentationStack {
  Q_OBJECT
  QML_NAMED_ELEMENT(Presenter)
  QML_UNCREATABLE("made by the application")
  // From the first screen to the one in front.
  Q_PROPERTY(QQmlListProperty<varnok::ScreenAdapter> pages READ listedPages NOTIFY pagesChanged)
  Q_PROPERTY(varnok::QuestionAdapter* question READ questionAdapter CONSTANT)
  Q_PROPERTY(bool overlayShown READ overlayShown NOTIFY overlayChanged)
  Q_PROPERTY(QString overlayText READ overlayText NOTIFY overlayChanged)
  Q_PROPERTY(bool overlayChecked READ overlayChecked NOTIFY overlayChanged)

 public:
  QtPresenter() : question_(*this) {}

  QList<ScreenAdapter*> pages() const { return pages_; }
  QQmlListProperty<ScreenAdapter> listedPages();
  QuestionAdapter* questionAdapter() { return &question_; }
  bool overlayShown() const { return overlay() != nullptr; }
  QString overlayText() const { return overlay() == nullptr ? QString() : QString::fromStdString(overlay()->text); }
  bool overlayChecked() const { return overlay() != nullptr && overlay()->checkmark; }

  // Leaves every screen above `page` by its own way out. False when one of them
  // stays, or asks something.
  Q_INVOKABLE bool closeAbove(varnok::ScreenAdapter* page);

  // The page of a dismissed screen has gone.
  Q_INVOKABLE void forget(varnok::ScreenAdapter* page);

  void present(std::shared_ptr<Screen> screen) override;
  void dismiss(const Screen& screen) override;
  void screenDidChange(Screen& screen) override;
  void openURL(const std::string& url) override;

  // Tells now what has been gathered.
  Q_INVOKABLE void flush();

 Q_SIGNALS:
  void pagesChanged();
  void overlayChanged();

 private:
  void presentationDidChange() override;
  bool updatePages();

  QList<ScreenAdapter*> pages_;
  QuestionAdapter question_;
  std::set<const Screen*> changed_;  // Compared only, they may be gone.
  bool flushPlanned_ = false;
};

}  // namespace varnok
