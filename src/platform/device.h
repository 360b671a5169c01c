#pragma once

#include <string>
#include <vector>

namespace varnok {

// What the program knows of itself and of the device it runs on.
struct Device {
  std::string displayName;                  // The application's name as installed.
  std::string version;                      // Shown to the user, such as "1.2".
  std::string buildVersion;                 // Changes with every release.
  std::string modelName;                    // The device, in the maker's words.
  std::string systemVersion;                // Of the operating system, for people.
  std::string platformVersion = "6.0";      // Of the services under it: from 6.0 on they ask before giving access.
  std::string localeIdentifier;             // "de_DE" or "de".
  std::vector<std::string> appleLanguages;  // Preferred languages, most preferred first, never empty.
  bool isPad = false;                       // A tablet.
  int screenHeight = 0;                     // Of the upright screen, in points; 0 when it has none.
};

// The first two letters of the first preferred language, in lower case.
std::string languageCode(const Device& device);

}  // namespace varnok
