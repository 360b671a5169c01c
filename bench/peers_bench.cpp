// Reading and writing 10,000 people beside other programs' libraries: a vCard
// backup as `varnokctl` makes it, and our own reader and writer of vCards doing
// exactly what theirs do.
//
//   peers_bench PATH_OF_VARNOKCTL ECONTACT_PEER|"" PYTHON VOBJECT_PEER

#include <cstdio>
#include <functional>
#include <string>

#include "app/preferences/preference_keys.h"
#include "bench/bench_support.h"
#include "export/vcf_exporter.h"
#include "import/vcard_reader.h"
#include "platform/linux/imaging/turbo_image_codec.h"
#include "platform/linux/posix/posix_clock.h"
#include "platform/linux/posix/posix_file_system.h"
#include "platform/linux/posix/preference_file_store.h"
#include "platform/linux/posix/system_random_source.h"
#include "platform/linux/text/icu_text_codec.h"

namespace {

constexpr int kPeople = 10'000;
constexpr int kRounds = 5;
constexpr double kFasterThanEContact = 3;
constexpr double kFasterThanVobject = 10;

using Work = std::function<int()>;

// Writes each person that the reader finds.
class Copier : public varnok::VCardReader::Sink {
 public:
  Copier(varnok::OutputStream& out, const varnok::ExportServices& services) : out_(out), services_(services) {}

  void person(varnok::PersonRef person) override {
    if (status_.ok()) status_ = varnok::VCFExporter::exportPerson(out_, person, "en", services_);
  }
  void skipped(std::size_t /*line*/, std::string_view reason) override {
    status_ = {varnok::Status::Code::corrupt, std::string(reason)};
  }

  const varnok::Status& status() const { return status_; }

 private:
  varnok::OutputStream& out_;
  const varnok::ExportServices& services_;
  varnok::Status status_;
};

int copyCards(const std::string& from, const std::string& to) {
  varnok::Status status;
  varnok::PosixFileSystem files;
  const varnok::PosixClock clock;
  const varnok::TurboImageCodec images;
  const varnok::IcuTextCodec codec;
  varnok::SystemRandomSource random;
  const auto preferences = varnok::PreferenceFileStore::open(to + ".preferences", status);
  const auto out = files.createAtomic(to, status);
  if (preferences == nullptr || out == nullptr) return 1;
  preferences->registerDefaults(varnok::registeredDefaults());
  const varnok::ExportServices services{*preferences, clock, images, codec, random};
  Copier copier(*out, services);
  varnok::VCardReader reader(copier, codec, clock);
  reader.feed(files.readFile(from, status).value_or(""));
  reader.finish();
  return copier.status().ok() && out->commit().ok() ? 0 : 1;
}

void compare(const std::string& peer, const Work& backup, const Work& copy, const Work& theirs, double bound,
             varnok::Bounds& bounds) {
  const varnok::CostPair whole = varnok::leastInTurns(kRounds, backup, theirs);
  bounds.timesFaster("backup of 10,000 beside " + peer + ", CPU", whole.ours.cpu, whole.theirs.cpu, bound);
  bounds.timesFaster("backup of 10,000 beside " + peer + ", wall", whole.ours.wall, whole.theirs.wall, bound);
  const varnok::CostPair text = varnok::leastInTurns(kRounds, copy, theirs);
  bounds.timesFaster("reading and writing 10,000 cards beside " + peer + ", CPU", text.ours.cpu, text.theirs.cpu,
                     bound);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) {
    std::fprintf(stderr, "usage: peers_bench PATH_OF_VARNOKCTL ECONTACT_PEER|\"\" PYTHON VOBJECT_PEER\n");
    return 2;
  }
  const varnok::BenchFolder folder;
  const std::string home = folder.path("home");
  varnok::makeHome(home, kPeople);
  const Work backup = varnok::program(varnok::varnokctl(argv[1], home, {"backup", "--type", "vcf"}));
  varnok::costOf(backup);
  const std::string file = varnok::backupIn(home, "vcf");
  const Work copy = [&] { return copyCards(file, folder.path("ours.vcf")); };
  const std::string theirs = folder.path("theirs.vcf");

  varnok::Bounds bounds;
  if (*argv[2] != '\0') {
    compare("EContact", backup, copy, varnok::program({argv[2], file, theirs}), kFasterThanEContact, bounds);
  } else {
    std::printf("EContact: the library is not installed\n");
  }
  compare("vobject", backup, copy, varnok::program({argv[3], argv[4], file, theirs}), kFasterThanVobject, bounds);
  return bounds.exitStatus();
}
