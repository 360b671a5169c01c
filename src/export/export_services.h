#pragma once

#include "platform/clock.h"
#include "platform/image_codec.h"
#include "platform/preference_store.h"
#include "platform/random.h"
#include "platform/text_codec.h"

namespace varnok {

class PreparedPhotos;

// What the writers ask of their surroundings. All outlive the writing.
struct ExportServices {
  PreferenceStore& preferences;
  const Clock& clock;
  const ImageCodec& images;
  const TextCodec& codec;
  RandomSource& random;
  // The photos of this pass, made ahead; null when each is made when its turn
  // comes.
  PreparedPhotos* photos = nullptr;
};

}  // namespace varnok
