// The commands of varnokctl, each a function that answers the exit status.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cli/report.h"
#include "cli/shell_mail_composer.h"
#include "cli/shell_presenter.h"
#include "cli/terminal_presenter.h"
#include "host/linux_platform.h"
#include "platform/linux/posix/thread_task_runner.h"

namespace varnok {

struct CommandContext {
  LinuxPlatform& platform;
  ThreadTaskRunner& tasks;  // The platform's.
  TerminalPresenter& presenter;
  Report report;
};

// Of the shell, which shows the screens.
struct ShellContext {
  LinuxPlatform& platform;
  ThreadTaskRunner& tasks;  // The platform's.
  ShellPresenter& presenter;
  ShellMailComposer& mail;
  Report report;
};

int importCommand(CommandContext& context, const std::vector<std::string>& files);

int contactsCommand(CommandContext& context);
int contactsShowCommand(CommandContext& context, RecordID id);
int contactsRemoveCommand(CommandContext& context, std::vector<RecordID> ids, bool yes);
int contactsRemoveAllCommand(CommandContext& context, bool yes);

int storesCommand(CommandContext& context);

int duplicatesCommand(CommandContext& context, bool remove, bool yes);

int backupCommand(CommandContext& context);

int backupsCommand(CommandContext& context, bool all);
int backupsMailCommand(CommandContext& context, const std::string& name, const std::vector<std::string>& addresses);
int backupsOpenCommand(CommandContext& context, const std::string& name);
int backupsDeleteCommand(CommandContext& context, const std::string& name);

int reminderCommand(CommandContext& context);
int reminderScheduleCommand(CommandContext& context);

struct ReminderDelivery {
  bool ifDue = false;  // Only when its time has come; not counted as shown where nobody can be notified.
  bool wait = false;   // For the answer, half a day at most.
};
int reminderDeliverCommand(CommandContext& context, const ReminderDelivery& delivery);

// 0 is any free port.
int serveCommand(CommandContext& context, std::uint16_t port);

int backupsUploadCommand(CommandContext& context, const std::string& name);

int dropboxCommand(CommandContext& context);
int dropboxLinkCommand(CommandContext& context);
int dropboxUnlinkCommand(CommandContext& context);
int dropboxListCommand(CommandContext& context, const std::string& path);
int dropboxGetCommand(CommandContext& context, const std::string& path);
int dropboxPutCommand(CommandContext& context, const std::string& name);

int settingsCommand(CommandContext& context);
int settingsGetCommand(CommandContext& context, const std::string& name);
int settingsSetCommand(CommandContext& context, const std::string& name, const std::string& value);
int settingsResetCommand(CommandContext& context, const std::string& name);

int shellCommand(ShellContext& context);

}  // namespace varnok
