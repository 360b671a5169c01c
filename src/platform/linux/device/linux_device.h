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

// This program on this machine: model from the device tree or the firmware's
// tables, system from os-release, locale from the environment.
Device linuxDevice(std::vector<std::string> languages, const std::string& version);

}  // namespace varnok
