// Cards in an archive, with the real code pages.

#include <gtest/gtest.h>

#include "app/preferences/preference_keys.h"
#include "export/vcf_exporter.h"
#include "platform/linux/text/icu_text_codec.h"
#include "platform/testing/fake_clock.h"
#include "platform/testing/fake_image_codec.h"
#include "platform/testing/fake_random_source.h"
#include "platform/testing/in_memory_file_system.h"
#include "platform/testing/in_memory_preference_store.h"
#include "platform/testing/manual_task_runner.h"
#include "support/person_builder.h"
#include "support/zip_reader.h"

namespace varnok {
namespace {

struct Surroundings {
  InMemoryPreferenceStore preferences;
  FakeClock clock;
  FakeImageCodec images;
  IcuTextCodec codec;
  FakeRandomSource random;
  ExportServices services{preferences, clock, images, codec, random};

  Surroundings() { preferences.registerDefaults(registeredDefaults()); }

  ReadEntry entry(const PersonRef& person, std::string_view language) {
    InMemoryFileSystem disk;
    ManualTaskRunner tasks;
    ZipArchive archive(disk, clock, tasks);
    EXPECT_TRUE(archive.CreateZipFile2("zip"));
    const auto name = ABRecordCopyCompositeName(person);
    EXPECT_TRUE(VCFExporter::exportAsZip(archive, person, language, name, services).ok());
    EXPECT_TRUE(archive.CloseZipFile2());
    return readZip(disk.files["zip"]).at(0);
  }

  std::string oneFileCard(const PersonRef& person) {
    InMemoryFileSystem disk;
    Status status;
    const auto stream = disk.createAtomic("vcf", status);
    EXPECT_TRUE(VCFExporter::exportPerson(*stream, person, "tr", services).ok());
    EXPECT_TRUE(stream->commit().ok());
    return disk.files["vcf"];
  }
};

TEST(ZipCard, QuirkIsInTheCodePageOfTheLanguage) {
  struct Row {
    std::string language;
    std::string name;
    std::string written;
  };
  for (const auto& [language, name, written] : std::vector<Row>{
           {"tr", "Şule Ğ", "\xDEule \xD0"},
           {"el", "Ελένη", "\xC5\xEB\xDD\xED\xE7"},
           {"de", "Größe",
            "Gr\xF6\xDF"
            "e"},
           {"de", "Łódź",
            "\xA3\xF3"
            "d\x9F"},  // The Central European page.
           {"es", "Peña",
            "Pe\xF1"
            "a"},
           {"it", "Nicolò", "Nicol\xF2"},
           {"fr", "Zoë €", "Zo\xEB \x80"},
           {"he", "נועה", "נועה"},
           {"en", "Zoë", "Zoë"},
           {"TR", "Şule", "Şule"},
           {"", "Şule", "Şule"},
           {"tr", "東京", "東京"},
           {"tr", "Ş東", "Ş東"},
           {"tr", "Ş\u200D", "Ş\u200D"},
           {"el", "Ş", "Ş"},
       }) {
    Surroundings surroundings;
    const ReadEntry entry = surroundings.entry(person().firstName(name), language);
    EXPECT_NE(entry.bytes.find("N;CHARSET=UTF-8:;" + written + ";;;\r\n"), std::string::npos) << language << name;
    EXPECT_EQ(entry.name, name + "1.vcf");
  }
}

TEST(ZipCard, EachTextFallsBackByItself) {
  Surroundings surroundings;
  const std::string card = surroundings.entry(person().firstName("Şule").note("東京 Ş"), "tr").bytes;
  EXPECT_NE(card.find(";\xDEule;"), std::string::npos);
  EXPECT_NE(card.find("NOTE;CHARSET=UTF-8:東京 Ş\r\n"), std::string::npos);
}

TEST(ZipCard, QuirkOtherDatesComeAfterTheMessagesWhateverTheirSwitchSays) {
  const PersonRef ada = person()
                            .birthday(1709644029)
                            .date("party", 1709644029)
                            .phone("boat", "1")
                            .entry(kABPersonInstantMessageProperty, "chat", Dictionary{{"service", "ICQ"}})
                            .entry(kABPersonRelatedNamesProperty, "brother", EntryValue(std::string("Byron")));
  const std::string end =
      "item0.TEL;CHARSET=UTF-8:1\r\nitem0.X-ABLabel:boat\r\nORG;CHARSET=UTF-8:;\r\n"
      "item1.X-ICQ;CHARSET=UTF-8:\r\nitem1.X-ABLabel;CHARSET=UTF-8:chat\r\n"
      "item2.X-ABDATE;CHARSET=UTF-8:2024-03-05 13:07:09 +0000\r\nitem2.X-ABLabel:party\r\n"
      "item3.X-ABRELATEDNAMES;CHARSET=UTF-8:Byron\r\nitem3.X-ABLabel:brother\r\nEND:VCARD\r\n\n";
  const std::string start = "BEGIN:VCARD\r\nVERSION:3.0\r\nN;CHARSET=UTF-8:;;;;\r\n";
  Surroundings with;
  EXPECT_EQ(with.entry(ada, "en").bytes, start + "BDAY;CHARSET=UTF-8:2024-03-05\r\n" + end);
  Surroundings without;
  without.preferences.setObject("NO", key::EXPORT_CONF_DATES);
  const ReadEntry entry = without.entry(ada, "en");
  EXPECT_EQ(entry.bytes, start + end);
  EXPECT_EQ(entry.name, "(null)1.vcf");
  EXPECT_EQ(without.oneFileCard(ada).find("X-ABDATE"), std::string::npos);
}

TEST(ZipCard, IsOtherwiseTheCardOfASingleFile) {
  const PersonRef ada = person()
                            .firstName("Ada")
                            .note("tea")
                            .email("x", "a@example.org")
                            .birthday(0)
                            .image("400x100")
                            .address("y", Dictionary{{"City", "Leeds"}});
  Surroundings surroundings;
  const std::string single = surroundings.oneFileCard(ada);
  surroundings.preferences.setInteger(0, key::itemCount);
  EXPECT_EQ(surroundings.entry(ada, "tr").bytes, single);
}

TEST(ZipCard, FailsAsTheArchiveDoes) {
  Surroundings surroundings;
  InMemoryFileSystem disk;
  ManualTaskRunner tasks;
  disk.failCreates = true;
  ZipArchive archive(disk, surroundings.clock, tasks);
  EXPECT_FALSE(archive.CreateZipFile2("zip"));
  EXPECT_EQ(VCFExporter::exportAsZip(archive, person(), "en", std::nullopt, surroundings.services).code(),
            Status::Code::accessDenied);
}

}  // namespace
}  // namespace varnok
