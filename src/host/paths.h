#pragma once

#include <string>

namespace varnok {

// Where one user's things are.
struct Paths {
  std::string home;            // In which everything is; empty for the desktop's conventions.
  std::string contacts;        // The embedded address book.
  std::string desktopNumbers;  // Of the people of the desktop's address books.
  std::string preferences;
  std::string documents;  // Backups. Private to the application.
  std::string backupLock;
  std::string reminder;  // The planned one.
  std::string dropboxAccount;
  bool useKeyring = true;  // Not where everything is to be in one folder.
  std::string log;         // A directory.
  std::string mail;        // Copies of attachments, for mail programs; a directory.
  std::string texts;       // Compiled catalogues, a directory.
  std::string webPages;    // Of the web access, a directory.

  // Where the desktop itself looks, whatever the home is. Empty when the user
  // has no home directory.
  std::string userConfiguration;
  std::string userData;
};

// Everything under `home`; when that is empty, under VARNOK_HOME; else where the
// desktop's conventions put an application's data.
Paths pathsFor(const std::string& home);

}  // namespace varnok
