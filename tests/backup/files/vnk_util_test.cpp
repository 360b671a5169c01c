#include "backup/files/vnk_util.h"

#include <gtest/gtest.h>

#include "backup/files/backup_file.h"
#include "platform/testing/fake_services.h"
#include "platform/testing/in_memory_file_system.h"
#include "platform/utf8.h"

namespace varnok {
namespace {

TEST(VNKUtil, EncodesBASE64) {
  const std::vector<std::pair<std::string, std::string>> kRows{
      {"", ""},
      {"f", "Zg=="},
      {"fo", "Zm8="},
      {"foo", "Zm9v"},
      {"foobar", "Zm9vYmFy"},
      {std::string("\0\xff\xfe", 3), "AP/+"},
      {"\xfb\xff", "+/8="},
  };
  for (const auto& [bytes, text] : kRows)
    EXPECT_EQ(VNKUtil::encodeBASE64(bytes), text);
}

TEST(VNKUtil, ConvertsSizes) {
  EXPECT_EQ(VNKUtil::convertSize(0), "0.00 bytes");
  EXPECT_EQ(VNKUtil::convertSize(1024), "1024.00 bytes");
  EXPECT_EQ(VNKUtil::convertSize(1536), "1.50 KB");
  EXPECT_EQ(VNKUtil::convertSize(1024.0 * 1024 * 1024 * 1024 * 1024 * 2048), "2097152.00 TB");
}

TEST(VNKUtil, PicksAPictureForAFile) {
  for (const auto& [extension, image] : std::vector<std::pair<std::string, std::string>>{
           {"", "folder.png"}, {"VCF", "contact.png"}, {"Jpeg", "picture.png"}, {"xyz", "unknown.png"}})
    EXPECT_EQ(VNKUtil::iconForExtension(extension), image);
}

TEST(VNKUtil, TellsAPhoneOfFourInchesFromOthersAndFromATablet) {
  struct Row {
    bool isPad;
    int screenHeight;
    bool is4InchRetina;
  };
  for (const auto& [isPad, screenHeight, is4InchRetina] :
       {Row{false, 568, true}, Row{false, 567, false}, Row{false, 569, false}, Row{false, 0, false},
        Row{true, 568, false}}) {
    Device device;
    device.isPad = isPad;
    device.screenHeight = screenHeight;
    EXPECT_EQ(VNKUtil::isIpad(device), isPad);
    EXPECT_EQ(VNKUtil::is4InchRetina(device), is4InchRetina) << isPad << " " << screenHeight;
  }
}

TEST(UTF8, MalformedSequencesBecomeReplacementsAndNothingElseChanges) {
  const std::vector<std::pair<std::string, std::string>> kRows{
      {"", ""},
      {"plain text, longer than eight bytes", "plain text, longer than eight bytes"},
      {"Grüße 東京 😀 \xF4\x8F\xBF\xBF", "Grüße 東京 😀 \xF4\x8F\xBF\xBF"},
      {"\x80", "\uFFFD"},
      {"a\xC3", "a\uFFFD"},
      {"a\xC3(", "a\uFFFD("},
      {"\xC0\xAF", "\uFFFD\uFFFD"},                      // An overlong slash.
      {"\xED\xA0\x80z", "\uFFFD\uFFFD\uFFFDz"},          // A surrogate.
      {"\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"},  // Beyond the last character.
      {"\xE6\x9D\xB1\xE4\xBA", "東\uFFFD"},              // Cut in the middle.
      {"12345678\xFF"
       "12345678",
       "12345678\uFFFD12345678"},
  };
  for (const auto& [bytes, text] : kRows) {
    std::string copy;
    EXPECT_EQ(validUTF8(bytes, copy), text);
  }
}

TEST(BackupFile, NamesSayTimeCountAndType) {
  EXPECT_EQ(backupFileName({2024, 3, 5, 14, 7, 9}, 120, "vcf"), "Varnok-2024-03-05-140709-120.vcf");
  EXPECT_EQ(pathExtension("/a.b/c"), "");
  EXPECT_EQ(pathExtension("/a/.vcf"), "");
  EXPECT_EQ(pathExtension("x/y.tar.VCF"), "VCF");
  InMemoryFileSystem files;
  files.files = {{"/d/sub/a.vcf", ""}, {"/d/B.CSV", ""}, {"/e/a.zip", ""}};
  EXPECT_TRUE(hasFileWithExtension(files, "/d", "vcf"));
  EXPECT_FALSE(hasFileWithExtension(files, "/d", "csv"));
  EXPECT_FALSE(hasFileWithExtension(files, "/d", "zip"));
}

}  // namespace
}  // namespace varnok
