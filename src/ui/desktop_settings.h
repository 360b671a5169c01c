// DesktopSettings: what the desktop says of itself and the window follows: dark
// or light, size of text, whether things may move. Asked of the settings portal;
// where there is none, the toolkit's palette decides and nothing is scaled.
//
// The object is a property of the engine, "varnok.desktop". Main thread.

#pragma once

#include <QObject>
#include <QQmlEngine>
#include <memory>

namespace varnok {

class DesktopSettings : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(bool dark READ dark NOTIFY changed)
  Q_PROPERTY(bool motion READ motion NOTIFY changed)
  Q_PROPERTY(double textScale READ textScale NOTIFY changed)

 public:
  // Not made by the engine, which would take a constructor without arguments.
  explicit DesktopSettings(QObject* parent);
  DesktopSettings(const DesktopSettings&) = delete;
  DesktopSettings& operator=(const DesktopSettings&) = delete;
  ~DesktopSettings() override;

  static DesktopSettings* create(QQmlEngine* engine, QJSEngine* /*script*/) {
    auto* settings = engine->property("varnok.desktop").value<DesktopSettings*>();
    QQmlEngine::setObjectOwnership(settings, QQmlEngine::CppOwnership);
    return settings;
  }

  // Begins to ask, and to follow changes. Returns at once.
  void follow();

  bool dark() const { return dark_; }
  bool motion() const { return motion_; }
  double textScale() const { return textScale_; }

  void setDark(bool dark);
  void setMotion(bool motion);
  void setTextScale(double scale);

 Q_SIGNALS:
  void changed();

 private:
  class Portal;

  bool dark_;
  bool motion_ = true;
  double textScale_ = 1;
  std::unique_ptr<Portal> portal_;
};

}  // namespace varnok
