// The list document of the browser pages, made anew, beside sqlite3 writing the
// same rows as JSON; and ten times as many people.

#include <cstdio>

#include "bench/bench_support.h"
#include "export/html_exporter.h"
#include "platform/linux/imaging/turbo_image_codec.h"
#include "platform/linux/posix/posix_file_system.h"
#include "platform/linux/sqlite/sqlite_contact_store.h"
#include "platform/linux/text/mo_text_catalog.h"

namespace {

constexpr int kPeople = 10'000;
constexpr int kManyPeople = 100'000;
constexpr int kRounds = 20;

int writeList(const std::string& home) {
  varnok::SQLiteContactStoreProvider contacts(home + "/contacts.db");
  varnok::PosixFileSystem files;
  const auto texts = varnok::MoTextCatalog::load(home, {});
  const varnok::TurboImageCodec images;
  return varnok::HTMLExporter::openRecordsJSON({contacts, files, *texts, images, home}) == nullptr ? 1 : 0;
}

varnok::CostPair costs(const std::string& home) {
  constexpr const char* kRows = "SELECT first_name AS name, last_name AS lastName, id FROM person ORDER BY id";
  return varnok::leastInTurns(
      kRounds, [&] { return writeList(home); }, varnok::program({"sqlite3", "-json", home + "/contacts.db", kRows}));
}

}  // namespace

int main() {
  const varnok::BenchFolder folder;
  varnok::makeHome(folder.path("some"), kPeople);
  varnok::makeHome(folder.path("many"), kManyPeople);
  const varnok::CostPair some = costs(folder.path("some"));
  const varnok::CostPair many = costs(folder.path("many"));
  varnok::Bounds bounds;
  bounds.ratio("list of 10,000 beside sqlite3 -json, wall", some.ours.wall, some.theirs.wall, 2);
  bounds.ratio("list of 10,000 beside sqlite3 -json, CPU", some.ours.cpu, some.theirs.cpu, 2);
  bounds.ratio("list of 100,000 beside ten of 10,000, CPU", many.ours.cpu, 10 * some.ours.cpu, 1.3);
  bounds.atMost("memory for 100,000", many.ours.peak / (1 << 20), 64, "MiB");
  return bounds.exitStatus();
}
