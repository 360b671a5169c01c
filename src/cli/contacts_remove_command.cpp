#include <algorithm>
#include <boost/json.hpp>

#include <fmt/format.h>

#include "cleanup/record_removal.h"
#include "cli/commands.h"
#include "cli/question.h"
#include "contacts/address_book.h"

namespace varnok {
namespace {

int removeAfterQuestion(CommandContext& context, ContactStore& addressBook, const std::vector<RecordID>& ids,
                        bool yes) {
  const std::string contacts = fmt::format("{} contact{}", ids.size(), ids.size() == 1 ? "" : "s");
  if (!ids.empty()) {
    if (!yes && !confirmed(fmt::format("Delete {}?", contacts))) {
      return context.report.failure("nothing was deleted: the question was not answered with yes");
    }
    if (Status status = removeRecords(&addressBook, ids); !status.ok()) return context.report.failure(status);
  }
  context.report.result({{"removed", ids.size()}}, contacts + " deleted\n");
  return kDone;
}

}  // namespace

int contactsRemoveCommand(CommandContext& context, std::vector<RecordID> ids, bool yes) {
  Status status;
  const auto addressBook = ABAddressBookCreateWithOptions(context.platform.services().contacts, &status);
  if (addressBook == nullptr) return context.report.failure(status);
  std::ranges::sort(ids);
  ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
  for (const RecordID id : ids) {
    if (ABAddressBookGetPersonWithRecordID(addressBook.get(), id) != nullptr) continue;
    if (!addressBook->readStatus().ok()) return context.report.failure(addressBook->readStatus());
    return context.report.failure(fmt::format("there is no contact {}; nothing was deleted", id));
  }
  return removeAfterQuestion(context, *addressBook, ids, yes);
}

int contactsRemoveAllCommand(CommandContext& context, bool yes) {
  Status status;
  const auto addressBook = ABAddressBookCreateWithOptions(context.platform.services().contacts, &status);
  if (addressBook == nullptr) return context.report.failure(status);
  const std::vector<RecordID> ids = ABAddressBookCopyArrayOfAllPeople(addressBook.get()).ids();
  if (!addressBook->readStatus().ok()) return context.report.failure(addressBook->readStatus());
  return removeAfterQuestion(context, *addressBook, ids, yes);
}

}  // namespace varnok
