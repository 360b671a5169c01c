// ContactImport: vCard files into the address book, in the background, with an
// overlay while it lasts and a notice of what came of it. All files or none.
//
// Main thread; what it was given outlives it and the import under way.

#pragma once

#include <QList>
#include <QObject>
#include <QQmlEngine>
#include <QUrl>
#include <functional>

#include "app/startup/services.h"
#include "platform/linux/dbus/desktop_file_chooser.h"

namespace varnok {

class ContactImport : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the application")

 public:
  // `imported` is called on the main thread when there are more people. The
  // references outlive it.
  ContactImport(Services services, DesktopFileChooser& chooser, std::function<void()> imported);

  // Asks for files and imports them.
  Q_INVOKABLE void choose();

  // Files only; others are left out.
  Q_INVOKABLE void importUrls(const QList<QUrl>& urls);

  // Access may have been given meanwhile.
  Q_INVOKABLE void lookAgain() { imported_(); }

 Q_SIGNALS:
  // The desktop has no dialog of its own.
  void dialogWanted();

 private:
  void importFiles(std::vector<std::string> paths);

  const Services services_;
  DesktopFileChooser& chooser_;
  const std::function<void()> imported_;
};

}  // namespace varnok
