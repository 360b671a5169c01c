#include "platform/linux/text/mo_file.h"

#include <gtest/gtest.h>

#include <functional>
#include <utility>
#include <vector>

#include "support/golden.h"

namespace varnok {
namespace {

using namespace std::string_literals;

using Texts = std::vector<std::pair<std::string, std::string>>;

constexpr std::size_t kOriginals = 28;

void putWord(std::string& bytes, std::size_t offset, std::uint32_t value, bool bigEndian = false) {
  for (std::size_t i = 0; i < 4; ++i) {
    bytes[offset + (bigEndian ? 3 - i : i)] = static_cast<char>(value >> (8 * i) & 0xFF);
  }
}

// `texts` sorted by key, as the format wants them.
std::string moBytes(const Texts& texts, bool bigEndian = false) {
  const std::size_t translations = kOriginals + texts.size() * 8;
  std::string bytes(translations + texts.size() * 8, '\0');
  const auto put = [&](std::size_t offset, std::size_t value) {
    putWord(bytes, offset, static_cast<std::uint32_t>(value), bigEndian);
  };
  const auto append = [&](std::size_t pair, const std::string& text) {
    put(pair, text.size());
    put(pair + 4, bytes.size());
    bytes += text + '\0';
  };
  put(0, 0x950412de);
  put(8, texts.size());
  put(12, kOriginals);
  put(16, translations);
  for (std::size_t i = 0; i < texts.size(); ++i)
    append(kOriginals + i * 8, texts[i].first);
  for (std::size_t i = 0; i < texts.size(); ++i)
    append(translations + i * 8, texts[i].second);
  return bytes;
}

const Texts kTexts{
    {"", "Language: xx\nPlural-Forms: nplurals=3; plural=n==1 ? 0 : n==2 ? 1 : 2;\n"},
    {"A", "first"},
    {"B\0B"s, "one\0two\0many"s},
    {"C", ""},
};

std::string found(const MoFile& file, std::string_view key, std::optional<std::uint64_t> count = std::nullopt) {
  return std::string(file.find(key, count).value_or("(none)"));
}

TEST(MoFile, ReadsBothByteOrders) {
  for (const bool bigEndian : {false, true}) {
    SCOPED_TRACE(bigEndian);
    const std::optional<MoFile> file = MoFile::parse(moBytes(kTexts, bigEndian));
    ASSERT_TRUE(file);
    EXPECT_EQ(found(*file, "A"), "first");
    EXPECT_EQ(found(*file, "B"), "one");
    EXPECT_EQ(found(*file, "B", 2), "two");
    EXPECT_EQ(found(*file, "B", 0), "many");
    EXPECT_EQ(found(*file, "A", 2), "first") << "a text without plural forms has one for every count";
    EXPECT_EQ(found(*file, "C"), "(none)") << "an empty text is none";
    EXPECT_EQ(found(*file, ""), "(none)") << "the header is no text";
    EXPECT_EQ(found(*file, "AA"), "(none)");
    EXPECT_EQ(found(*file, "B\0B"s), "(none)");
  }
}

TEST(MoFile, TakesTheCommonPluralRuleWhenTheHeaderHasNone) {
  for (const char* header : {"Language: xx\n", "X: y\nPlural-Forms: nplurals=2; plural=n+;\n"}) {
    const std::optional<MoFile> file = MoFile::parse(moBytes({{"", header}, {"B", "one\0many"s}}));
    ASSERT_TRUE(file);
    EXPECT_EQ(found(*file, "B", 1), "one") << header;
    EXPECT_EQ(found(*file, "B", 0), "many") << header;
  }
}

TEST(MoFile, RefusesWhatIsNoCatalogue) {
  const std::size_t translations = kOriginals + kTexts.size() * 8;
  struct Row {
    const char* name;
    std::function<void(std::string&)> damage;
  };
  const Row rows[] = {
      {"empty", [](std::string& bytes) { bytes.clear(); }},
      {"other magic", [](std::string& bytes) { putWord(bytes, 0, 0x950412df); }},
      {"unknown major revision", [](std::string& bytes) { putWord(bytes, 4, 2U << 16); }},
      {"more texts than the file has room for", [](std::string& bytes) { putWord(bytes, 8, 0xFFFFFFFF); }},
      {"table of originals outside", [](std::string& bytes) { putWord(bytes, 12, 0xFFFFFFF0); }},
      {"table of translations outside",
       [](std::string& bytes) { putWord(bytes, 16, static_cast<std::uint32_t>(bytes.size() - 31)); }},
      {"original outside", [](std::string& bytes) { putWord(bytes, kOriginals + 12, 0xFFFFFFFF); }},
      {"length beyond the end", [=](std::string& bytes) { putWord(bytes, translations + 8, 0xFFFFFFFF); }},
      {"no NUL after a text", [=](std::string& bytes) { putWord(bytes, translations + 8, 2); }},
      {"last NUL missing", [](std::string& bytes) { bytes.pop_back(); }},
      {"not sorted", [](std::string& bytes) { bytes[bytes.find("A\0"s)] = 'Z'; }},
  };
  for (const Row& row : rows) {
    std::string bytes = moBytes(kTexts);
    row.damage(bytes);
    EXPECT_FALSE(MoFile::parse(std::move(bytes))) << row.name;
  }
}

TEST(MoFile, RefusesEveryTruncationOfARealOne) {
  const std::string whole = readWholeFile(VARNOK_TEXTS_DIR "/de.mo");
  ASSERT_TRUE(MoFile::parse(whole));
  for (std::size_t size = 0; size < whole.size(); ++size) {
    ASSERT_FALSE(MoFile::parse(whole.substr(0, size))) << size << " bytes";
  }
}

// The sanitizers are the judges: whatever still parses must stay inside the file.
TEST(MoFile, StaysInsideAFileWithAnyWrongByteInItsTables) {
  const std::string whole = readWholeFile(VARNOK_TEXTS_DIR "/el.mo");
  const std::size_t tables = 28 + std::size_t{16} * static_cast<unsigned char>(whole[8]);
  for (std::size_t offset = 0; offset < tables; ++offset) {
    for (const char wrong : {'\x00', '\x01', '\x7F', '\xFF'}) {
      std::string bytes = whole;
      bytes[offset] = wrong;
      const std::optional<MoFile> file = MoFile::parse(std::move(bytes));
      if (!file) continue;
      for (const char* key : {"ABOUT", "BACKUP_LABEL", "vcf", "zzz"}) {
        EXPECT_LT(found(*file, key, 1).size(), whole.size());
      }
    }
  }
}

}  // namespace
}  // namespace varnok
