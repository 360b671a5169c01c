#include "platform/linux/dbus/desktop_file_chooser.h"

#include <utility>

#include "platform/linux/posix/optional_module.h"

namespace varnok {

DesktopFileChooser::DesktopFileChooser(const Settings& settings, TaskRunner& tasks, DeveloperLog& log)
    : desktop_(settings.desktop), tasks_(tasks), log_(log), portal_("varnokMakePortal", settings.bus) {}

void DesktopFileChooser::choose(const PortalFiles& files, const Chosen& chosen) {
  questions_.endAll();
  if (!desktop_ || !hasSessionBus()) return giveUp(chosen, "there is no desktop");
  tasks_.globalQueue([this, files, chosen] { ask(files, chosen); });
}

void DesktopFileChooser::ask(const PortalFiles& files, const Chosen& chosen) {
  const auto portal = portal_.get();
  if (portal == nullptr) return giveUp(chosen, "there is no portal to ask");
  const OpenQuestions::Number number = questions_.begin();
  Status status;
  auto question = portal->chooseFiles(
      files,
      [this, chosen, number](PortalAnswer answer, std::vector<std::string> uris) {
        tasks_.mainThread([this, chosen, number, answer, uris = std::move(uris)] {
          if (!questions_.end(number)) return;
          if (answer == PortalAnswer::failed) return giveUp(chosen, "the portal gave up");
          chosen(uris);
        });
      },
      status);
  if (question != nullptr) {
    questions_.keep(number, std::move(question));
    return;
  }
  questions_.end(number);
  if (status.code() != Status::Code::cancelled) giveUp(chosen, status.message());
}

void DesktopFileChooser::giveUp(const Chosen& chosen, const std::string& why) {
  log_.write("files not chosen through the portal: " + why);
  tasks_.mainThread([chosen] { chosen(std::nullopt); });
}

void DesktopFileChooser::stop() {
  questions_.stop();
  portal_.stop();
}

}  // namespace varnok
