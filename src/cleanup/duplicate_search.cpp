#include "cleanup/duplicate_search.h"

#include <chrono>
#include <memory>

#include "cleanup/duplicate_finder.h"
#include "cleanup/duplicate_records_table_view_controller.h"
#include "platform/cause_text.h"
#include "platform/progress_overlay.h"
#include "platform/text_key.h"

namespace varnok {
namespace {

constexpr std::chrono::seconds kNoticeTime{2};

void setIdleTimerDisabled(const CleanupServices& services, bool disabled) {
  services.tasks.mainThread([&idleTimer = services.idleTimer, disabled] { idleTimer.setIdleTimerDisabled(disabled); });
}

void showFailure(const CleanupServices& services, const Status& status) {
  services.tasks.mainThread([services, status] {
    services.presenter.showAlert({.title = services.texts.text(text_key::Warning),
                                  .message = causeText(status, services.texts),
                                  .buttons = {services.texts.text(text_key::OK)},
                                  .delegate = {}});
  });
}

// A book without access has nobody in it. Of one that cannot be read to its end
// nobody is offered for removal.
void findDuplicatedRecordsWithThread(const CleanupServices& services, ProgressOverlay& overlay) {
  setIdleTimerDisabled(services, /*disabled=*/true);
  std::unique_ptr<ContactStore> addressBook = ABAddressBookCreateWithOptions(services.contacts);
  DuplicateRecords found = findDuplicates(addressBook.get(), services.clock);
  setIdleTimerDisabled(services, /*disabled=*/false);
  if (addressBook != nullptr && !addressBook->readStatus().ok()) {
    showFailure(services, addressBook->readStatus());
  } else if (found.duplicateRecords.empty()) {
    overlay.showCheckmark(services.texts.text(text_key::DUPLICATE_RECORD_NOT_FOUND));
    overlay.pause(kNoticeTime);
  } else {
    auto screen =
        std::make_shared<DuplicateRecordsTableViewController>(services, std::move(found), std::move(addressBook));
    services.tasks.mainThread([services, screen = std::move(screen)] { services.presenter.present(screen); });
  }
}

}  // namespace

void DuplicateSearch::removeDuplitaceRecord() {
  ProgressOverlay::showWhileExecuting(
      services_.presenter, services_.tasks, services_.texts.text(text_key::DUPLICATE_RECORD_SEARCHING),
      [services = services_](ProgressOverlay& overlay) { findDuplicatedRecordsWithThread(services, overlay); });
}

}  // namespace varnok
