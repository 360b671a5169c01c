#include <boost/json.hpp>
#include <cstdio>

#include <fmt/format.h>

#include "cli/commands.h"
#include "cli/interrupt.h"
#include "platform/linux/desktop/reminder_watch.h"
#include "web/access/web_server.h"

namespace varnok {
namespace {

void printAddress(const Report& report, const std::string& url, const std::optional<std::string>& code) {
  boost::json::object document{{"url", jsonText(url)}};
  std::string text = fmt::format("Web access at {}\n", url);
  if (code) {
    document["accessCode"] = *code;
    text += fmt::format("Access code {}\n", *code);
  }
  report.result(document, text);
}

}  // namespace

// Serves until interrupted, which is also what its exit status says.
int serveCommand(CommandContext& context, std::uint16_t port) {
  ThreadTaskRunner& tasks = context.tasks;
  const InterruptWatch watch([&tasks] { tasks.quit(); });
  const Services services = context.platform.services();
  WebServer server(webServices(services));
  server.setRequestLog([](const std::string& line) { std::fprintf(stderr, "%s\n", shown(line).c_str()); });
  if (const Status status = server.start(port); !status.ok()) return context.report.failure(status);
  services.idleTimer.setIdleTimerDisabled(/*disabled=*/true);
  const std::string address = browserAddress(services.preferences, services.network).value_or("127.0.0.1");
  printAddress(context.report, fmt::format("http://{}:{}", address, server.port()), server.accessCode());
  ReminderWatch reminders(context.platform.reminders(), services.clock, tasks, services.log, /*fired=*/nullptr);
  reminders.start();
  tasks.run();
  server.stop();
  services.idleTimer.setIdleTimerDisabled(/*disabled=*/false);
  return kInterrupted;
}

}  // namespace varnok
