// A vCard backup of 2,000 people with photos of mixed size. Shrunk: beside one
// thread that only reads, decodes, redraws and encodes them through the image
// libraries. As stored: beside the same rows and photos read, turned into base64,
// and the same bytes written.
//
//   photos_bench PATH_OF_VARNOKCTL

#include <sqlite3.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "bench/bare_book.h"
#include "bench/bench_support.h"
#include "bench/pictures.h"

namespace {

using varnok::ImageSize;

constexpr int kPeople = 2000;
constexpr int kShrinkRounds = 2;  // Of a minute or so.
constexpr int kStoredRounds = 5;
constexpr double kMebibyte = 1048576;

// What the application reduces photos to: pixels, and the library's setting.
constexpr int kSide = 960;
constexpr int kQuality = 25;

constexpr ImageSize kLargest{4032, 3024};
constexpr ImageSize kJPEGs[]{{640, 480},   {640, 640},   {480, 640},   {960, 720},   {720, 960},  {1280, 960},
                             {1600, 1200}, {1024, 1024}, {2048, 1536}, {3264, 2448}, kLargest,    {800, 600},
                             {640, 480},   {750, 1000},  {1200, 1600}, {640, 480},   {960, 1280}, {2592, 1944}};
constexpr ImageSize kPNGs[]{{640, 640}, {1024, 768}};

std::vector<std::string> pictures() {
  std::vector<std::string> all;
  for (const ImageSize size : kJPEGs)
    all.push_back(varnok::makeJPEG(size, static_cast<unsigned>(all.size())));
  for (const ImageSize size : kPNGs)
    all.push_back(varnok::makePNG(size, static_cast<unsigned>(all.size())));
  return all;
}

int reduceAll(const std::string& home) {
  sqlite3* database = nullptr;
  sqlite3_open_v2((home + "/contacts.db").c_str(), &database, SQLITE_OPEN_READONLY, nullptr);
  sqlite3_stmt* rows = nullptr;
  sqlite3_prepare_v2(database, "SELECT bytes FROM image ORDER BY person", -1, &rows, nullptr);
  int reduced = 0;
  while (sqlite3_step(rows) == SQLITE_ROW) {
    const std::string_view bytes(static_cast<const char*>(sqlite3_column_blob(rows, 0)),
                                 static_cast<std::size_t>(sqlite3_column_bytes(rows, 0)));
    if (varnok::reducePicture(bytes, kSide, kQuality) > 0) ++reduced;
  }
  sqlite3_finalize(rows);
  sqlite3_close(database);
  return reduced == kPeople ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: photos_bench PATH_OF_VARNOKCTL\n");
    return 2;
  }
  const varnok::BenchFolder folder;
  const std::string home = folder.path("home");
  varnok::makeHome(home, kPeople, pictures());
  const auto backup = [&](const char* shrink) {
    return varnok::program(varnok::varnokctl(argv[1], home, {"--set", shrink, "backup", "--type", "vcf"}));
  };
  varnok::Bounds bounds;

  const auto shrunk =
      varnok::leastInTurns(kShrinkRounds, backup("EXPORT_CONF_SHRINK=YES"), [&] { return reduceAll(home); });
  const double fourDecoded = 4.0 * kLargest.width * kLargest.height * 3;
  bounds.ratio("2,000 photos shrunk, wall", shrunk.ours.wall, shrunk.theirs.wall, 0.6);
  bounds.atMost("2,000 photos shrunk, memory", shrunk.ours.peak / kMebibyte, 32 + fourDecoded / kMebibyte, "MiB");
  std::printf("2,000 photos shrunk: CPU %.2f s beside %.2f s\n", shrunk.ours.cpu, shrunk.theirs.cpu);

  varnok::costOf(backup("EXPORT_CONF_SHRINK=NO"));
  const auto stored = varnok::leastInTurns(kStoredRounds, backup("EXPORT_CONF_SHRINK=NO"), [&] {
    return varnok::bareBackup(home, varnok::backupIn(home, "vcf"), varnok::BarePictures::inBase64);
  });
  bounds.ratio("2,000 photos as stored, wall", stored.ours.wall, stored.theirs.wall, 1.0);
  bounds.atMost("2,000 photos as stored, memory", stored.ours.peak / kMebibyte, 32 + fourDecoded / kMebibyte, "MiB");
  return bounds.exitStatus();
}
