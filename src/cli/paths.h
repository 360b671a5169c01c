#pragma once

#include <string>

namespace varnok {

// Where one user's things are.
struct Paths {
  std::string contacts;  // The embedded address book.
  std::string preferences;
  std::string documents;  // Backups. Private to the application.
  std::string backupLock;
  std::string reminder;  // The planned one.
  std::string dropboxAccount;
  bool useKeyring = true;  // Not where everything is to be in one folder.
  std::string log;         // A directory.
  std::string texts;       // Compiled catalogues, a directory.
  std::string webPages;    // Of the web access, a directory.
};

// Everything under `home`; when that is empty, under VARNOK_HOME; else where the
// desktop's conventions put an application's data.
Paths pathsFor(const std::string& home);

}  // namespace varnok
