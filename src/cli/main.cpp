// varnokctl: the application on a terminal. Parses the command line, builds the
// platform, runs one command.

#include <sys/stat.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <functional>

#include <fmt/format.h>

#include "app/preferences/preference_keys.h"
#include "cli/commands.h"
#include "web/access/web_server.h"

namespace varnok {
namespace {

using Command = std::function<int(CommandContext&)>;

struct CommandLine {
  PlatformOptions platform;
  Report report;
  std::string store;
  std::vector<std::string> settings;  // KEY=VALUE.
  Command command;

  // What the options of single commands are read into.
  std::vector<std::string> files;
  std::string name;
  std::string value;
  std::vector<std::string> addresses;
  RecordID id = 0;
  std::vector<RecordID> ids;
  bool remove = false;
  bool yes = false;
  bool all = false;
  std::string type;
  bool multiple = false;
  bool single = false;
  std::uint16_t port = WebServer::kPort;
  std::string interface;
  std::vector<std::string> hostNames;
  bool accessCode = false;
  bool readOnly = false;
  bool requestLog = false;
  ReminderDelivery delivery;
  bool shell = false;
};

std::string isStore(const std::string& name) {
  Status status;
  preferenceValue(*findPreferenceKey(key::CONTACT_STORE), name, status);
  return status.ok() ? std::string() : "sqlite, eds or eds:BOOK is meant, not \"" + name + "\"";
}

void declareGlobalOptions(CLI::App& app, CommandLine& line) {
  app.add_option("--home", line.platform.home, "keep everything under this folder");
  app.add_option("--store", line.store, "which contact store: sqlite, eds, or eds:BOOK; see stores")->check(isStore);
  app.add_option("--language", line.platform.languages, "preferred languages, most preferred first, with commas");
  app.add_option("--set", line.settings, "KEY=VALUE: a preference for this run only")->expected(1)->take_all();
  app.add_flag("--json", line.report.json, "one JSON document on stdout");
  app.add_flag("--quiet", line.report.quiet, "no progress and no notices on stderr");
}

void declareContacts(CLI::App& app, CommandLine& line) {
  // Not named after its command: a line that begins with "import" reads as a module's.
  CLI::App* importer = app.add_subcommand("import", "add the people of vCard files to the contact store");
  importer->add_option("FILE", line.files, "vCard files; - is stdin")->required();
  importer->callback([&line] { line.command = [&line](auto& context) { return importCommand(context, line.files); }; });

  CLI::App* contacts = app.add_subcommand("contacts", "list people: id, first name, last name");
  contacts->callback([&line, contacts] {
    if (contacts->get_subcommands().empty()) line.command = contactsCommand;
  });
  CLI::App* show = contacts->add_subcommand("show", "every stored property of one person");
  show->add_option("ID", line.id)->required();
  show->callback([&line] { line.command = [&line](auto& context) { return contactsShowCommand(context, line.id); }; });
  CLI::App* remove = contacts->add_subcommand("remove", "delete people, after a question");
  CLI::Option_group* which = remove->add_option_group("who");
  which->add_option("ID", line.ids);
  which->add_flag("--all", line.all, "everybody");
  which->require_option(1);
  remove->add_flag("--yes", line.yes, "answers the question");
  remove->callback([&line] {
    line.command = [&line](auto& context) {
      return line.all ? contactsRemoveAllCommand(context, line.yes)
                      : contactsRemoveCommand(context, line.ids, line.yes);
    };
  });
}

void declareDuplicates(CLI::App& app, CommandLine& line) {
  CLI::App* duplicates = app.add_subcommand("duplicates", "list people who are stored more than once");
  CLI::Option* remove = duplicates->add_flag("--remove", line.remove, "delete all but the first, after a question");
  duplicates->add_flag("--yes", line.yes, "answers the question")->needs(remove);
  duplicates->callback(
      [&line] { line.command = [&line](auto& context) { return duplicatesCommand(context, line.remove, line.yes); }; });
}

void declareBackups(CLI::App& app, CommandLine& line) {
  CLI::App* backup = app.add_subcommand("backup", "make one backup");
  backup->add_option("--type", line.type, "its format")->check(CLI::IsMember({"vcf", "csv"}));
  CLI::Option* multiple = backup->add_flag("--multiple", line.multiple, "one vCard file per contact, in a zip archive");
  backup->add_flag("--single", line.single, "one vCard file")->excludes(multiple);
  backup->callback([&line] { line.command = backupCommand; });

  CLI::App* backups = app.add_subcommand("backups", "list the vCard backups");
  backups->add_flag("--all", line.all, "CSV and zip too");
  backups->callback([&line, backups] {
    if (!backups->get_subcommands().empty()) return;
    line.command = [&line](auto& context) { return backupsCommand(context, line.all); };
  });
  CLI::App* mail = backups->add_subcommand("mail", "send a backup");
  mail->add_option("NAME", line.name)->required();
  mail->add_option("--to", line.addresses, "addresses")->required();
  mail->callback([&line] {
    line.command = [&line](auto& context) { return backupsMailCommand(context, line.name, line.addresses); };
  });
  CLI::App* upload = backups->add_subcommand("upload", "copy a backup to the linked Dropbox account");
  upload->add_option("NAME", line.name)->required();
  upload->callback(
      [&line] { line.command = [&line](auto& context) { return backupsUploadCommand(context, line.name); }; });
  CLI::App* open = backups->add_subcommand("open", "hand a backup to another application");
  open->add_option("NAME", line.name)->required();
  open->callback([&line] { line.command = [&line](auto& context) { return backupsOpenCommand(context, line.name); }; });
  CLI::App* remove = backups->add_subcommand("delete", "delete a backup; the last one is refused");
  remove->add_option("NAME", line.name)->required();
  remove->callback(
      [&line] { line.command = [&line](auto& context) { return backupsDeleteCommand(context, line.name); }; });
}

void declareServe(CLI::App& app, CommandLine& line) {
  CLI::App* serve = app.add_subcommand("serve", "the web access, until interrupted");
  serve->add_option("--port", line.port, "where it listens; 0 is any free one")->check(CLI::Range(0, 65535));
  serve->add_option("--bind", line.interface, "the one interface it listens on, by address or name");
  serve->add_flag("--access-code", line.accessCode, "ask browsers for a code, which is printed");
  serve->add_flag("--read-only", line.readOnly, "refuse every change");
  serve->add_option("--host-name", line.hostNames, "a further name under which it is reached")->expected(1)->take_all();
  serve->add_flag("--request-log", line.requestLog, "one line for each request on stderr");
  serve->callback([&line] { line.command = [&line](auto& context) { return serveCommand(context, line.port); }; });
}

void declareReminder(CLI::App& app, CommandLine& line) {
  CLI::App* reminder = app.add_subcommand("reminder", "the planned reminder");
  reminder->callback([&line, reminder] {
    if (reminder->get_subcommands().empty()) line.command = reminderCommand;
  });
  reminder->add_subcommand("schedule", "plan it afresh from the settings")->callback([&line] {
    line.command = reminderScheduleCommand;
  });
  CLI::App* deliver = reminder->add_subcommand("deliver", "show it now");
  deliver->add_flag("--if-due", line.delivery.ifDue, "only when its time has come, and somebody can be notified");
  deliver->add_flag("--wait", line.delivery.wait, "with a button; stay until it is answered, and open the application");
  deliver->callback(
      [&line] { line.command = [&line](auto& context) { return reminderDeliverCommand(context, line.delivery); }; });
}

void declareDropbox(CLI::App& app, CommandLine& line) {
  CLI::App* dropbox = app.add_subcommand("dropbox", "the linked Dropbox account");
  dropbox->callback([&line, dropbox] {
    if (dropbox->get_subcommands().empty()) line.command = dropboxCommand;
  });
  dropbox->add_subcommand("link", "link an account: prints an address to open, reads the one it leads to")
      ->callback([&line] { line.command = dropboxLinkCommand; });
  dropbox->add_subcommand("unlink", "forget the account")->callback([&line] { line.command = dropboxUnlinkCommand; });
  CLI::App* list = dropbox->add_subcommand("list", "the entries of a folder");
  list->add_option("PATH", line.name, "the root where it is left out");
  list->callback([&line] { line.command = [&line](auto& context) { return dropboxListCommand(context, line.name); }; });
  CLI::App* get = dropbox->add_subcommand("get", "download a file beside the backups");
  get->add_option("PATH", line.name)->required();
  get->callback([&line] { line.command = [&line](auto& context) { return dropboxGetCommand(context, line.name); }; });
  CLI::App* put = dropbox->add_subcommand("put", "upload a backup");
  put->add_option("NAME", line.name)->required();
  put->callback([&line] { line.command = [&line](auto& context) { return dropboxPutCommand(context, line.name); }; });
}

void declareSettings(CLI::App& app, CommandLine& line) {
  CLI::App* settings = app.add_subcommand("settings", "every preference with its value and where it comes from");
  settings->callback([&line, settings] {
    if (settings->get_subcommands().empty()) line.command = settingsCommand;
  });
  CLI::App* get = settings->add_subcommand("get", "read one");
  get->add_option("KEY", line.name)->required();
  get->callback([&line] { line.command = [&line](auto& context) { return settingsGetCommand(context, line.name); }; });
  CLI::App* set = settings->add_subcommand("set", "write one");
  set->add_option("KEY", line.name)->required();
  set->add_option("VALUE", line.value)->required();
  set->callback([&line] {
    line.command = [&line](auto& context) { return settingsSetCommand(context, line.name, line.value); };
  });
  CLI::App* reset = settings->add_subcommand("reset", "forget the stored value of one");
  reset->add_option("KEY", line.name)->required();
  reset->callback(
      [&line] { line.command = [&line](auto& context) { return settingsResetCommand(context, line.name); }; });
}

// The options of `backup` and `serve` are --set in other words; what stands later wins.
bool collectSettings(CommandLine& line) {
  for (const std::string& setting : line.settings) {
    const std::size_t equals = setting.find('=');
    const std::string name = setting.substr(0, equals);
    const PreferenceKey* known = findPreferenceKey(name);
    if (equals == std::string::npos || known == nullptr || known->kind == PreferenceKey::Kind::readOnly) {
      line.report.failure(
          "--set " + setting +
          (equals == std::string::npos ? ": KEY=VALUE is meant" : ": there is no preference of that name"));
      return false;
    }
    line.platform.preferences.emplace_back(name, setting.substr(equals + 1));
  }
  if (!line.store.empty()) line.platform.preferences.emplace_back(key::CONTACT_STORE, line.store);
  if (!line.type.empty()) line.platform.preferences.emplace_back(key::EXPORT_TYPE, line.type);
  if (line.multiple || line.single) {
    line.platform.preferences.emplace_back(key::multipleVCF, line.multiple ? "YES" : "NO");
  }
  if (!line.interface.empty()) line.platform.preferences.emplace_back(key::WEB_INTERFACE, line.interface);
  if (!line.hostNames.empty()) {
    line.platform.preferences.emplace_back(key::WEB_HOST_NAMES, fmt::format("{}", fmt::join(line.hostNames, ",")));
  }
  if (line.accessCode) line.platform.preferences.emplace_back(key::WEB_ACCESS_CODE, "YES");
  if (line.readOnly) line.platform.preferences.emplace_back(key::WEB_READ_ONLY, "YES");
  if (line.requestLog) line.platform.preferences.emplace_back(key::WEB_REQUEST_LOG, "YES");
  return true;
}

int runShell(CommandLine& line) {
  ShellPresenter presenter;
  ShellMailComposer mail;
  Status status;
  auto owned = std::make_unique<ThreadTaskRunner>();
  ThreadTaskRunner& tasks = *owned;
  presenter.setTasks(tasks);
  const auto platform = LinuxPlatform::make(line.platform, presenter, std::move(owned), status);
  if (platform == nullptr) return line.report.failure(status);
  mail.setPlatform(platform->services().mail);
  mail.setDrivenByProgram(line.report.json);
  ShellContext context{*platform, tasks, presenter, mail, line.report};
  return shellCommand(context);
}

int run(CommandLine& line) {
  if (!collectSettings(line)) return kWrongUsage;
  if (line.shell) return runShell(line);
  TerminalPresenter presenter;
  Status status;
  auto owned = std::make_unique<ThreadTaskRunner>();
  ThreadTaskRunner& tasks = *owned;
  presenter.setTasks(tasks);
  const auto platform = LinuxPlatform::make(line.platform, presenter, std::move(owned), status);
  if (platform == nullptr) return line.report.failure(status);
  CommandContext context{*platform, tasks, presenter, line.report};
  return line.command(context);
}

int parseAndRun(int argc, char** argv) {
  CommandLine line;
  CLI::App app("Backs up every person of an address book.", "varnokctl");
  app.set_version_flag("--version", std::string("varnokctl ") + VARNOK_VERSION);
  app.require_subcommand(1);
  app.fallthrough();
  declareGlobalOptions(app, line);
  declareContacts(app, line);
  declareDuplicates(app, line);
  declareBackups(app, line);
  app.add_subcommand("stores", "list the contact stores that --store can name")->callback([&line] {
    line.command = storesCommand;
  });
  declareServe(app, line);
  declareReminder(app, line);
  declareDropbox(app, line);
  declareSettings(app, line);
  app.add_subcommand("shell", "the application's screens on this terminal")->callback([&line] { line.shell = true; });
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kWrongUsage;
  }
  return run(line);
}

}  // namespace
}  // namespace varnok

int main(int argc, char** argv) {
  umask(077);  // Address book, log and backups are nobody else's business.
  try {
    return varnok::parseAndRun(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "varnokctl: %s\n", error.what());
    return varnok::kFailed;
  }
}
