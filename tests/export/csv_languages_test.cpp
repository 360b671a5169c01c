// CSV texts in the users' languages, with the real code pages.

#include <gtest/gtest.h>

#include "app/preferences/preference_keys.h"
#include "export/csv_exporter.h"
#include "platform/linux/text/icu_text_codec.h"
#include "platform/testing/fake_clock.h"
#include "platform/testing/fake_image_codec.h"
#include "platform/testing/fake_random_source.h"
#include "platform/testing/fake_services.h"
#include "platform/testing/in_memory_file_system.h"
#include "platform/testing/in_memory_preference_store.h"
#include "support/golden.h"
#include "support/person_builder.h"

namespace varnok {
namespace {

std::string csvOf(const std::vector<PersonRef>& people, const std::string& language, const TextCatalog& texts) {
  InMemoryPreferenceStore preferences;
  preferences.registerDefaults(registeredDefaults());
  const FakeClock clock;
  const FakeImageCodec images;
  const IcuTextCodec codec;
  FakeRandomSource random;
  const ExportServices services{preferences, clock, images, codec, random};
  InMemoryFileSystem disk;
  Status status;
  const auto stream = disk.createAtomic("csv", status);
  EXPECT_TRUE(CSVExporter::exportTitle(*stream, language, texts, services).ok());
  for (const PersonRef& person : people)
    EXPECT_TRUE(CSVExporter::exportPerson(*stream, person, language, services).ok());
  EXPECT_TRUE(stream->commit().ok());
  return disk.files["csv"];
}

// The columns of `person` in a file of `language`, without the header.
std::string rowOf(const PersonRef& person, const std::string& language) {
  const std::string file = csvOf({person}, language, FakeTextCatalog());
  return file.substr(file.find('\r') + 1);
}

TEST(CSVFallback, IsForOneTextAsAWhole) {
  struct Row {
    std::string name;
    std::string language;
    PersonRef person;
    std::string names;  // The name columns, in bytes.
    std::string note;
  };
  const Row rows[] = {
      {"both fit", "tr", person().firstName("ş").note("ı"), ",\xFE,,,,,,,", "\"\xFD\""},
      {"the note does not", "tr", person().firstName("ş").note("ı 東"), ",\xFE,,,,,,,", "\"ı 東\""},
      {"nor does the name", "tr", person().firstName("ş").lastName("東").note("ı"), ",ş,,東,,,,,", "\"\xFD\""},
      {"invisible", "tr", person().firstName("ş\u200D").note("ş\uFE0F"), ",ş\u200D,,,,,,,", "\"ş\uFE0F\""},
      {"malformed", "tr", person().firstName("ş\xFF").note("ş"), ",ş\uFFFD,,,,,,,", "\"\xFE\""},
      {"control characters", "de", person().firstName("ü\x1A\x7F\t"), ",\xFC\x1A\x7F\t,,,,,,,", "\"\""},
      {"Spanish", "es", person().firstName("ñ"), ",\xF1,,,,,,,", "\"\""},
      {"Hebrew", "he", person().firstName("ש"), ",\xF9,,,,,,,", "\"\""},
      {"Greek has no page", "el", person().firstName("Ω"), ",Ω,,,,,,,", "\"\""},
      {"English has no page", "en", person().firstName("é"), ",é,,,,,,,", "\"\""},
      {"languages are in lower case", "TR", person().firstName("ş"), ",ş,,,,,,,", "\"\""},
  };
  for (const Row& row : rows) {
    const std::string text = rowOf(row.person, row.language);
    EXPECT_EQ(printable(text.substr(0, row.names.size())), printable(row.names)) << row.name;
    EXPECT_TRUE(text.ends_with("," + row.note + "\r")) << row.name << ": " << printable(text);
  }
}

TEST(CSVFallback, OfTheHeaderIsForOneGroup) {
  FakeTextCatalog texts;
  texts.texts = {{"Birthday", "ü"}, {"Anniversary", "ö"}, {"Home Page", "東"}, {"Work", "ü"}, {"Note", "ß"}};
  const std::string header = csvOf({}, "de", texts);
  EXPECT_NE(header.find(",\xFC,\xF6,"), std::string::npos);
  EXPECT_NE(header.find(",東,Home,ü,Home,\xFC,\xDF\r"), std::string::npos);
}

}  // namespace
}  // namespace varnok
