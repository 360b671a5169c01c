#include "cli/shell_driver.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>

#include <fmt/format.h>

namespace varnok {
namespace {

// Work that is planned for the next moments is work that is left.
constexpr std::chrono::milliseconds kSoon(1000);

Status refused(std::string message) {
  return {Status::Code::invalidArgument, std::move(message)};
}

}  // namespace

Status ShellDriver::reachable() const {
  if (stack_.question() != nullptr) return refused("an alert or a sheet is in front: answer it first");
  if (mail_.message() != nullptr) return refused("the mail composer is in front");
  if (stack_.overlay() != nullptr) return refused("the screen is busy: wait");
  return {};
}

Status ShellDriver::rowAt(const IndexPath& indexPath, TableRow& row) const {
  if (Status status = reachable(); !status.ok()) return status;
  if (!hasRow(stack_.front(), indexPath)) {
    return refused(fmt::format("there is no row {} in section {}", indexPath.row, indexPath.section));
  }
  row = stack_.front().cellForRowAtIndexPath(indexPath);
  return {};
}

Status ShellDriver::done(bool taken, std::string_view otherwise) {
  if (!taken) return refused(std::string(otherwise));
  settle();
  return {};
}

Status ShellDriver::tap(std::string_view control, int segment) {
  if (Status status = reachable(); !status.ok()) return status;
  const std::vector<ScreenControl> controls = stack_.front().controls();
  const auto found = std::ranges::find(controls, control, &ScreenControl::name);
  if (found == controls.end()) return refused(fmt::format("there is no control {}", control));
  if (found->hidden) return refused(fmt::format("{} is hidden", control));
  if (!found->enabled) return refused(fmt::format("{} is disabled", control));
  if (segment < 0 || segment >= std::max(1, static_cast<int>(found->segments.size()))) {
    return refused(fmt::format("{} has no segment {}", control, segment));
  }
  return done(stack_.front().tapControl(control, segment), "it cannot be tapped");
}

Status ShellDriver::select(const IndexPath& indexPath) {
  TableRow row;
  if (Status status = rowAt(indexPath, row); !status.ok()) return status;
  return done(stack_.front().selectRow(indexPath), "that row cannot be selected");
}

Status ShellDriver::toggle(const IndexPath& indexPath, bool on) {
  TableRow row;
  if (Status status = rowAt(indexPath, row); !status.ok()) return status;
  if (!row.accessoryView) return refused("that row has no switch");
  if (!row.accessoryView->enabled) return refused("the switch is disabled");
  return done(stack_.front().switchRow(indexPath, on), "the switch cannot be changed");
}

Status ShellDriver::press(const IndexPath& indexPath) {
  TableRow row;
  if (Status status = rowAt(indexPath, row); !status.ok()) return status;
  if (!row.button && row.segments.empty()) return refused("that row has no button");
  if (row.button && !row.button->enabled) return refused("the button is disabled");
  return done(stack_.front().pressRow(indexPath), "the button cannot be pressed");
}

Status ShellDriver::mark(const IndexPath& indexPath, bool on) {
  TableRow row;
  if (Status status = rowAt(indexPath, row); !status.ok()) return status;
  return done(stack_.front().markRow(indexPath, on), "that row cannot be marked");
}

Status ShellDriver::remove(const IndexPath& indexPath) {
  TableRow row;
  if (Status status = rowAt(indexPath, row); !status.ok()) return status;
  return done(stack_.front().deleteRow(indexPath), "that row cannot be deleted");
}

Status ShellDriver::answer(int index) {
  if (stack_.question() == nullptr) return refused("no alert and no sheet is in front");
  return done(stack_.answer(index), fmt::format("there is no button {}", index));
}

Status ShellDriver::finishMail(MailComposeResult result) {
  if (stack_.question() != nullptr || !mail_.waits()) return refused("no mail composer is in front");
  mail_.finish(result);
  settle();
  return {};
}

Status ShellDriver::sendMail(std::vector<std::string> to) {
  if (stack_.question() != nullptr || !mail_.waits()) return refused("no mail composer is in front");
  mail_.send(std::move(to));
  settle();
  return {};
}

void ShellDriver::becomeActive() {
  application_.applicationDidBecomeActive();
  settle();
}

void ShellDriver::openURL(const std::string& url) {
  application_.openURL(url);
  settle();
}

void ShellDriver::localNotification(ApplicationState state) {
  application_.didReceiveLocalNotification(state);
  settle();
}

Status ShellDriver::wait(std::chrono::duration<double> limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  // Wakes the main thread at the end of the limit, unless it is stopped before.
  std::mutex mutex;
  std::condition_variable_any wake;
  const std::jthread alarm([&](const std::stop_token& stop) {
    std::unique_lock lock(mutex);
    wake.wait_until(lock, stop, end, [] { return false; });
    tasks_.mainThread([] {});
  });
  bool idle = false;
  tasks_.runUntil([&] { return (idle = tasks_.idle(kSoon)) || std::chrono::steady_clock::now() >= end; });
  settle();
  return idle ? Status() : Status(Status::Code::busy, "there is work left");
}

void ShellDriver::settle() {
  // A task that runs may post another; a few rounds reach the end of what a
  // single touch sets off.
  for (int round = 0; round < 4; ++round) {
    bool reached = false;
    tasks_.mainThread([&reached] { reached = true; });
    tasks_.runUntil([&reached] { return reached; });
  }
}

}  // namespace varnok
