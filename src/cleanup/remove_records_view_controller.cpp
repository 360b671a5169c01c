#include "cleanup/remove_records_view_controller.h"

#include "cleanup/remove_all_records.h"
#include "cleanup/white_space.h"
#include "contacts/address_book.h"
#include "export/html_exporter.h"
#include "platform/progress_overlay.h"
#include "platform/text_key.h"

namespace varnok {
namespace {

// Points; a table scrolled further offers the way back.
constexpr double kScrollTopAbove = 144;

// The first that is not blank, in the order of the browser's form.
std::optional<std::string> firstPhone(const PersonRef& person, const TextCatalog& texts) {
  for (const HTMLExporter::Item& item : HTMLExporter::JSON_TEL(person, texts)) {
    const std::string_view value = item.textOr("value");
    if (!trimmed(value).empty()) return std::string(value);
  }
  return std::nullopt;
}

}  // namespace

void RemoveRecordsViewController::viewDidLoad() {
  loadItems(text_key::LOADING, nullptr, /*everybody=*/false);
}

std::optional<std::string> RemoveRecordsViewController::title() const {
  return services_.texts.text(text_key::REMOVE_RECORDS);
}

std::vector<ScreenControl> RemoveRecordsViewController::controls() const {
  return {{.name = "trash",
           .text = {},
           .segments = {services_.texts.text(text_key::SEGMENT_REMOVE_SELECTED),
                        services_.texts.text(text_key::SEGMENT_REMOVE_ALL)}},
          {.name = "close", .text = services_.texts.text(text_key::CLOSE)},
          {.name = "scrollTop",
           .text = services_.texts.text(text_key::SCROLL_TOP),
           .hidden = contentOffset_ <= kScrollTopAbove}};
}

TableHeading RemoveRecordsViewController::headingOfSection(int section) const {
  return {list_.indexes.at(static_cast<std::size_t>(section)), std::nullopt};
}

// Quirk: counts the sections in the order of their titles' bytes, while the
// table shows them in the order of the user's language.
std::string RemoveRecordsViewController::titleForHeaderInSection(int section) const {
  return std::next(list_.records.begin(), section)->first;
}

const std::vector<RecordID>& RemoveRecordsViewController::recordsOf(int section) const {
  return list_.records.find(list_.indexes.at(static_cast<std::size_t>(section)))->second;
}

RecordID RemoveRecordsViewController::recordAt(const IndexPath& indexPath) const {
  return recordsOf(indexPath.section).at(static_cast<std::size_t>(indexPath.row));
}

TableRow RemoveRecordsViewController::cellForRowAtIndexPath(const IndexPath& indexPath) const {
  if (rowReader_ == nullptr) rowReader_ = ABAddressBookCreateWithOptions(services_.contacts);
  const PersonRef person = ABAddressBookGetPersonWithRecordID(rowReader_.get(), recordAt(indexPath));
  TableRow row;
  row.text = ABRecordCopyCompositeName(person).value_or("");
  row.detail = firstPhone(person, services_.texts);
  row.accesorType = RowAccessory::disclosure;
  row.selectionStyle = RowSelection::highlight;
  row.marked = selected_.contains(recordAt(indexPath));
  return row;
}

bool RemoveRecordsViewController::tapControl(std::string_view control, int segment) {
  if (control == "trash") {
    trash(segment);
  } else if (control == "close") {
    close();
  } else if (control == "scrollTop") {
    scrollTop();
  } else {
    return false;
  }
  return true;
}

bool RemoveRecordsViewController::markRow(const IndexPath& indexPath, bool on) {
  if (!hasRow(*this, indexPath)) return false;
  if (on) {
    selected_.insert(recordAt(indexPath));
  } else {
    selected_.erase(recordAt(indexPath));
  }
  services_.presenter.screenDidChange(*this);
  return true;
}

void RemoveRecordsViewController::trash(int segment) {
  if (segment == kRemoveAllSegment) {
    services_.presenter.showActionSheet(removeAllSheet(
        services_.texts,
        whileAlive_([this](const ActionSheet& sheet, int index) { clickedButtonAtIndex(sheet, index); })));
  } else if (!selected_.empty()) {
    services_.presenter.showAlert(
        {.title = "",
         .message = services_.texts.text(text_key::REMOVE_SELECTED_MSG),
         .buttons = {services_.texts.text(text_key::Cancel), services_.texts.text(text_key::OK)},
         .delegate = whileAlive_([this](const AlertView& alert, int index) { clickedButtonAtIndex(alert, index); })});
  }
}

void RemoveRecordsViewController::clickedButtonAtIndex(const AlertView& /*alertView*/, int index) {
  if (index == 1) remove({selected_.begin(), selected_.end()}, /*everybody=*/false);
}

void RemoveRecordsViewController::clickedButtonAtIndex(const ActionSheet& actionSheet, int index) {
  if (actionSheet.tag == kRemoveAllTag && index == 0) remove(list_.people, /*everybody=*/true);
}

void RemoveRecordsViewController::close() {
  services_.presenter.dismiss(*this);
}

void RemoveRecordsViewController::scrollTop() {
  scrollViewDidScroll(0);
}

void RemoveRecordsViewController::scrollViewDidScroll(double contentOffset) {
  const bool wasHidden = contentOffset_ <= kScrollTopAbove;
  contentOffset_ = contentOffset;
  if (wasHidden != (contentOffset_ <= kScrollTopAbove)) services_.presenter.screenDidChange(*this);
}

// Quirk: the notice that everybody was deleted comes whatever the outcome.
void RemoveRecordsViewController::loadItems(std::string_view textKey, std::shared_ptr<RecordRemoval> removal,
                                            bool everybody) {
  ProgressOverlay::showWhileExecuting(
      services_.presenter, services_.tasks, services_.texts.text(textKey),
      [services = services_, removal = std::move(removal), everybody,
       show = whileAlive_([this](RecordList& list) { show(list); })](ProgressOverlay& /*overlay*/) {
        if (removal != nullptr) removal->run().ignore("the list shows who is still there");
        auto list = std::make_shared<RecordList>(loadRecordList(services.contacts, services.collation));
        services.tasks.mainThread([show, list = std::move(list)] { show(*list); });
        if (!everybody) return;
        services.tasks.mainThread([services] { services.presenter.showAlert(removedAllAlert(services.texts)); });
      });
}

void RemoveRecordsViewController::show(RecordList& list) {
  list_ = std::move(list);
  selected_.clear();
  rowReader_.reset();
  services_.presenter.screenDidChange(*this);
}

void RemoveRecordsViewController::remove(std::vector<RecordID> ids, bool everybody) {
  loadItems(text_key::REMOVING, std::make_shared<RecordRemoval>(std::move(list_.addressBook), std::move(ids)),
            everybody);
}

}  // namespace varnok
