// One step of the item counter (read, raise, flush) beside the least that could
// be done for it: one write of eight bytes into a file.

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/linux/posix/preference_file_store.h"

namespace {

constexpr int kSteps = 1'000'000;
constexpr const char* kKey = "vnk.export.itemCount";

template <typename Step>
double nanosecondsPerStep(Step step) {
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < kSteps; ++i)
    step();
  const std::chrono::duration<double, std::nano> taken = std::chrono::steady_clock::now() - start;
  return taken.count() / kSteps;
}

// A store as a user has it, with some two dozen keys.
std::unique_ptr<varnok::PreferenceFileStore> openStore(const std::string& path) {
  varnok::Status status;
  auto store = varnok::PreferenceFileStore::open(path, status);
  if (!store) {
    std::fprintf(stderr, "%s\n", status.message().c_str());
    std::exit(1);
  }
  for (int i = 0; i < 24; ++i)
    store->setValue("YES", "EXPORT_CONF_" + std::to_string(i));
  store->setInteger(0, kKey);
  return store;
}

}  // namespace

int main(int argc, char** argv) {
  std::string directory = argc > 1 ? argv[1] : std::filesystem::temp_directory_path().string();
  directory += "/varnok-bench-XXXXXX";
  if (::mkdtemp(directory.data()) == nullptr) return 1;
  const auto store = openStore(directory + "/preferences.db");
  const double counter = nanosecondsPerStep([&] {
    store->setInteger(store->integerForKey(kKey) + 1, kKey);
    if (!store->synchronize().ok()) std::exit(1);
  });
  const int file = ::open((directory + "/bare").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  const double bare = nanosecondsPerStep([file, word = std::int64_t{0}]() mutable {
    ++word;
    if (::pwrite(file, &word, sizeof word, 0) != sizeof word) std::exit(1);
  });
  ::close(file);
  std::filesystem::remove_all(directory);
  std::printf("counter step %.0f ns, bare pwrite of 8 bytes %.0f ns, ratio %.2f\n", counter, bare, counter / bare);
  return store->integerForKey(kKey) == kSteps ? 0 : 1;
}
