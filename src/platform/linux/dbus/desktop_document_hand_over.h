// DesktopDocumentHandOver: the desktop portal shows the applications that open
// such a file and hands it to the one that the user picks; where there is no
// portal, xdg-open takes the application that is set for such files.

#pragma once

#include <string>

#include "platform/developer_log.h"
#include "platform/document_hand_over.h"
#include "platform/linux/dbus/lazy_service.h"
#include "platform/linux/dbus/open_questions.h"
#include "platform/task_runner.h"

namespace varnok {

class DesktopDocumentHandOver : public DocumentHandOver {
 public:
  struct Settings {
    bool desktop = false;  // Somebody sits at one.
    BusSettings bus{};
  };

  // `fallback` takes what the portal does not. The references, and this, outlive
  // every hand-over under way.
  DesktopDocumentHandOver(const Settings& settings, DocumentHandOver& fallback, TaskRunner& tasks, DeveloperLog& log);

  void presentOptionsMenu(const std::string& path) override;

  // As for DesktopMailComposer.
  void stop();

 private:
  void ask(const std::string& path);
  void fallBack(const std::string& path, const std::string& why);

  const bool desktop_;
  DocumentHandOver& fallback_;
  TaskRunner& tasks_;
  DeveloperLog& log_;
  OpenQuestions questions_;
  LazyService<DesktopPortal> portal_;
};

}  // namespace varnok
