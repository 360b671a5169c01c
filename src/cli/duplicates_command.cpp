#include <boost/json.hpp>

#include <fmt/format.h>

#include "backup/files/backup_file.h"
#include "cleanup/duplicate_finder.h"
#include "cleanup/record_removal.h"
#include "cli/commands.h"
#include "cli/question.h"
#include "platform/text_key.h"

namespace varnok {
namespace {

namespace json = boost::json;

json::value jsonOf(const KeyValue& value);

json::value jsonOf(std::monostate /*null*/) {
  return nullptr;
}
json::value jsonOf(const std::string& text) {
  return json::value(jsonText(text));
}
json::value jsonOf(std::int64_t number) {
  return number;
}
json::value jsonOf(double number) {
  return number;
}
json::value jsonOf(const KeyList& list) {
  json::array entries;
  for (const KeyListEntry& entry : list)
    entries.push_back({{"label", jsonOf(entry.label)}, {"value", jsonOf(entry.value)}});
  return entries;
}

json::value jsonOf(const KeyValue& value) {
  return std::visit([](const auto& held) { return jsonOf(held); }, value);
}

json::value jsonOf(const DuplicateKey& key) {
  json::object object;
  for (const std::string_view name : DuplicateKey::kNames)
    object[name] = jsonOf(key[name]);
  return object;
}

// The duplicates of each group.
std::vector<std::vector<RecordID>> grouped(const DuplicateRecords& found) {
  std::vector<std::vector<RecordID>> groups(found.keptRecords.size());
  for (std::size_t i = 0; i < found.duplicateRecords.size(); ++i)
    groups[found.groups[i]].push_back(found.duplicateRecords[i]);
  return groups;
}

json::value documentOf(const DuplicateRecords& found, std::size_t removed) {
  json::array groups;
  const std::vector<std::vector<RecordID>> duplicates = grouped(found);
  for (std::size_t i = 0; i < duplicates.size(); ++i) {
    groups.push_back({{"key", jsonOf(found.duplicateRecordsAsDictionary[i])},
                      {"counter", found.duplicateRecordsCounter[i]},
                      {"kept", found.keptRecords[i]},
                      {"duplicates", json::value_from(duplicates[i])}});
  }
  return {{"groups", std::move(groups)},
          {"duplicateRecords", json::value_from(found.duplicateRecords)},
          {"removed", removed}};
}

// A line for each group: who stays, the name, the duplicates.
std::string linesOf(const DuplicateRecords& found, ContactStore& addressBook) {
  std::string lines;
  const std::vector<std::vector<RecordID>> duplicates = grouped(found);
  for (std::size_t i = 0; i < duplicates.size(); ++i) {
    const RecordID kept = found.keptRecords[i];
    const auto name = ABRecordCopyCompositeName(ABAddressBookGetPersonWithRecordID(&addressBook, kept));
    lines += fmt::format("{}\t{}\t{}\n", kept, shown(name.value_or("")), fmt::join(duplicates[i], " "));
  }
  return lines;
}

}  // namespace

int duplicatesCommand(CommandContext& context, bool remove, bool yes) {
  const Services services = context.platform.services();
  if (remove && !hasFileWithExtension(services.files, services.documents, "vcf")) {
    return context.report.failure(
        "duplicates are removed only when there is a vCard backup: run varnokctl backup first");
  }
  Status status;
  const auto addressBook = ABAddressBookCreateWithOptions(services.contacts, &status);
  if (addressBook == nullptr) return context.report.failure(status);
  const DuplicateRecords found = findDuplicates(addressBook.get(), services.clock);
  if (!addressBook->readStatus().ok()) return context.report.failure(addressBook->readStatus());
  const auto duplicates = static_cast<std::int64_t>(found.duplicateRecords.size());
  std::string text = linesOf(found, *addressBook);
  if (duplicates == 0) text = services.texts.text(text_key::DUPLICATE_RECORD_NOT_FOUND) + "\n";
  const bool removes = remove && duplicates > 0;
  if (removes) {
    if (!yes && !confirmed(services.texts.formatCount(text_key::REMOVE_DUPLICATE_INFO, duplicates))) {
      return context.report.failure("nothing was removed: the question was not answered with yes");
    }
    status = removeRecords(addressBook.get(), found.duplicateRecords);
    if (!status.ok()) return context.report.failure(status);
    text += services.texts.text(text_key::REMOVED) + "\n";
  }
  context.report.result(documentOf(found, removes ? found.duplicateRecords.size() : 0), text);
  return kDone;
}

}  // namespace varnok
