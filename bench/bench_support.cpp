#include "bench/bench_support.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "bench/address_book_generator.h"
#include "platform/linux/sqlite/sqlite_contact_store.h"

namespace varnok {
namespace {

Status fill(const std::string& home, int people, const std::vector<std::string>& pictures) {
  SQLiteContactStoreProvider provider(home + "/contacts.db");
  Status status;
  const auto store = provider.open(status);
  AddressBookGenerator generator;
  for (int i = 0; status.ok() && i < people; ++i) {
    const auto number = static_cast<std::uint32_t>(i);
    PersonRef person = generator.person(number);
    if (!pictures.empty()) person->setImage(pictures[number % pictures.size()]);
    status = store->addRecord(std::move(person));
  }
  return status.ok() ? store->save() : status;
}

ProcessCost least(const ProcessCost& a, const ProcessCost& b) {
  return {std::min(a.wall, b.wall), std::min(a.cpu, b.cpu), std::min(a.peak, b.peak)};
}

}  // namespace

BenchFolder::BenchFolder() : path_((std::filesystem::temp_directory_path() / "varnok-bench-XXXXXX").string()) {
  if (::mkdtemp(path_.data()) != nullptr) return;
  std::perror(path_.c_str());
  std::exit(1);
}

BenchFolder::~BenchFolder() {
  std::filesystem::remove_all(path_);
}

std::function<int()> program(std::vector<std::string> arguments) {
  return [arguments = std::move(arguments)]() mutable {
    const int null = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(null, STDOUT_FILENO);
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
      pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    ::execvp(pointers[0], pointers.data());
    return 127;
  };
}

std::vector<std::string> varnokctl(const std::string& path, const std::string& home,
                                   const std::vector<std::string>& command) {
  std::vector<std::string> arguments{path, "--home", home, "--quiet"};
  arguments.insert(arguments.end(), command.begin(), command.end());
  return arguments;
}

void makeHome(const std::string& home, int people, const std::vector<std::string>& pictures) {
  std::filesystem::create_directories(home + "/Documents");
  costOf([&] {
    const Status status = fill(home, people, pictures);
    if (!status.ok()) std::fprintf(stderr, "%s\n", status.message().c_str());
    return status.ok() ? 0 : 1;
  });
}

std::string backupIn(const std::string& home, std::string_view type) {
  std::string newest;
  for (const auto& entry : std::filesystem::directory_iterator(home + "/Documents")) {
    if (entry.path().extension() == "." + std::string(type)) newest = std::max(newest, entry.path().string());
  }
  return newest;
}

CostPair leastInTurns(int rounds, const std::function<int()>& ours, const std::function<int()>& theirs) {
  CostPair result{costOf(ours), costOf(theirs)};
  for (int round = 1; round < rounds; ++round)
    result = {least(result.ours, costOf(ours)), least(result.theirs, costOf(theirs))};
  return result;
}

void Bounds::verdict(bool held) {
  std::printf(" %s\n", held ? "ok" : "MISSED");
  std::fflush(stdout);
  missed_ = missed_ || !held;
}

void Bounds::ratio(const std::string& name, double ours, double theirs, double bound) {
  std::printf("%s: %.4f s beside %.4f s, ratio %.2f (bound %.2f)", name.c_str(), ours, theirs, ours / theirs, bound);
  verdict(ours <= bound * theirs);
}

void Bounds::timesFaster(const std::string& name, double ours, double theirs, double bound) {
  std::printf("%s: %.4f s beside %.4f s, %.1f times faster (bound %.0f)", name.c_str(), ours, theirs, theirs / ours,
              bound);
  verdict(theirs >= bound * ours);
}

void Bounds::atMost(const std::string& name, double value, double bound, const char* unit) {
  std::printf("%s: %.1f %s (bound %.0f)", name.c_str(), value, unit, bound);
  verdict(value <= bound);
}

}  // namespace varnok
