// Whole backups: their bytes in every format, with every switch and in every
// language, and from many threads.

#include "backup/run/backup_run.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "app/preferences/preference_keys.h"
#include "backup/files/vnk_util.h"
#include "contacts/testing/in_memory_contact_store.h"
#include "platform/linux/imaging/picture_maker.h"
#include "platform/linux/imaging/turbo_image_codec.h"
#include "platform/linux/posix/thread_task_runner.h"
#include "platform/linux/text/icu_text_codec.h"
#include "platform/linux/text/mo_text_catalog.h"
#include "platform/testing/fake_clock.h"
#include "platform/testing/fake_image_codec.h"
#include "platform/testing/fake_random_source.h"
#include "platform/testing/fake_services.h"
#include "platform/testing/in_memory_file_system.h"
#include "platform/testing/in_memory_preference_store.h"
#include "platform/testing/manual_task_runner.h"
#include "support/golden.h"
#include "support/person_builder.h"
#include "support/zip_reader.h"

namespace varnok {
namespace {

const std::string kHome(label::kHome);
const std::string kWork(label::kWork);
const std::string kMobile(label::kMobile);
const std::string kAnniversary(label::kAnniversary);

constexpr std::int64_t kInstant = 1709644029;  // 2024-03-05 13:07:09 UTC.

using Keys = std::vector<std::string_view>;

class Host : public BackupRun::Host {
 public:
  bool operationCancelled() const override { return false; }
  void personTaken(const PersonRef& /*person*/) override {}
};

// The bytes of a backup of everybody, in the format of the extension `type`,
// with the switches of `off` off.
std::string backup(ContactStoreProvider& contacts, const std::string& type, const std::string& language,
                   const Keys& off, const ImageCodec& images, TaskRunner& tasks) {
  InMemoryPreferenceStore preferences;
  preferences.registerDefaults(registeredDefaults());
  for (const std::string_view key : off)
    preferences.setObject("NO", key);
  const FakeClock clock;
  const IcuTextCodec codec;
  FakeRandomSource random;
  FakeDeveloperLog log;
  InMemoryFileSystem files;
  const auto texts = MoTextCatalog::load(VARNOK_TEXTS_DIR, std::vector{language});
  Host host;
  BackupRun run(host, {{preferences, clock, images, codec, random}, contacts, files, log, *texts, tasks});
  const std::string path = "/docs/backup." + type;
  EXPECT_EQ(run.run(path, language).kind, BackupOutcome::Kind::finished);
  return files.files[path];
}

// The entries of an archive as text.
std::string listed(const std::string& archive) {
  std::string text;
  for (const ReadEntry& entry : readZip(archive))
    text += "== " + entry.name + "\n" + entry.bytes;
  return text;
}

PersonRef withEverything() {
  return person()
      .firstName("Ada")
      .lastName("Ünal")
      .text(kABPersonMiddleNameProperty, "B.")
      .text(kABPersonPrefixProperty, "Dr.")
      .text(kABPersonSuffixProperty, "PhD")
      .text(kABPersonNicknameProperty, "Countess")
      .text(kABPersonFirstNamePhoneticProperty, "ei-da")
      .text(kABPersonLastNamePhoneticProperty, "oo-nal")
      .text(kABPersonOrganizationProperty, "ACME")
      .text(kABPersonDepartmentProperty, "Engines")
      .text(kABPersonJobTitleProperty, "Analyst")
      .note("likes; \"engines\",\r\nand\ttea")
      .birthday(kInstant)
      .phone(kMobile, "1;2")
      .phone("boat", "3")
      .email(kHome, "a@example.org")
      .email(std::nullopt, "b@example.org")
      .entry(kABPersonURLProperty, std::string(label::kHomePage), EntryValue(std::string("https://example.org")))
      .entry(kABPersonURLProperty, kWork, EntryValue(std::string("https://example.com")))
      .entry(kABPersonRelatedNamesProperty, "brother", EntryValue(std::string("Byron")))
      .date(kAnniversary, kInstant)
      .date(kHome, 0)
      .address(kWork,
               Dictionary{{"Street", "1 St\n2nd"}, {"City", "L"}, {"State", "S"}, {"ZIP", "Z"}, {"Country", "UK"}})
      .address("boat", Dictionary{{"City", "Harbour"}})
      .entry(kABPersonInstantMessageProperty, kHome, Dictionary{{"service", "Jabber"}, {"username", "ada"}})
      .entry(kABPersonInstantMessageProperty, "chat", Dictionary{{"service", "ICQ"}, {"username", "7"}})
      .entry(kABPersonSocialProfileProperty, std::nullopt, Dictionary{{"service", "web"}, {"username", "ada"}})
      .image("400x300");
}

// With texts of a language in every kind of group: names, a label, an address, a
// note.
PersonRef written(const std::string& first, const std::string& last, const std::string& city) {
  return person()
      .firstName(first)
      .lastName(last)
      .phone(last, "+90 555")
      .address(kHome, Dictionary{{"Street", "1 \"Main\" St\r\nFlat 2"}, {"City", city}})
      .note("\"" + first + "\", " + city);
}

InMemoryContactStoreProvider& people() {
  static InMemoryContactStoreProvider provider;
  static const bool filled = [] {
    putPeople(provider, {withEverything(), written("Ayşe", "Işık", "İzmir"), written("太郎", "山田", "東京"),
                         written("Jürgen", "Größe", "Weißenfels"), written("Łucja", "Żółć", "Łódź"),
                         written("שרה", "לוי", "חיפה"), written("Ωμέγα", "Άλφα", "Αθήνα"),
                         written("Zoë", "Peña €", "A\u200Db"), person().image("no picture"), person()});
    return true;
  }();
  EXPECT_TRUE(filled);
  return provider;
}

std::string backupOfPeople(const std::string& type, const std::string& language, const Keys& off = {}) {
  const FakeImageCodec images;
  ManualTaskRunner nobodyHelps;
  const std::string bytes = backup(people(), type, language, off, images, nobodyHelps);
  return type == "zip" ? listed(bytes) : bytes;
}

struct Language {
  std::string code;
  std::string csv;    // Golden file.
  std::string cards;  // Likewise.
};

class BackupIn : public testing::TestWithParam<Language> {};

TEST_P(BackupIn, IsGolden) {
  const std::string& language = GetParam().code;
  EXPECT_TRUE(matchesGolden("backup/people.vcf", backupOfPeople("vcf", language)));
  EXPECT_TRUE(matchesGolden("backup/people_" + GetParam().csv + ".csv", backupOfPeople("csv", language)));
  EXPECT_TRUE(matchesGolden("backup/cards_" + GetParam().cards + ".txt", backupOfPeople("zip", language)));
}

INSTANTIATE_TEST_SUITE_P(, BackupIn,
                         testing::Values(Language{"en", "en", "utf8"}, Language{"ja", "en", "utf8"},
                                         Language{"he", "he", "utf8"}, Language{"tr", "tr", "1254"},
                                         Language{"el", "el", "1253"}, Language{"de", "de", "1250"},
                                         Language{"es", "es", "1252"}, Language{"it", "it", "1252"},
                                         Language{"fr", "fr", "1252"}),
                         [](const auto& tested) { return tested.param.code; });

// What a switch takes out.
struct Switch {
  std::string_view key;
  Keys properties = {};         // Of a single vCard file.
  Keys propertiesOfCards = {};  // Of an archive's cards.
  std::size_t firstColumn = 0;
  std::size_t columns = 0;
};

std::vector<Switch> switches() {
  const auto alike = [](std::string_view key, std::string_view property, std::size_t firstColumn,
                        std::size_t columns) -> Switch {
    return {key, {property}, {property}, firstColumn, columns};
  };
  return {
      alike(key::EXPORT_CONF_PHONES, "TEL", 11, 9),
      alike(key::EXPORT_CONF_EMAILS, "EMAIL", 20, 6),
      alike(key::EXPORT_CONF_URLS, "URL", 26, 3),
      alike(key::EXPORT_CONF_ADRS, "ADR", 29, 2),
      {key::EXPORT_CONF_DATES, {"BDAY", "X-ABDATES", "X-ABDATE"}, {"BDAY"}, 9, 2},
      alike(key::EXPORT_CONF_NOTES, "NOTE", 31, 1),
      alike(key::EXPORT_CONF_PHOTOS, "PHOTO", 0, 0),
  };
}

bool contains(const Keys& keys, std::string_view key) {
  return std::ranges::find(keys, key) != keys.end();
}

// `cards` without some properties and their labels, the items numbered anew.
std::string withoutProperties(std::string_view cards, const Keys& properties) {
  std::string result;
  int items = 0;
  bool dropped = false;
  for (std::size_t at = 0; at < cards.size();) {
    const std::string_view line = cards.substr(at, cards.find('\n', at) + 1 - at);
    at += line.size();
    const std::string_view name = line.substr(0, line.find_first_of(":;"));
    const std::size_t dot = name.starts_with("item") ? name.find('.') : std::string_view::npos;
    const std::string_view property = dot == std::string_view::npos ? name : name.substr(dot + 1);
    const bool isLabel = property == "X-ABLabel";  // Goes or stays with the line above.
    if (!isLabel) dropped = contains(properties, property);
    if (dropped) continue;
    if (dot == std::string_view::npos) {
      result += line;
    } else {
      if (!isLabel) ++items;
      result += "item" + std::to_string(items - 1) + std::string(line.substr(dot));
    }
  }
  return result;
}

// `rows` without the columns of the switches in `off`.
std::string withoutColumns(std::string_view rows, const Keys& off) {
  constexpr std::size_t kColumns = 32;  // Only the last one, the note, holds commas.
  std::string result;
  for (std::size_t at = 0; at < rows.size();) {
    std::string_view row = rows.substr(at, rows.find('\r', at) - at);
    at += row.size() + 1;
    for (std::size_t column = 0; column < kColumns; ++column) {
      const std::string_view value = column + 1 < kColumns ? row.substr(0, row.find(',')) : row;
      row.remove_prefix(std::min(value.size() + 1, row.size()));
      const bool gone = std::ranges::any_of(switches(), [&](const Switch& one) {
        return contains(off, one.key) && column >= one.firstColumn && column < one.firstColumn + one.columns;
      });
      if (!gone) result += (column == 0 ? "" : ",") + std::string(value);
    }
    result += '\r';
  }
  return result;
}

void expectOnlyTheirsGone(const Keys& off) {
  Keys properties;
  Keys propertiesOfCards;
  std::string named;
  for (const Switch& one : switches()) {
    if (!contains(off, one.key)) continue;
    properties.insert(properties.end(), one.properties.begin(), one.properties.end());
    propertiesOfCards.insert(propertiesOfCards.end(), one.propertiesOfCards.begin(), one.propertiesOfCards.end());
    named += std::string(one.key) + " ";
  }
  // Names of cards are numbered alike: every card takes one number.
  EXPECT_EQ(backupOfPeople("vcf", "en", off), withoutProperties(backupOfPeople("vcf", "en"), properties)) << named;
  EXPECT_EQ(backupOfPeople("zip", "en", off), withoutProperties(backupOfPeople("zip", "en"), propertiesOfCards))
      << named;
  EXPECT_EQ(backupOfPeople("csv", "en", off), withoutColumns(backupOfPeople("csv", "en"), off)) << named;
}

TEST(BackupSwitch, TakesWhatIsItsOwnAndNothingElse) {
  Keys all;
  for (const Switch& one : switches()) {
    expectOnlyTheirsGone({one.key});
    all.push_back(one.key);
  }
  expectOnlyTheirsGone(all);
}

TEST(BackupSwitch, ShrinkChangesThePhotoLinesAlone) {
  const Keys asStored{key::EXPORT_CONF_SHRINK};
  const std::string shrunk = VNKUtil::encodeBASE64("jpeg 960x720 at 0.0");
  for (const std::string type : {"vcf", "zip"}) {
    std::string expected = backupOfPeople(type, "en");
    const std::size_t at = expected.find(shrunk);
    ASSERT_NE(at, std::string::npos);
    expected.replace(at, shrunk.size(), VNKUtil::encodeBASE64("400x300"));
    EXPECT_EQ(backupOfPeople(type, "en", asStored), expected);
    EXPECT_EQ(backupOfPeople(type, "en", {key::EXPORT_CONF_PHOTOS, key::EXPORT_CONF_SHRINK}),
              backupOfPeople(type, "en", {key::EXPORT_CONF_PHOTOS}));
  }
  EXPECT_EQ(backupOfPeople("csv", "en", asStored), backupOfPeople("csv", "en"));
}

// JPEG and PNG, large and small, and bytes that are no picture.
std::string chancePhoto(std::mt19937& chance) {
  const auto upTo = [&](int most) { return static_cast<int>(chance() % static_cast<unsigned>(most)) + 1; };
  switch (chance() % 4) {
    case 0: return std::string(static_cast<std::size_t>(upTo(200'000)), static_cast<char>(chance()));
    case 1: return makePNG({.left = std::string(1, static_cast<char>(chance())), .right = "w"});
    default: return makeJPEG(paintHalves({upTo(600), upTo(600)}, {upTo(255), upTo(255), 9}, {9, upTo(255), upTo(255)}));
  }
}

TEST(BackupByManyThreads, IsByteForByteTheOneOfASingleThread) {
  std::mt19937 chance(3);
  std::vector<PersonRef> added;
  for (int i = 0; i < 300; ++i) {
    PersonBuilder one = person().firstName(std::to_string(i)).note(std::string(chance() % 3000, 'n'));
    if (chance() % 16 == 0) one.image(chancePhoto(chance));
    added.push_back(one);
  }
  InMemoryContactStoreProvider contacts;
  putPeople(contacts, added);
  const TurboImageCodec images;
  for (const Keys& off : {Keys{}, Keys{key::EXPORT_CONF_SHRINK}}) {
    for (const std::string type : {"vcf", "zip"}) {
      ManualTaskRunner nobodyHelps;
      const std::string alone = backup(contacts, type, "tr", off, images, nobodyHelps);
      ThreadTaskRunner threads;
      EXPECT_TRUE(backup(contacts, type, "tr", off, images, threads) == alone) << type;
    }
  }
}

}  // namespace
}  // namespace varnok
