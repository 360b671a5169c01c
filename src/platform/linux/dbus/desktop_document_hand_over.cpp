#include "platform/linux/dbus/desktop_document_hand_over.h"

#include "platform/linux/posix/optional_module.h"

namespace varnok {

DesktopDocumentHandOver::DesktopDocumentHandOver(const Settings& settings, DocumentHandOver& fallback,
                                                 TaskRunner& tasks, DeveloperLog& log)
    : desktop_(settings.desktop),
      fallback_(fallback),
      tasks_(tasks),
      log_(log),
      portal_("varnokMakePortal", settings.bus) {}

void DesktopDocumentHandOver::presentOptionsMenu(const std::string& path) {
  if (!desktop_ || !hasSessionBus()) {
    fallback_.presentOptionsMenu(path);
    return;
  }
  tasks_.globalQueue([this, path] { ask(path); });
}

void DesktopDocumentHandOver::ask(const std::string& path) {
  const auto portal = portal_.get();
  if (portal == nullptr) return fallBack(path, "there is no portal to ask");
  const OpenQuestions::Number number = questions_.begin();
  Status status;
  auto question = portal->openFile(
      path, /*ask=*/true,
      [this, path, number](PortalAnswer answer) {
        tasks_.mainThread([this, path, number, answer] {
          if (!questions_.end(number) || answer != PortalAnswer::failed) return;
          fallBack(path, "the portal gave up");
        });
      },
      status);
  if (question != nullptr) {
    questions_.keep(number, std::move(question));
    return;
  }
  questions_.end(number);
  if (status.code() != Status::Code::cancelled) fallBack(path, status.message());
}

void DesktopDocumentHandOver::fallBack(const std::string& path, const std::string& why) {
  log_.write("hand-over not through the portal: " + why);
  tasks_.mainThread([this, path] { fallback_.presentOptionsMenu(path); });
}

void DesktopDocumentHandOver::stop() {
  questions_.stop();
  portal_.stop();
}

}  // namespace varnok
