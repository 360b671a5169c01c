#include "host/paths.h"

#include <cstdlib>
#include <filesystem>

namespace varnok {
namespace {

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

// A variable of the desktop's conventions counts only when it is absolute.
std::string baseDirectory(const char* variable, const std::string& fallback) {
  std::string directory = environment(variable);
  if (directory.starts_with('/')) return directory + "/varnok";
  const std::string home = environment("HOME");
  return (home.empty() ? std::string("/") : home) + fallback + "/varnok";
}

// Nothing is put into a home directory that does not exist: a user without one
// is a service, or a test.
std::string userDirectory(const char* variable, const std::string& below) {
  std::string directory = environment(variable);
  if (directory.starts_with('/')) return directory;
  std::error_code error;
  const std::string home = environment("HOME");
  return home.starts_with('/') && std::filesystem::is_directory(home, error) ? home + below : std::string();
}

// Beside an installed program, else where the build left them.
std::string resourceDirectory() {
  if (std::string named = environment("VARNOK_RESOURCES"); !named.empty()) return named;
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  const auto installed = program.parent_path().parent_path() / "share" / "varnok";
  if (!error && std::filesystem::is_directory(installed, error)) return installed.string();
  return VARNOK_BUILD_RESOURCES;
}

// The build leaves none: the pages are served as they are written.
std::string webPageDirectory() {
  std::error_code error;
  std::string beside = resourceDirectory() + "/Web";
  return std::filesystem::is_directory(beside, error) ? beside : VARNOK_SOURCE_RESOURCES "/Web";
}

}  // namespace

Paths pathsFor(const std::string& home) {
  std::string root = home.empty() ? environment("VARNOK_HOME") : home;
  Paths paths;
  paths.texts = resourceDirectory() + "/texts";
  paths.webPages = webPageDirectory();
  paths.userConfiguration = userDirectory("XDG_CONFIG_HOME", "/.config");
  paths.userData = userDirectory("XDG_DATA_HOME", "/.local/share");
  if (!root.empty()) {
    std::error_code error;
    root = std::filesystem::absolute(root, error).lexically_normal().string();
    while (root.size() > 1 && root.ends_with('/'))
      root.pop_back();
    paths.home = root;
    paths.contacts = root + "/contacts.db";
    paths.desktopNumbers = root + "/eds-ids.db";
    paths.preferences = root + "/preferences.db";
    paths.documents = root + "/Documents";
    paths.dropboxAccount = root + "/dropbox.json";
    paths.useKeyring = false;
    paths.backupLock = root + "/backup.lock";
    paths.reminder = root + "/reminder.json";
    paths.log = root + "/log";
    paths.mail = root + "/mail";
    return paths;
  }
  const std::string data = baseDirectory("XDG_DATA_HOME", "/.local/share");
  paths.contacts = data + "/contacts.db";
  paths.desktopNumbers = data + "/eds-ids.db";
  paths.preferences = baseDirectory("XDG_CONFIG_HOME", "/.config") + "/preferences.db";
  paths.documents = data + "/Documents";
  paths.dropboxAccount = data + "/dropbox.json";
  paths.backupLock = data + "/backup.lock";
  paths.reminder = data + "/reminder.json";
  paths.log = baseDirectory("XDG_STATE_HOME", "/.local/state") + "/log";
  paths.mail = baseDirectory("XDG_CACHE_HOME", "/.cache") + "/mail";
  return paths;
}

}  // namespace varnok
