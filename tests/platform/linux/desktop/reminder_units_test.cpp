#include "platform/linux/desktop/reminder_units.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "platform/linux/mail/child_process.h"
#include "platform/linux/posix/temporary_directory.h"

namespace varnok {
namespace {

// Everything that one of the two languages reads as something else.
const std::string kAwkwardHome = "/home/a \"b\" 100% $HOME `x` \\n;&'";

const ReminderCall kCall{"/usr/bin/varnokctl", kAwkwardHome, {{"XDG_DATA_HOME", "/d %h \"x\""}}};

TEST(ReminderUnits, HaveANameForEachHome) {
  EXPECT_EQ(reminderUnitName(""), "varnok-reminder");
  EXPECT_EQ(reminderUnitName("/home/a"), "varnok-reminder-9ab90681");  // The same in every version.
  EXPECT_NE(reminderUnitName("/home/a"), reminderUnitName("/home/b"));
}

TEST(ReminderUnits, FireAtTheInstantInWhateverZone) {
  const std::string unit = reminderTimerUnit(Instant(std::chrono::seconds(1709647629)));
  EXPECT_NE(unit.find("\nOnCalendar=2024-03-05 14:07:09 UTC\n"), std::string::npos) << unit;
  EXPECT_NE(unit.find("\nPersistent=true\n"), std::string::npos) << unit;
}

TEST(ReminderUnits, KeepEveryWordWhole) {
  const std::string unit = reminderServiceUnit(kCall);
  EXPECT_NE(unit.find(R"(ExecStart=:"/usr/bin/varnokctl" "--home" "/home/a \"b\" 100%% $HOME `x` \\n;&'" "--quiet" )"
                      R"("reminder" "deliver" "--if-due" "--wait")"
                      "\n"),
            std::string::npos)
      << unit;
  EXPECT_NE(unit.find("\nEnvironment=\"XDG_DATA_HOME=/d %%h \\\"x\\\"\"\n"), std::string::npos) << unit;
  const std::string entry = reminderAutostartEntry(kCall);
  EXPECT_NE(entry.find(R"(Exec=env "XDG_DATA_HOME=/d %%h \\"x\\"" "/usr/bin/varnokctl" "--home" )"
                       R"("/home/a \\"b\\" 100%% \\$HOME \\`x\\` \\\\n;&'" "--quiet" )"),
            std::string::npos)
      << entry;
  // A line break would begin another line of the file.
  const ReminderCall broken{"/usr/bin/varnokctl", "/a\nExecStart=/bin/false", {}};
  EXPECT_EQ(reminderServiceUnit(broken).find("\nExecStart=/bin/false"), std::string::npos);
  EXPECT_EQ(reminderAutostartEntry(broken).find("\nExecStart=/bin/false"), std::string::npos);
}

// By the readers that they are written for, where this machine has them.
TEST(ReminderUnits, AreWhatTheirReadersTake) {
  const TemporaryDirectory directory;
  const std::string service = directory / "varnok-reminder.service";
  const std::string timer = directory / "varnok-reminder.timer";
  const std::string entry = directory / "varnok-reminder.desktop";
  ReminderCall call = kCall;
  call.program = "/bin/sh";  // The reader looks for it.
  setContent(service, reminderServiceUnit(call));
  setContent(timer, reminderTimerUnit(Instant(std::chrono::seconds(1709647629))));
  setContent(entry, reminderAutostartEntry(call));
  const auto accepted = [&](const std::string& program, const std::string& command) {
    if (!std::filesystem::exists(program)) return;
    // They warn of what they leave out and are content all the same.
    const std::string script = "out=$(XDG_RUNTIME_DIR=" + directory.path() + " " + program + " " + command +
                               " 2>&1) && test -z \"$out\" || { echo \"$out\" >&2; exit 1; }";
    const Status status = runProgram({"/bin/sh", "-c", script}, "", std::chrono::seconds(60));
    EXPECT_TRUE(status.ok()) << program << ": " << status.message();
  };
  accepted("/usr/bin/systemd-analyze", "--user verify " + service + " " + timer);
  accepted("/usr/bin/desktop-file-validate", entry);
}

}  // namespace
}  // namespace varnok
