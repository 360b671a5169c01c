#include "platform/linux/dbus/desktop_file_chooser.h"

#include <utility>

#include "platform/linux/posix/optional_module.h"

namespace varnok {

DesktopFileChooser::DesktopFileChooser(const Settings& settings, TaskRunner& tasks, DeveloperLog& log)
    : desktop_(settings.desktop), tasks_(tasks), log_(log), portal_("varnokMakePortal", settings.bus) {}

void DesktopFileChooser::choose(const PortalFiles& files, const Chosen& chosen) {
  questions_.endAll();
  const OpenQuestions::Number number = questions_.begin();
  if (!desktop_ || !hasSessionBus()) return giveUp(number, chosen, "there is no desktop");
  tasks_.globalQueue([this, number, files, chosen] { ask(number, files, chosen); });
}

void DesktopFileChooser::ask(OpenQuestions::Number number, const PortalFiles& files, const Chosen& chosen) {
  if (!questions_.isOpen(number)) return;
  const auto portal = portal_.get();
  if (portal == nullptr) return giveUp(number, chosen, "there is no portal to ask");
  Status status;
  auto question = portal->chooseFiles(
      files,
      [this, number, chosen](PortalAnswer answer, std::vector<std::string> uris) {
        tasks_.mainThread([this, number, chosen, answer, uris = std::move(uris)] {
          if (answer == PortalAnswer::failed) return giveUp(number, chosen, "the portal gave up");
          if (questions_.end(number)) chosen(uris);
        });
      },
      status);
  if (question == nullptr) return giveUp(number, chosen, status.message());
  questions_.keep(number, std::move(question));
}

void DesktopFileChooser::giveUp(OpenQuestions::Number number, const Chosen& chosen, const std::string& why) {
  if (!questions_.end(number)) return;  // Another choice stands in its place.
  log_.write("files not chosen through the portal: " + why);
  tasks_.mainThread([chosen] { chosen(std::nullopt); });
}

void DesktopFileChooser::stop() {
  questions_.stop();
  portal_.stop();
}

}  // namespace varnok
