#include "cleanup/duplicate_records_table_view_controller.h"

#include <chrono>

#include "cleanup/record_removal.h"
#include "cleanup/white_space.h"
#include "platform/progress_overlay.h"
#include "platform/text_key.h"

namespace varnok {
namespace {

constexpr std::chrono::seconds kNoticeTime{1};

// Empty for the null marker.
std::string textOf(const KeyValue& value) {
  const auto* text = std::get_if<std::string>(&value);
  return text == nullptr ? std::string() : *text;
}

// The value of the list's first entry; nothing when it has none.
std::optional<std::string> firstValue(const KeyValue& list) {
  const auto* entries = std::get_if<KeyList>(&list);
  if (entries == nullptr || entries->empty()) return std::nullopt;
  return textOf(entries->front().value);
}

std::string titleOf(const DuplicateKey& key) {
  const std::string title = textOf(key["firstName"]) + ' ' + textOf(key["middleName"]) + ' ' + textOf(key["lastName"]);
  return std::string(trimmed(title));
}

// Quirk: an address without a phone number before it keeps the blank that would
// part them, and a missing middle name leaves two blanks in the title.
std::string detailOf(const DuplicateKey& key) {
  std::string detail = firstValue(key["phones"]).value_or("");
  if (const auto email = firstValue(key["emails"])) detail += ' ' + *email;
  return detail;
}

template <class List>
void eraseAt(List& list, int index) {
  list.erase(list.begin() + index);
}

}  // namespace

DuplicateRecordsTableViewController::DuplicateRecordsTableViewController(const CleanupServices& services,
                                                                         DuplicateRecords found,
                                                                         std::unique_ptr<ContactStore> addressBook)
    : services_(services), found_(std::move(found)), addressBook_(std::move(addressBook)) {}

void DuplicateRecordsTableViewController::viewDidLoad() {
  header_ = services_.texts.formatCount(text_key::REMOVE_DUPLICATE_INFO,
                                        static_cast<std::int64_t>(found_.duplicateRecords.size()));
}

std::vector<ScreenControl> DuplicateRecordsTableViewController::controls() const {
  return {{.name = "clearDuplicates", .text = services_.texts.text(text_key::CLEAR_DUPLICATES)},
          {.name = "close", .text = services_.texts.text(text_key::CLOSE)}};
}

int DuplicateRecordsTableViewController::numberOfRowsInSection(int /*section*/) const {
  return static_cast<int>(found_.duplicateRecordsAsDictionary.size());
}

TableRow DuplicateRecordsTableViewController::cellForRowAtIndexPath(const IndexPath& indexPath) const {
  const auto index = static_cast<std::size_t>(indexPath.row);
  const DuplicateKey& key = found_.duplicateRecordsAsDictionary.at(index);
  const std::string& counter = found_.duplicateRecordsCounter.at(index);
  TableRow row;
  row.text = titleOf(key);
  row.detail = detailOf(key);
  row.selectionStyle = RowSelection::highlight;
  if (counter != "1") row.badge = counter;
  return row;
}

bool DuplicateRecordsTableViewController::tapControl(std::string_view control, int /*segment*/) {
  if (control == "clearDuplicates") {
    clearDuplicates();
  } else if (control == "close") {
    close();
  } else {
    return false;
  }
  return true;
}

void DuplicateRecordsTableViewController::clearDuplicates() {
  const auto removal = std::make_shared<RecordRemoval>(std::move(addressBook_), found_.duplicateRecords);
  ProgressOverlay::showWhileExecuting(
      services_.presenter, services_.tasks, services_.texts.text(text_key::REMOVING),
      [services = services_, removal, close = whileAlive_([this] { close(); })](ProgressOverlay& overlay) {
        if (!removal->run().ok()) return;
        overlay.showCheckmark(services.texts.text(text_key::REMOVED));
        overlay.pause(kNoticeTime);
        services.tasks.mainThread(close);
      });
}

void DuplicateRecordsTableViewController::close() {
  services_.presenter.dismiss(*this);
}

// Quirk: the row's number is taken out of the duplicates as well, although these
// are not one a row.
void DuplicateRecordsTableViewController::commitEditingStyle(int editingStyle, const IndexPath& indexPath) {
  if (editingStyle != kDeleteStyle || !hasRow(*this, indexPath)) return;
  eraseAt(found_.duplicateRecords, indexPath.row);
  eraseAt(found_.duplicateRecordsCounter, indexPath.row);
  eraseAt(found_.duplicateRecordsAsDictionary, indexPath.row);
  services_.presenter.screenDidChange(*this);
}

}  // namespace varnok
