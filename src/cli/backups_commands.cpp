#include <algorithm>
#include <boost/json.hpp>

#include <fmt/format.h>

#include "app/preferences/preference_keys.h"
#include "backup/files/backup_file.h"
#include "backup/files/vnk_util.h"
#include "backup/list/vcard_backups.h"
#include "backup/run/backup_delivery.h"
#include "cli/commands.h"
#include "platform/text_key.h"

namespace varnok {
namespace {

struct Backup {
  std::string name;  // Relative to the documents directory.
  std::string path;
  FileAttributes attributes;
  bool last = false;
};

// Every backup, the newest first.
std::vector<Backup> allBackups(const Services& services) {
  const std::string last = services.preferences.stringForKey(key::FILE_NAME).value_or("");
  std::vector<Backup> backups;
  for (const std::string& name : services.files.filesBelow(services.documents)) {
    Backup backup{name, services.documents + "/" + name, {}, lastPathComponent(name) == last};
    const std::string_view extension = pathExtension(name);
    if (!isVCardBackup(backup.name) && extension != "csv" && extension != "zip") continue;
    backup.attributes = services.files.attributes(backup.path).value_or(FileAttributes{});
    backups.push_back(std::move(backup));
  }
  std::ranges::sort(backups, [](const Backup& a, const Backup& b) {
    if (a.attributes.modified != b.attributes.modified) return a.attributes.modified > b.attributes.modified;
    return a.name > b.name;
  });
  return backups;
}

std::optional<Backup> findBackup(const Services& services, const std::string& name) {
  const std::vector<Backup> backups = allBackups(services);
  const auto found = std::ranges::find(backups, name, &Backup::name);
  return found == backups.end() ? std::nullopt : std::optional(*found);
}

// As the list of backups sends a vCard backup, and the main screen the others.
MailMessage mailOf(const Backup& backup, std::string bytes, const TextCatalog& texts) {
  if (isVCardBackup(backup.name)) return vCardMail(std::move(bytes), backup.name, texts);
  return backupMail(pathExtension(backup.name), std::move(bytes), std::string(lastPathComponent(backup.name)), texts);
}

std::string timeText(Instant instant, const Clock& clock) {
  const LocalTime local = clock.localTime(instant);
  return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}", local.year, local.month, local.day, local.hour, local.minute);
}

}  // namespace

int backupsCommand(CommandContext& context, bool all) {
  const Services services = context.platform.services();
  boost::json::array list;
  std::string text;
  for (const Backup& backup : allBackups(services)) {
    if (!all && !isVCardBackup(backup.name)) continue;
    list.push_back({{"path", jsonText(backup.path)},
                    {"name", jsonText(backup.name)},
                    {"bytes", backup.attributes.size},
                    {"modified", utcText(backup.attributes.modified)},
                    {"last", backup.last}});
    text += fmt::format("{}  {:>12}  {}{}\n", timeText(backup.attributes.modified, services.clock),
                        VNKUtil::convertSize(static_cast<double>(backup.attributes.size)), shown(backup.name),
                        backup.last ? "  (last)" : "");
  }
  context.report.result(list, text);
  return kDone;
}

int backupsMailCommand(CommandContext& context, const std::string& name, const std::vector<std::string>& addresses) {
  const Services services = context.platform.services();
  const std::optional<Backup> backup = findBackup(services, name);
  if (!backup) return context.report.failure("there is no backup " + name);
  if (!services.mail.canSendMail()) {
    return context.report.failure(services.texts.text(text_key::MAILCOMPOSER_CANT_SEND));
  }
  Status status;
  std::optional<std::string> bytes = services.files.readFile(backup->path, status);
  if (!bytes) return context.report.failure(status);
  MailMessage message = mailOf(*backup, std::move(*bytes), services.texts);
  message.to = addresses;
  std::optional<MailComposeResult> result;
  services.mail.present(std::move(message), [&](MailComposeResult given) { result = given; });
  context.tasks.runUntil([&] { return result.has_value(); });
  if (result != MailComposeResult::sent) return context.report.failure("the mail program did not take the message");
  context.report.result({{"result", "sent"}}, fmt::format("{} sent\n", shown(name)));
  return kDone;
}

int backupsOpenCommand(CommandContext& context, const std::string& name) {
  const std::optional<Backup> backup = findBackup(context.platform.services(), name);
  if (!backup) return context.report.failure("there is no backup " + name);
  if (Status status = context.platform.handOver().handOver(backup->path); !status.ok()) {
    return context.report.failure(status);
  }
  context.report.result({{"result", "opened"}}, fmt::format("{} opened\n", shown(name)));
  return kDone;
}

int backupsDeleteCommand(CommandContext& context, const std::string& name) {
  const Services services = context.platform.services();
  const std::optional<Backup> backup = findBackup(services, name);
  if (!backup) return context.report.failure("there is no backup " + name);
  if (backup->last) return context.report.failure(services.texts.text(text_key::LAST_BACKUP_ERROR_MESSAGE));
  if (Status status = services.files.remove(backup->path); !status.ok()) return context.report.failure(status);
  context.report.result({{"result", "deleted"}}, fmt::format("{} deleted\n", shown(name)));
  return kDone;
}

}  // namespace varnok
