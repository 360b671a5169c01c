#include "platform/linux/desktop/xdg_document_hand_over.h"

#include <chrono>

#include "platform/linux/mail/child_process.h"
#include "platform/text_key.h"

namespace varnok {
namespace {

// Without a desktop the application runs in the opener's place and stays.
constexpr std::chrono::seconds kTimeToStart{10};

}  // namespace

void XdgDocumentHandOver::presentOptionsMenu(const std::string& path) {
  tasks_.globalQueue([this, path] {
    const Status status = handOver(path);
    if (status.ok()) return;
    log_.write("hand-over of " + path + ": " + status.message());
    tasks_.mainThread([this] {
      AlertView alert;
      alert.title = texts_.text(text_key::ALERTVIEWTITLE);
      alert.message = texts_.text(text_key::HAND_OVER_FAILED);
      alert.buttons = {texts_.text(text_key::OK)};
      presenter_.showAlert(std::move(alert));
    });
  });
}

Status XdgDocumentHandOver::handOver(const std::string& path) const {
  // The path is absolute, so it cannot be taken for an option.
  return launchProgram({program_, path}, kTimeToStart);
}

}  // namespace varnok
