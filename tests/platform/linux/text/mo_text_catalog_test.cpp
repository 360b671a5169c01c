#include "platform/linux/text/mo_text_catalog.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <vector>

#include "platform/linux/text/icu_text_codec.h"
#include "platform/text_key.h"
#include "support/golden.h"

namespace varnok {
namespace {

const std::string kTexts = VARNOK_TEXTS_DIR;

std::unique_ptr<MoTextCatalog> load(const std::vector<std::string>& languages, const std::string& directory = kTexts) {
  return MoTextCatalog::load(directory, languages);
}

TEST(MoTextCatalog, ChoosesTheFirstPreferredLanguageThatThereIs) {
  struct Row {
    std::vector<std::string> languages;
    const char* expected;
  };
  const Row rows[] = {
      {{}, "en"},
      {{"de"}, "de"},
      {{"de_AT.UTF-8"}, "de"},
      {{"de-AT"}, "de"},
      {{"de@euro"}, "de"},
      {{"DE_de"}, "de"},
      {{"ja_JP.UTF-8", "tr_TR.UTF-8", "fr"}, "tr"},
      {{"en_GB.UTF-8", "de"}, "en"},
      {{"C", "de"}, "en"},
      {{"C.UTF-8", "de"}, "en"},
      {{"POSIX", "de"}, "en"},
      {{"iw_IL"}, "he"},
      {{"", "deu", "../texts/de", "xx", "d", "it"}, "it"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(load(row.languages)->language(), row.expected) << testing::PrintToString(row.languages);
  }
}

TEST(MoTextCatalog, UsesThePluralFormsOfEachLanguage) {
  struct Row {
    const char* language;
    std::int64_t count;
    const char* expected;
  };
  const Row rows[] = {
      {"en", 0, "0 contacts"}, {"en", 1, "1 contact"},  {"en", -1, "-1 contact"}, {"de", 1, "1 Kontakt"},
      {"de", 2, "2 Kontakte"}, {"es", 1, "1 contacto"}, {"es", 0, "0 contactos"}, {"fr", 0, "0 contact"},
      {"fr", 1, "1 contact"},  {"fr", 2, "2 contacts"}, {"it", 1, "1 contatto"},  {"it", 7, "7 contatti"},
      {"tr", 1, "1 kişi"},     {"tr", 5, "5 kişi"},     {"el", 1, "1 επαφή"},     {"el", 21, "21 επαφές"},
      {"he", 1, "איש קשר 1"},  {"he", 2, "2 אנשי קשר"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(load({row.language})->formatCount(text_key::BACKUP_LABEL, row.count), row.expected) << row.language;
  }
}

TEST(MoTextCatalog, FileSizeReadsWellWithOneArgumentAndWithTwo) {
  for (const char* language : {"en", "de", "es", "fr", "it", "tr", "el", "he"}) {
    const auto catalog = load({language});
    const std::string both = catalog->format(text_key::FILE_SIZE_MESSAGE, {"1.50", "KB"});
    EXPECT_EQ(catalog->format(text_key::FILE_SIZE_MESSAGE, {"1.50 KB"}), both) << language;
  }
}

class MoTextCatalogOwnFiles : public testing::Test {
 protected:
  void SetUp() override { std::filesystem::create_directories(directory_); }
  void TearDown() override { std::filesystem::remove_all(directory_); }

  void write(const std::string& name, const std::string& bytes) {
    std::ofstream(directory_ + "/" + name, std::ios::binary) << bytes;
  }

  const std::string directory_ =
      testing::TempDir() + "/" + testing::UnitTest::GetInstance()->current_test_info()->name();
};

TEST_F(MoTextCatalogOwnFiles, ADamagedFileGivesNoTexts) {
  write("en.mo", readWholeFile(kTexts + "/en.mo"));
  write("de.mo", readWholeFile(kTexts + "/de.mo").substr(0, 2000));
  std::filesystem::create_directory(directory_ + "/fr.mo");
  const auto catalog = load({"de", "fr"}, directory_);
  EXPECT_EQ(catalog->language(), "en");
  EXPECT_EQ(catalog->text(text_key::SAVE), "Save");
}

TEST_F(MoTextCatalogOwnFiles, FallsBackToEnglishThenToTheKey) {
  // A catalogue that holds a header and nothing else.
  std::string empty("\xde\x12\x04\x95" + std::string(24, '\0'));
  write("en.mo", readWholeFile(kTexts + "/en.mo"));
  write("de.mo", empty);
  const auto catalog = load({"de"}, directory_);
  EXPECT_EQ(catalog->language(), "de");
  EXPECT_EQ(catalog->text(text_key::SAVE), "Save");
  EXPECT_EQ(catalog->formatCount(text_key::BACKUP_LABEL, 1), "1 contact");
  EXPECT_EQ(catalog->text("NO_SUCH_KEY"), "NO_SUCH_KEY");
  EXPECT_EQ(catalog->text(""), "");
}

TEST_F(MoTextCatalogOwnFiles, WithoutAnyFileTheKeysAreTheTexts) {
  const auto catalog = load({"de"}, directory_);
  EXPECT_EQ(catalog->language(), "en");
  EXPECT_EQ(catalog->text(text_key::First_Name), "First Name");
}

// A title that does not fit would turn the whole title row into UTF-8 while the
// rows below it are in the code page; one with a comma would shift its columns.
TEST(Texts, ColumnTitlesFitIntoACSVFileOfTheirLanguage) {
  struct Row {
    const char* language;
    const char* encoding;
  };
  const Row rows[] = {{"de", "windows-1250"}, {"es", "windows-1252"}, {"fr", "windows-1252"}, {"it", "windows-1252"},
                      {"tr", "windows-1254"}, {"el", "windows-1253"}, {"he", "windows-1255"}, {"en", "US-ASCII"}};
  using namespace text_key;
  const std::string_view titles[] = {Prefix,     First_Name, Middle_Name, Last_Name, Suffix,      Organization,
                                     Department, Title,      Nickname,    Birthday,  Anniversary, Mobile,
                                     iPhone,     Work,       Home,        Main,      Home_Fax,    Work_Fax,
                                     Pager,      Other,      Email,       Home_Page, Note};
  const IcuTextCodec codec;
  for (const Row& row : rows) {
    const auto catalog = load({row.language});
    for (const std::string_view key : titles) {
      const std::string title = catalog->text(key);
      EXPECT_TRUE(codec.encode(title, row.encoding)) << row.language << ": " << title;
      EXPECT_EQ(title.find_first_of(",\"\r\n"), std::string::npos) << row.language << ": " << title;
    }
  }
}

}  // namespace
}  // namespace varnok
