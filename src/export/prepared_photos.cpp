#include "export/prepared_photos.h"

#include "contacts/address_book.h"

namespace varnok {
namespace {

// Enough to keep all cores busy, little beside the rest of the program.
constexpr std::size_t kMostPhotos = 16;
constexpr std::uint64_t kMostBytes = 4U << 20U;

}  // namespace

PreparedPhotos::PreparedPhotos(PersonArray pictured, bool shrink, const ImageCodec& images, TaskRunner& tasks)
    : pictured_(std::move(pictured)), shrink_(shrink), images_(images), ahead_(tasks, /*workerShare=*/1) {}

VCFExporter::Lines PreparedPhotos::take(RecordID id) {
  const std::vector<RecordID>& ids = pictured_.ids();
  while (asked_ < ids.size() && ids[asked_] != id) {
    lookAhead();
    ahead_.take();
    ++asked_;
  }
  if (asked_ == ids.size()) return std::nullopt;
  lookAhead();
  ++asked_;
  std::optional<Photo> photo = ahead_.take();
  if (!photo || photo->lines.empty()) return std::nullopt;
  return std::move(photo->lines);
}

void PreparedPhotos::lookAhead() {
  while (next_ < pictured_.size() && ahead_.jobs() < kMostPhotos &&
         (ahead_.jobs() == 0 || ahead_.weight() < kMostBytes)) {
    const PersonRef person = pictured_[next_++];
    std::string bytes = ABPersonCopyImageData(person).value_or("");
    const std::uint64_t weight = bytes.size() + 1;
    ahead_.push({person->recordID(), std::move(bytes), shrink_, &images_, {}}, weight);
  }
}

void PreparedPhotos::LineMaker::operator()(Photo& photo) const {
  if (photo.bytes.empty()) return;
  photo.lines = VCFExporter::photoLine(photo.bytes, photo.shrink, *photo.images);
  photo.bytes = {};
}

}  // namespace varnok
