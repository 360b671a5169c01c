#include "platform/linux/dbus/desktop_store_review.h"

#include <chrono>
#include <utility>

#include "platform/linux/mail/child_process.h"
#include "platform/linux/posix/optional_module.h"

namespace varnok {
namespace {

constexpr std::string_view kScheme = "appstream://";

// The software centre may run in the opener's place and stay.
constexpr std::chrono::seconds kTimeToStart{10};

}  // namespace

DesktopStoreReview::DesktopStoreReview(Settings settings, TaskRunner& tasks, DeveloperLog& log)
    : settings_(std::move(settings)), tasks_(tasks), log_(log), portal_("varnokMakePortal", settings_.bus) {}

void DesktopStoreReview::requestReview() {
  log_.write("store review requested");
  openURL(std::string(kScheme));
}

void DesktopStoreReview::openURL(const std::string& url) {
  const std::string page = url.starts_with(kScheme) ? std::string(kScheme) + settings_.component : url;
  log_.write("store page: " + page);
  if (settings_.desktop) tasks_.globalQueue([this, page] { open(page); });
}

void DesktopStoreReview::open(const std::string& url) {
  const auto portal = hasSessionBus() ? portal_.get() : nullptr;
  if (portal == nullptr) return openWithProgram(url, "there is no portal to ask");
  const OpenQuestions::Number number = questions_.begin();
  Status status;
  auto question = portal->openURI(
      url,
      [this, url, number](PortalAnswer answer) {
        tasks_.globalQueue([this, url, number, answer] {
          if (!questions_.end(number) || answer != PortalAnswer::failed) return;
          openWithProgram(url, "the portal gave up");
        });
      },
      status);
  if (question != nullptr) {
    questions_.keep(number, std::move(question));
    return;
  }
  questions_.end(number);
  if (status.code() != Status::Code::cancelled) openWithProgram(url, status.message());
}

void DesktopStoreReview::openWithProgram(const std::string& url, const std::string& why) {
  log_.write("store page not through the portal: " + why);
  const Status status = launchProgram({"xdg-open", url}, kTimeToStart);
  if (!status.ok()) log_.write("store page: " + status.message());
}

void DesktopStoreReview::stop() {
  questions_.stop();
  portal_.stop();
}

}  // namespace varnok
