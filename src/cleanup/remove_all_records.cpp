#include "cleanup/remove_all_records.h"

#include "cleanup/record_removal.h"
#include "contacts/address_book.h"
#include "platform/text_key.h"

namespace varnok {

ActionSheet removeAllSheet(const TextCatalog& texts, std::function<void(const ActionSheet&, int index)> answer) {
  ActionSheet sheet;
  sheet.title = texts.text(text_key::REMOVE_ALL_MSG);
  sheet.buttons = {texts.text(text_key::OK), texts.text(text_key::Cancel)};
  sheet.destructiveButtonIndex = 0;
  sheet.cancelButtonIndex = 1;
  sheet.tag = kRemoveAllTag;
  sheet.delegate = std::move(answer);
  return sheet;
}

AlertView removedAllAlert(const TextCatalog& texts) {
  return {.title = texts.text(text_key::REMOVE_ALL_INFO),
          .message = {},
          .buttons = {texts.text(text_key::OK)},
          .delegate = {}};
}

void RemoveAllRecords::onClickRemoveAll() {
  services_.presenter.showActionSheet(
      removeAllSheet(services_.texts, [services = services_](const ActionSheet& /*sheet*/, int index) {
        if (index == 0) removeAll(services);
      }));
}

// Quirk: the notice comes whatever the outcome, also when nobody could be
// deleted. The number of contacts on the main screen tells the truth.
void RemoveAllRecords::removeAll(const CleanupServices& services) {
  const auto addressBook = ABAddressBookCreateWithOptions(services.contacts);
  removeRecords(addressBook.get(), ABAddressBookCopyArrayOfAllPeople(addressBook.get()).ids())
      .ignore("the notice is the same");
  services.presenter.showAlert(removedAllAlert(services.texts));
}

}  // namespace varnok
