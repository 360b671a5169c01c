#include "ui/address_book_choice.h"

#include "app/preferences/preference_keys.h"
#include "platform/linux/eds/eds_contact_store.h"
#include "platform/progress_overlay.h"
#include "platform/text_key.h"

namespace varnok {

AddressBookChoice::AddressBookChoice(Services services, std::function<void()> chosen)
    : services_(std::move(services)), chosen_(std::move(chosen)) {}

void AddressBookChoice::ask() {
  ProgressOverlay::showWhileExecuting(services_.presenter, services_.tasks, services_.texts.text(text_key::LOADING),
                                      [this, services = services_](ProgressOverlay& /*overlay*/) {
                                        std::vector<Book> books{{"sqlite", services.texts.text(text_key::OWN_BOOK)}};
                                        Status status;
                                        for (const EdsSource& source : edsSources(status))
                                          books.push_back({"eds:" + source.uid, source.name});
                                        if (!status.ok()) services.log.write("address books: " + status.message());
                                        services.tasks.mainThread([this, books = std::move(books)] { offer(books); });
                                      });
}

void AddressBookChoice::offer(const std::vector<Book>& books) {
  ActionSheet sheet;
  sheet.title = services_.texts.text(text_key::CHOOSE_BOOK);
  for (const Book& book : books)
    sheet.buttons.push_back(book.name);
  sheet.buttons.push_back(services_.texts.text(text_key::Cancel));
  sheet.cancelButtonIndex = static_cast<int>(books.size());
  sheet.delegate = [this, books](const ActionSheet& /*sheet*/, int index) {
    if (index < static_cast<int>(books.size())) choose(books[static_cast<std::size_t>(index)].store);
  };
  services_.presenter.showActionSheet(std::move(sheet));
}

void AddressBookChoice::choose(const std::string& store) {
  PreferenceStore& preferences = services_.preferences;
  if (preferences.stringForKey(key::CONTACT_STORE).value_or("sqlite") == store) return;
  preferences.setObject(store, key::CONTACT_STORE);
  preferences.synchronize().ignore("at worst the book is chosen once more");
  chosen_();
}

}  // namespace varnok
