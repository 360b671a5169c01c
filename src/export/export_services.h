#pragma once

#include "platform/clock.h"
#include "platform/image_codec.h"
#include "platform/preference_store.h"
#include "platform/text_codec.h"

namespace varnok {

// What the writers ask of their surroundings. All outlive the writing.
struct ExportServices {
  PreferenceStore& preferences;
  const Clock& clock;
  const ImageCodec& images;
  const TextCodec& codec;
};

}  // namespace varnok
