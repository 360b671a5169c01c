// What the writers ask of their surroundings, over fakes, with the registered
// defaults.

#pragma once

#include <gtest/gtest.h>

#include <string>

#include "app/preferences/preference_keys.h"
#include "export/export_services.h"
#include "platform/testing/fake_clock.h"
#include "platform/testing/fake_image_codec.h"
#include "platform/testing/fake_random_source.h"
#include "platform/testing/fake_services.h"
#include "platform/testing/in_memory_file_system.h"
#include "platform/testing/in_memory_preference_store.h"

namespace varnok {

struct ExportSurroundings {
  InMemoryPreferenceStore preferences;
  FakeClock clock;
  FakeImageCodec images;
  FakeTextCodec codec;
  FakeRandomSource random;
  ExportServices services{preferences, clock, images, codec, random};

  ExportSurroundings() { preferences.registerDefaults(registeredDefaults()); }

  // What `write` puts into a file.
  template <typename Write>
  static std::string written(const Write& write) {
    InMemoryFileSystem disk;
    Status status;
    const auto stream = disk.createAtomic("file", status);
    EXPECT_TRUE(write(*stream).ok());
    EXPECT_TRUE(stream->commit().ok());
    return disk.files["file"];
  }
};

}  // namespace varnok
