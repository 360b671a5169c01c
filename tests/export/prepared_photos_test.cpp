#include "export/prepared_photos.h"

#include <gtest/gtest.h>

#include "app/preferences/preference_keys.h"
#include "contacts/testing/in_memory_contact_store.h"
#include "platform/linux/posix/thread_task_runner.h"
#include "platform/testing/fake_clock.h"
#include "platform/testing/fake_image_codec.h"
#include "platform/testing/fake_random_source.h"
#include "platform/testing/fake_services.h"
#include "platform/testing/in_memory_file_system.h"
#include "platform/testing/in_memory_preference_store.h"
#include "platform/testing/manual_task_runner.h"
#include "support/person_builder.h"

namespace varnok {
namespace {

// Two people of three have a photo, of very different sizes; some cannot be
// reduced.
void fill(InMemoryContactStoreProvider& provider) {
  std::vector<PersonRef> people;
  for (int i = 0; i < 300; ++i) {
    PersonBuilder added = person().firstName(std::to_string(i));
    if (i % 3 == 1) added.image(std::to_string(i) + "x" + std::to_string(301 - i));
    if (i % 3 == 2) added.image(std::string(static_cast<std::size_t>(i) * 400, static_cast<char>('a' + i % 26)));
    people.push_back(added);
  }
  putPeople(provider, people);
}

std::string backup(InMemoryContactStoreProvider& provider, TaskRunner* tasks, bool shrink, int everyNth = 1) {
  InMemoryPreferenceStore preferences;
  preferences.registerDefaults(registeredDefaults());
  preferences.setBool(shrink, key::EXPORT_CONF_SHRINK);
  const FakeClock clock;
  const FakeImageCodec images;
  const FakeTextCodec codec;
  FakeRandomSource random;
  InMemoryFileSystem disk;
  Status status;
  const auto store = provider.open(status);
  const auto stream = disk.createAtomic("file", status);
  std::optional<PreparedPhotos> photos;
  if (tasks != nullptr) photos.emplace(store->peopleWithImages(), shrink, images, *tasks);
  const ExportServices services{preferences, clock, images, codec, random, photos ? &*photos : nullptr};
  const PersonArray people = store->allPeople();
  for (std::size_t i = 0; i < people.size(); i += static_cast<std::size_t>(everyNth)) {
    EXPECT_TRUE(VCFExporter::exportPerson(*stream, people[i], "en", services).ok());
  }
  EXPECT_TRUE(stream->commit().ok());
  return disk.files["file"];
}

TEST(PreparedPhotos, AreByteForByteWhatOneThreadWrites) {
  InMemoryContactStoreProvider provider;
  fill(provider);
  for (const bool shrink : {false, true}) {
    const std::string expected = backup(provider, nullptr, shrink);
    ThreadTaskRunner threads;
    EXPECT_EQ(backup(provider, &threads, shrink), expected);
    ManualTaskRunner nobodyHelps;
    EXPECT_EQ(backup(provider, &nobodyHelps, shrink), expected);
    EXPECT_EQ(backup(provider, &threads, shrink, /*everyNth=*/7), backup(provider, nullptr, shrink, /*everyNth=*/7));
  }
}

TEST(PreparedPhotos, MayBeLeftInTheMiddle) {
  InMemoryContactStoreProvider provider;
  fill(provider);
  const FakeImageCodec images;
  ThreadTaskRunner tasks;
  Status status;
  const auto store = provider.open(status);
  const PersonArray pictured = store->peopleWithImages();
  for (int round = 0; round < 20; ++round) {
    PreparedPhotos photos(pictured, /*shrink=*/true, images, tasks);
    EXPECT_TRUE(photos.take(pictured.ids()[3]).has_value());
    EXPECT_FALSE(photos.take(kInvalidRecordID).has_value());
  }
}

}  // namespace
}  // namespace varnok
