// The commands of varnokctl, each a function that answers the exit status.

#pragma once

#include <string>
#include <vector>

#include "cli/linux_platform.h"
#include "cli/report.h"
#include "cli/terminal_presenter.h"

namespace varnok {

struct CommandContext {
  LinuxPlatform& platform;
  TerminalPresenter& presenter;
  Report report;
};

int importCommand(CommandContext& context, const std::vector<std::string>& files);

int contactsCommand(CommandContext& context);
int contactsShowCommand(CommandContext& context, RecordID id);

int backupCommand(CommandContext& context);

int backupsCommand(CommandContext& context, bool all);
int backupsMailCommand(CommandContext& context, const std::string& name, const std::vector<std::string>& addresses);
int backupsDeleteCommand(CommandContext& context, const std::string& name);

int settingsCommand(CommandContext& context);
int settingsGetCommand(CommandContext& context, const std::string& name);
int settingsSetCommand(CommandContext& context, const std::string& name, const std::string& value);
int settingsResetCommand(CommandContext& context, const std::string& name);

}  // namespace varnok
