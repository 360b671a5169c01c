// varnokctl: the application on a terminal. Parses the command line, builds the
// platform, runs one command.

#include <sys/stat.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <functional>

#include "app/preferences/preference_keys.h"
#include "cli/commands.h"

namespace varnok {
namespace {

using Command = std::function<int(CommandContext&)>;

struct CommandLine {
  PlatformOptions platform;
  Report report;
  std::string store = "sqlite";
  std::vector<std::string> settings;  // KEY=VALUE.
  Command command;

  // What the options of single commands are read into.
  std::vector<std::string> files;
  std::string name;
  std::string value;
  std::vector<std::string> addresses;
  RecordID id = 0;
  bool all = false;
  std::string type;
  bool multiple = false;
  bool single = false;
};

void declareGlobalOptions(CLI::App& app, CommandLine& line) {
  app.add_option("--home", line.platform.home, "keep everything under this folder");
  app.add_option("--store", line.store, "which contact store")->check(CLI::IsMember({"sqlite"}));
  app.add_option("--language", line.platform.languages, "preferred languages, most preferred first, with commas");
  app.add_option("--set", line.settings, "KEY=VALUE: a preference for this run only")->expected(1)->take_all();
  app.add_flag("--json", line.report.json, "one JSON document on stdout");
  app.add_flag("--quiet", line.report.quiet, "no progress and no notices on stderr");
}

void declareContacts(CLI::App& app, CommandLine& line) {
  CLI::App* import = app.add_subcommand("import", "add the people of vCard files to the contact store");
  import->add_option("FILE", line.files, "vCard files; - is stdin")->required();
  import->callback([&line] { line.command = [&line](auto& context) { return importCommand(context, line.files);
};
}  // namespace
);

CLI::App* contacts = app.add_subcommand("contacts", "list people: id, first name, last name");
contacts->callback([&line, contacts] {
  if (contacts->get_subcommands().empty()) line.command = contactsCommand;
});
CLI::App* show = contacts->add_subcommand("show", "every stored property of one person");
show->add_option("ID", line.id)->required();
show->callback([&line] { line.command = [&line](auto& context) { return contactsShowCommand(context, line.id); }; });
}  // namespace varnok

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
  CLI::App* remove = backups->add_subcommand("delete", "delete a backup; the last one is refused");
  remove->add_option("NAME", line.name)->required();
  remove->callback(
      [&line] { line.command = [&line](auto& context) { return backupsDeleteCommand(context, line.name); }; });
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

// The options of `backup` are --set in other words; what stands later wins.
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
  if (!line.type.empty()) line.platform.preferences.emplace_back(key::EXPORT_TYPE, line.type);
  if (line.multiple || line.single) {
    line.platform.preferences.emplace_back(key::multipleVCF, line.multiple ? "YES" : "NO");
  }
  return true;
}

int run(CommandLine& line) {
  if (!collectSettings(line)) return kWrongUsage;
  TerminalPresenter presenter;
  Status status;
  const auto platform = LinuxPlatform::make(line.platform, presenter, status);
  if (platform == nullptr) return line.report.failure(status);
  presenter.setTasks(platform->tasks());
  CommandContext context{*platform, presenter, line.report};
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
  declareBackups(app, line);
  declareSettings(app, line);
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
