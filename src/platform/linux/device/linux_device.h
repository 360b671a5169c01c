#pragma once

#include <span>
#include <string>
#include <vector>

#include "platform/device.h"

namespace varnok {

// The languages of `list` (separated by commas or colons), else those of
// LANGUAGE, LC_ALL, LC_MESSAGES or LANG as gettext looks for them; never empty.
// LANGUAGE counts only where the locale is not "C".
std::vector<std::string> preferredLanguages(const std::string& list);

// The locale in which LC_ALL, LC_TIME or LANG want times written ("de_AT.UTF-8");
// empty for that of no language.
std::string timeLocale();

// This program on this machine: model from the device tree or the firmware's
// tables, "Linux" where these say nothing; system from os-release, "-" without
// one; locale from the environment. `root` stands before the system's paths.
Device linuxDevice(std::vector<std::string> languages, const std::string& version, const std::string& root = "");

}  // namespace varnok
