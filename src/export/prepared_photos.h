// PreparedPhotos: the PHOTO lines of a backup, made ahead on all cores while
// the other lines are written in order. The bytes are those that one thread
// would write.
//
// Lifetime. Made for one pass over the people, on the thread of their store;
// destroyed before the store. Memory. Some photos as stored and as lines; it
// does not grow with their number.

#pragma once

#include <cstddef>

#include "backup/files/work_ahead.h"
#include "contacts/contact_store.h"
#include "export/vcf_exporter.h"

namespace varnok {

class PreparedPhotos {
 public:
  // `pictured`: those who have a picture, in the order in which they will be
  // asked for.
  PreparedPhotos(PersonArray pictured, bool shrink, const ImageCodec& images, TaskRunner& tasks);

  // The lines of a person of `pictured`; those before it are skipped.
  VCFExporter::Lines take(RecordID id);

 private:
  struct Photo {
    RecordID id = kInvalidRecordID;
    std::string bytes;
    bool shrink = false;
    const ImageCodec* images = nullptr;
    std::string lines;
  };
  struct LineMaker {
    void operator()(Photo& photo) const;
  };

  void lookAhead();

  PersonArray pictured_;
  bool shrink_;
  const ImageCodec& images_;
  std::size_t next_ = 0;   // Of pictured_: the first that has not been pushed.
  std::size_t asked_ = 0;  // Of pictured_: the first that has not been taken.
  WorkAhead<Photo, LineMaker> ahead_;
};

}  // namespace varnok
