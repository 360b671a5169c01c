#include "platform/linux/desktop/reminder_units.h"

#include <chrono>

#include <fmt/format.h>

namespace varnok {
namespace {

// One word of a unit file.
std::string unitWord(const std::string& text) {
  std::string word = "\"";
  for (const char c : text) {
    const auto code = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      word += '\\';
      word += c;
    } else if (c == '%') {
      word += "%%";
    } else if (code < 0x20 || code == 0x7F) {
      word += fmt::format("\\x{:02x}", code);
    } else {
      word += c;
    }
  }
  return word + '"';
}

// One word of a command in a desktop file. It is quoted for the command, and
// then the whole as a text of the file, which has backslashes of its own.
std::string entryWord(const std::string& text) {
  std::string word = "\"";
  for (const char c : text) {
    switch (c) {
      case '\\': word += R"(\\\\)"; break;
      case '"':
      case '`':
      case '$':
        word += R"(\\)";
        word += c;
        break;
      case '%': word += "%%"; break;
      case '\n': word += "\\n"; break;
      case '\t': word += "\\t"; break;
      case '\r': word += "\\r"; break;
      default: word += c;
    }
  }
  return word + '"';
}

// FNV-1a: the same for ever, on every machine.
std::uint32_t hashOf(const std::string& text) {
  std::uint32_t hash = 2166136261U;
  for (const char c : text)
    hash = (hash ^ static_cast<unsigned char>(c)) * 16777619U;
  return hash;
}

}  // namespace

std::vector<std::string> reminderDeliveryCommand(const ReminderCall& call) {
  std::vector<std::string> words{call.program};
  if (!call.home.empty()) words.insert(words.end(), {"--home", call.home});
  words.insert(words.end(), {"--quiet", "reminder", "deliver", "--if-due", "--wait"});
  return words;
}

std::string reminderUnitName(const std::string& home) {
  return home.empty() ? "varnok-reminder" : fmt::format("varnok-reminder-{:08x}", hashOf(home));
}

std::string reminderTimerUnit(Instant at) {
  const auto day = std::chrono::floor<std::chrono::days>(at);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss time(at - day);
  return fmt::format(
      "# Written and removed by Varnok.\n"
      "[Unit]\n"
      "Description=Reminder of a contact backup\n"
      "\n"
      "[Timer]\n"
      "OnCalendar={:04}-{:02}-{:02} {:02}:{:02}:{:02} UTC\n"
      "Persistent=true\n"
      "OnActiveSec=30s\n"
      "\n"
      "[Install]\n"
      "WantedBy=timers.target\n",
      static_cast<int>(date.year()), static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
      time.hours().count(), time.minutes().count(), time.seconds().count());
}

// It fails while nobody can be notified, and is then tried again; not when the
// program has gone or does not know the command. What it opens stays when it
// ends.
std::string reminderServiceUnit(const ReminderCall& call) {
  std::string command;
  for (const std::string& word : reminderDeliveryCommand(call))
    command += (command.empty() ? ":" : " ") + unitWord(word);
  std::string text =
      "# Written and removed by Varnok.\n"
      "[Unit]\n"
      "Description=Reminder of a contact backup\n"
      "StartLimitIntervalSec=0\n"
      "\n"
      "[Service]\n"
      "Type=exec\n"
      "ExecStart=" +
      command +
      "\n"
      "Restart=on-failure\n"
      "RestartSec=5min\n"
      "RestartPreventExitStatus=2 203\n"
      "KillMode=process\n";
  for (const auto& [name, value] : call.environment)
    text += fmt::format("Environment={}\n", unitWord(fmt::format("{}={}", name, value)));
  return text;
}

std::string reminderAutostartEntry(const ReminderCall& call) {
  std::string command;
  if (!call.environment.empty()) command = "env";
  for (const auto& [name, value] : call.environment)
    command += " " + entryWord(fmt::format("{}={}", name, value));
  for (const std::string& word : reminderDeliveryCommand(call))
    command += (command.empty() ? "" : " ") + entryWord(word);
  return "# Written and removed by Varnok.\n"
         "[Desktop Entry]\n"
         "Type=Application\n"
         "Name=Varnok reminder\n"
         "Icon=io.varnok.Varnok\n"
         "Exec=" +
         command +
         "\n"
         "NoDisplay=true\n";
}

}  // namespace varnok
