// What the desktop keeps of a planned reminder, as texts: the units of the
// user's service manager, and the entry that it starts at log-in.

#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/value.h"

namespace varnok {

// How a reminder is delivered.
struct ReminderCall {
  std::string program;                                           // The whole path of varnokctl.
  std::string home;                                              // As --home has it; empty for the usual places.
  std::vector<std::pair<std::string, std::string>> environment;  // What tells it where the usual places are.
};

// The program and its arguments.
std::vector<std::string> reminderDeliveryCommand(const ReminderCall& call);

// The name of the units and of the entry, without their endings: another for
// each home.
std::string reminderUnitName(const std::string& home);

// "[Timer] ..." that fires at `at` and, if that was missed, when it can. It also
// has the delivery look soon after each log-in: what could not be shown is due
// still.
std::string reminderTimerUnit(Instant at);

std::string reminderServiceUnit(const ReminderCall& call);
std::string reminderAutostartEntry(const ReminderCall& call);

}  // namespace varnok
