#include "platform/linux/device/linux_device.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>

#include "platform/linux/posix/temporary_directory.h"

namespace varnok {
namespace {

using Files = std::map<std::string, std::string>;

// What this program says of a machine whose system has these files.
Device deviceWith(const Files& files) {
  const TemporaryDirectory root;
  for (const auto& [path, content] : files) {
    const std::filesystem::path whole = root.path() + path;
    std::filesystem::create_directories(whole.parent_path());
    std::ofstream(whole) << content;
  }
  return linuxDevice({"en"}, "1.0", root.path());
}

TEST(LinuxDevice, HasTheNameOfItsMachine) {
  const std::string board = "/proc/device-tree/model";
  const std::string product = "/sys/class/dmi/id/product_name";
  const std::string maker = "/sys/class/dmi/id/sys_vendor";
  struct Row {
    Files files;
    std::string name;
  };
  for (const auto& [files, name] : {
           Row{{{board, std::string("Board 4 Model B\0", 16)}, {product, "Other"}}, "Board 4 Model B"},
           Row{{{product, "Notebook 14\n"}, {maker, "Maker Inc.\n"}}, "Maker Inc. Notebook 14"},
           Row{{{product, "MAKER Notebook 14\n"}, {maker, "Maker Inc.\n"}}, "MAKER Notebook 14"},
           Row{{{product, "Notebook\n"}, {maker, "To Be Filled By O.E.M.\n"}}, "Notebook"},
           Row{{{product, "To be filled by O.E.M.\n"}, {maker, "Maker\n"}}, "Linux"},
           Row{{{product, "System Product Name\n"}, {maker, "Maker\n"}}, "Linux"},
           Row{{{product, " Default string \n"}}, "Linux"},
           Row{{{board, "\n"}, {product, "Tower\n"}}, "Tower"},
           Row{{}, "Linux"},
       })
    EXPECT_EQ(deviceWith(files).modelName, name);
}

TEST(LinuxDevice, HasTheVersionOfItsSystem) {
  const std::string etc = "/etc/os-release";
  const std::string usr = "/usr/lib/os-release";
  struct Row {
    Files files;
    std::string version;
  };
  for (const auto& [files, version] : {
           Row{{{etc, "PRETTY_NAME=\"A 12\"\nVERSION_ID=\"12\"\n"}, {usr, "VERSION_ID=11\n"}}, "12"},
           Row{{{usr, "VERSION_ID='24.04'\n"}}, "24.04"},
           Row{{{etc, "ID=rolling\nPRETTY_NAME=\"The \\\"Rolling\\\" One\"\r\n"}}, "The \"Rolling\" One"},
           Row{{{etc, "VERSION_ID=\n"}}, "-"},
           Row{{}, "-"},
       })
    EXPECT_EQ(deviceWith(files).systemVersion, version);
}

TEST(LinuxDevice, TakesTheLocaleOfTimesFromItsVariables) {
  struct Row {
    const char* all;
    const char* time;
    const char* lang;
    std::string locale;
  };
  for (const auto& [all, time, lang, locale] :
       {Row{"", "de_AT.UTF-8", "en_US.UTF-8", "de_AT.UTF-8"}, Row{"fr_FR.UTF-8", "de_AT.UTF-8", "", "fr_FR.UTF-8"},
        Row{"", "", "it_IT.UTF-8", "it_IT.UTF-8"}, Row{"C.UTF-8", "de_AT.UTF-8", "", ""}, Row{"", "", "", ""}}) {
    ::setenv("LC_ALL", all, /*overwrite=*/1);
    ::setenv("LC_TIME", time, /*overwrite=*/1);
    ::setenv("LANG", lang, /*overwrite=*/1);
    EXPECT_EQ(timeLocale(), locale);
  }
  ::setenv("LC_ALL", "C.UTF-8", /*overwrite=*/1);
}

}  // namespace
}  // namespace varnok
