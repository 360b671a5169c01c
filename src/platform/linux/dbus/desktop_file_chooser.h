// DesktopFileChooser: the desktop's own dialog for the choice of files, shown by
// the portal. Main thread.

#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/developer_log.h"
#include "platform/linux/dbus/lazy_service.h"
#include "platform/linux/dbus/open_questions.h"
#include "platform/task_runner.h"

namespace varnok {

class DesktopFileChooser {
 public:
  // Addresses of files; none when the user chose none. Nothing where no portal
  // asks: whoever wants the files then asks in another way.
  using Chosen = std::function<void(std::optional<std::vector<std::string>> uris)>;

  struct Settings {
    bool desktop = false;  // Somebody sits at one.
    BusSettings bus{};
  };

  // The references, and this, outlive every choice under way.
  DesktopFileChooser(const Settings& settings, TaskRunner& tasks, DeveloperLog& log);

  // `chosen` runs once, unless stop() or another choice comes first, which takes
  // the dialog away.
  void choose(const PortalFiles& files, const Chosen& chosen);

  // As for DesktopMailComposer.
  void stop();

 private:
  void ask(OpenQuestions::Number number, const PortalFiles& files, const Chosen& chosen);
  void giveUp(OpenQuestions::Number number, const Chosen& chosen, const std::string& why);

  const bool desktop_;
  TaskRunner& tasks_;
  DeveloperLog& log_;
  OpenQuestions questions_;
  LazyService<DesktopPortal> portal_;
};

}  // namespace varnok
