#include <boost/json.hpp>
#include <chrono>

#include <fmt/format.h>

#include "app/startup/varnok_app_delegate.h"
#include "backup/files/backup_file.h"
#include "backup/files/vnk_util.h"
#include "cli/commands.h"
#include "cli/interrupt.h"
#include "cli/progress_bar.h"

namespace varnok {
namespace {

// Drives the main screen through one run, as a tap on its button would.
void runToItsEnd(CommandContext& context, VarnokViewController& screen) {
  ProgressBar bar(context.report.quiet);
  context.presenter.onChange([&] {
    const CorvelProgress& progress = screen.state().progress;
    if (progress.maxValue == 0) return;
    bar.show(static_cast<double>(progress.currentValue) / progress.maxValue, screen.state().lbl_Backup.text);
  });
  screen.onClick_Backup();
  if (!screen.state().btn_Cancel.hidden) {
    context.tasks.runUntil([&] { return screen.lastOutcome().has_value(); });
  }
  context.presenter.onChange({});
}

int reportOutcome(const CommandContext& context, const BackupOutcome& outcome, double seconds) {
  const std::string name(lastPathComponent(outcome.path));
  const std::uint64_t bytes = outcome.bytes.value_or(0);
  context.report.result({{"path", jsonText(outcome.path)},
                         {"name", jsonText(name)},
                         {"type", std::string(pathExtension(name))},
                         {"contacts", outcome.contacts},
                         {"bytes", bytes},
                         {"seconds", seconds}},
                        fmt::format("{} contacts, {}, in {}\n", outcome.contacts,
                                    VNKUtil::convertSize(static_cast<double>(bytes)), shown(outcome.path)));
  return kDone;
}

}  // namespace

int backupCommand(CommandContext& context) {
  ThreadTaskRunner& tasks = context.tasks;
  VarnokAppDelegate application(context.platform.services());
  bool interrupted = false;
  // Cancel is the screen's business, on the main thread.
  const InterruptWatch watch([&] {
    tasks.mainThread([&] {
      interrupted = true;
      application.viewController()->onClick_Cancel();
    });
  });
  const auto start = std::chrono::steady_clock::now();
  application.didFinishLaunchingWithOptions({});
  application.applicationDidBecomeActive();
  runToItsEnd(context, *application.viewController());
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;

  std::vector<std::string> alerts = context.presenter.takeAlerts();
  const auto& outcome = application.viewController()->lastOutcome();
  if (outcome && outcome->kind == BackupOutcome::Kind::cancelled) {
    return interrupted ? kInterrupted : context.report.failure("the backup was cancelled");
  }
  if (!outcome || outcome->kind == BackupOutcome::Kind::failed) {
    const std::string reason = outcome ? " (" + outcome->status.message() + ")" : "";
    return context.report.failure((alerts.empty() ? "no backup was made" : alerts.back()) + reason);
  }
  for (const std::string& alert : alerts)
    context.report.notice(alert);
  // What the answers to the alerts have set off counts too.
  tasks.runUntil([&] { return tasks.idle(std::chrono::milliseconds(0)); });
  return reportOutcome(context, *outcome, seconds.count());
}

}  // namespace varnok
