#include "backup/files/zip_archive.h"

#include <gtest/gtest.h>

#include <random>

#include "backup/files/backup_file.h"
#include "platform/linux/posix/thread_task_runner.h"
#include "platform/testing/fake_clock.h"
#include "platform/testing/in_memory_file_system.h"
#include "platform/testing/manual_task_runner.h"
#include "support/golden.h"
#include "support/zip_reader.h"

namespace varnok {
namespace {

const std::string kPath = "/docs/a.zip";

struct Card {
  std::string bytes;
  std::string name;
};

// As hard to deflate as photos are.
std::string chanceBytes(std::size_t size) {
  static std::mt19937 chance(7);
  std::string bytes(size, '\0');
  for (char& byte : bytes)
    byte = static_cast<char>(chance());
  return bytes;
}

// Nothing, little, much, and more than may be on its way at once.
std::vector<Card> oddCards() {
  std::vector<Card> cards{{"", "empty.vcf"}, {"x", "one.vcf"}, {chanceBytes(9'000'000), "large.vcf"}};
  for (std::size_t i = 0; i < 3000; ++i)
    cards.push_back({i % 50 == 0 ? chanceBytes(60'000) : std::string(i, 'n'), "Ünal" + std::to_string(i) + ".vcf"});
  return cards;
}

bool writeArchive(FileSystem& files, TaskRunner& tasks, const std::vector<Card>& cards, Status* why = nullptr) {
  const FakeClock clock;
  ZipArchive archive(files, clock, tasks);
  bool written = archive.CreateZipFile2(kPath);
  for (std::size_t i = 0; i < cards.size() && written; ++i)
    written = archive.addData(cards[i].bytes, cards[i].name);
  written = written && archive.CloseZipFile2();
  EXPECT_EQ(written, archive.status().ok());
  if (why != nullptr) *why = archive.status();
  return written;
}

// On the thread that adds, alone.
std::string archiveOf(const std::vector<Card>& cards) {
  InMemoryFileSystem files;
  ManualTaskRunner tasks;
  EXPECT_TRUE(writeArchive(files, tasks, cards));
  tasks.runUntilIdle();  // Workers that come when all is over.
  return files.files[kPath];
}

TEST(ZipArchive, HoldsTheEntriesInOrder) {
  const std::vector<Card> cards = oddCards();
  const std::vector<ReadEntry> entries = readZip(archiveOf(cards));
  ASSERT_EQ(entries.size(), cards.size());
  for (std::size_t i = 0; i < cards.size(); ++i) {
    ASSERT_EQ(entries[i].bytes, cards[i].bytes) << i;
    ASSERT_EQ(entries[i].name, cards[i].name);
    ASSERT_EQ(entries[i].flags, 0x800U);  // The name is UTF-8.
  }
}

std::string bytesOf(std::string_view hex) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 3)
    bytes += static_cast<char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16));
  return bytes;
}

TEST(ZipArchive, IsTheseBytes) {
  const std::string description = bytesOf("14 00 00 08 08 00 ") +  // Version 2.0, UTF-8 name, deflated.
                                  bytesOf("0d 27 e7 65 ") +        // 1709647629, the seconds of the clock.
                                  bytesOf("00 00 00 00 05 00 00 00 00 00 00 00 ") +  // Checksum; five bytes for none.
                                  bytesOf("05 00 00 00 ");                           // Of the name; nothing extra.
  const std::string entry = "PK\3\4" + description + "a.vcf" + bytesOf("01 00 00 ff ff ");  // One stored block.
  const std::string directory = "PK\1\2" + bytesOf("14 03 ") + description +                // Made on a Unix.
                                bytesOf("00 00 00 00 00 00 ") +                 // No comment, first disk, not a text.
                                bytesOf("00 00 a4 81 00 00 00 00 ") + "a.vcf";  // A file of mode 0644, at the start.
  const std::string end = "PK\5\6" + bytesOf("00 00 00 00 01 00 01 00 33 00 00 00 28 00 00 00 00 00 ");
  EXPECT_EQ(printable(archiveOf({{"", "a.vcf"}})), printable(entry + directory + end));
}

TEST(ZipArchive, QuirkTheDateWordHoldsSecondsSince1970) {
  const std::string archive = archiveOf({{"x", "a.vcf"}});
  EXPECT_EQ(readZip(archive)[0].dateTime, 1709647629U);
  const std::size_t directory = archive.find("PK\1\2");
  EXPECT_EQ(numberAt(archive, directory + 12, 4), 1709647629U);
}

TEST(ZipArchive, ManyThreadsWriteWhatOneWrites) {
  const std::vector<Card> cards = oddCards();
  const std::string alone = archiveOf(cards);
  for (int round = 0; round < 3; ++round) {
    InMemoryFileSystem files;
    ThreadTaskRunner tasks;
    ASSERT_TRUE(writeArchive(files, tasks, cards));
    ASSERT_TRUE(files.files[kPath] == alone);
  }
}

TEST(ZipArchive, AFullDiskAtAnyByteLeavesNothing) {
  const std::vector<Card> cards{{"one", "1.vcf"}, {"", "2.vcf"}, {std::string(300, 'x'), "3.vcf"}};
  const std::size_t size = archiveOf(cards).size();
  for (std::size_t room = 0; room <= size; ++room) {
    InMemoryFileSystem files;
    ManualTaskRunner tasks;
    Status why;
    files.failAppendsAfter(room);
    ASSERT_EQ(writeArchive(files, tasks, cards, &why), room == size) << room;
    ASSERT_EQ(files.files.size(), room == size ? 1U : 0U) << room;
    ASSERT_EQ(files.filesOnTheirWay, 0);
    ASSERT_EQ(why.code(), room == size ? Status::Code::ok : Status::Code::noSpace);
  }
}

TEST(ZipArchive, OtherFailuresAreSaidToo) {
  const std::vector<Card> cards{{"one", "1.vcf"}};
  ManualTaskRunner tasks;
  InMemoryFileSystem files;
  Status why;
  files.failCommits = true;
  EXPECT_FALSE(writeArchive(files, tasks, cards, &why));
  EXPECT_EQ(why.code(), Status::Code::inputOutput);
  files.failCreates = true;
  EXPECT_FALSE(writeArchive(files, tasks, cards, &why));
  EXPECT_EQ(why.code(), Status::Code::accessDenied);
  const FakeClock clock;
  ZipArchive neverMade(files, clock, tasks);
  EXPECT_FALSE(neverMade.addData("x", "x.vcf"));
  EXPECT_FALSE(neverMade.CloseZipFile2());
  EXPECT_EQ(neverMade.status().code(), Status::Code::invalidArgument);
}

// Entries are written while others are added, whether anybody helps or not.
TEST(ZipArchive, HoldsOnlySoMuchInMemory) {
  const FakeClock clock;
  struct Row {
    std::size_t entrySize;
    int mostAccepted;
  };
  for (const auto& [entrySize, mostAccepted] : {Row{1U << 20U, 8}, Row{1, 1024}}) {
    ManualTaskRunner tasks;
    InMemoryFileSystem files;
    files.failAppendsAfter(0);
    ZipArchive archive(files, clock, tasks);
    ASSERT_TRUE(archive.CreateZipFile2(kPath));
    int accepted = 0;
    while (archive.addData(std::string(entrySize, 'x'), "x.vcf") && accepted <= mostAccepted)
      ++accepted;
    EXPECT_LT(accepted, mostAccepted + 1);
    EXPECT_EQ(files.filesOnTheirWay, 0);  // Given up at once.
  }
}

TEST(ZipArchive, IsGivenUpWhileOthersDeflate) {
  InMemoryFileSystem files;
  ThreadTaskRunner tasks;
  const FakeClock clock;
  const std::string photo = chanceBytes(40'000);
  for (int round = 0; round < 50; ++round) {
    ZipArchive archive(files, clock, tasks);
    ASSERT_TRUE(archive.CreateZipFile2(kPath));
    for (int i = 0; i < 10 + round; ++i)
      ASSERT_TRUE(archive.addData(photo, "x.vcf"));
    if (round % 2 == 0) continue;
    files.failAppendsAfter(100);
    EXPECT_FALSE(archive.CloseZipFile2());
    files.failAppendsAfter(1U << 30U);
  }
  EXPECT_TRUE(files.files.empty());
  EXPECT_EQ(files.filesOnTheirWay, 0);
}

// What the records at the end of an archive of `count` entries say.
struct End {
  std::uint64_t entries = 0;
  bool zip64 = false;
  std::uint64_t zip64Entries = 0;
};

End endOf(const std::string& archive) {
  const std::size_t end = archive.size() - 22;
  const std::size_t locator = end - 20;
  End result{numberAt(archive, end + 10, 2), archive.substr(locator, 4) == "PK\6\7"};
  if (!result.zip64) return result;
  const auto record = static_cast<std::size_t>(numberAt(archive, locator + 8, 8));
  EXPECT_EQ(record, locator - 56);
  EXPECT_EQ(archive.substr(record, 4), "PK\6\6");
  result.zip64Entries = numberAt(archive, record + 32, 8);
  // The directory ends where the record begins, and begins with an entry.
  EXPECT_EQ(numberAt(archive, record + 40, 8) + numberAt(archive, record + 48, 8), record);
  EXPECT_EQ(archive.substr(static_cast<std::size_t>(numberAt(archive, record + 48, 8)), 4), "PK\1\2");
  return result;
}

TEST(ZipArchive, CountsMoreEntriesThanAPlainZipHoldsInZip64Records) {
  std::vector<Card> cards(65'534, Card{"x", "x.vcf"});
  End end = endOf(archiveOf(cards));
  EXPECT_EQ(end.entries, 65'534U);
  EXPECT_FALSE(end.zip64);
  cards.emplace_back(cards.front());
  end = endOf(archiveOf(cards));
  EXPECT_EQ(end.entries, 0xFFFFU);
  EXPECT_EQ(end.zip64Entries, 65'535U);
  cards.resize(70'000, cards.front());
  end = endOf(archiveOf(cards));
  EXPECT_EQ(end.entries, 0xFFFFU);
  EXPECT_EQ(end.zip64Entries, 70'000U);
}

TEST(ZipEntryName, IsSafeToExtract) {
  struct Row {
    std::optional<std::string> name;
    std::uint32_t number;
    std::string expected;
  };
  const std::string large(300, 'a');
  const std::string wide = [] {
    std::string text;
    while (text.size() < 300)
      text += "東";
    return text;
  }();
  for (const auto& [name, number, expected] : std::vector<Row>{
           {"Ada Ünal", 7, "Ada Ünal7.vcf"},
           {std::nullopt, 7, "(null)7.vcf"},
           {"a", 100'000'000, "a0.vcf"},
           {"a", 4'294'967'295, "a94967295.vcf"},
           {"../../etc/passwd", 1, ".._.._etc_passwd1.vcf"},
           {"C:\\a\r\nb\x7F", 1, "C:_a__b_1.vcf"},
           {std::string("a\0b", 3), 1, "a_b1.vcf"},
           {"a\u0080b\u009Fc\u00A0d", 1, "a_b_c\u00A0d1.vcf"},
           {"a\xFF/", 1, "a\uFFFD_1.vcf"},
           {large, 99'999'999, large.substr(0, 243) + "99999999.vcf"},
           {"a" + wide, 1, "a" + wide.substr(0, 240) + "1.vcf"},
       }) {
    EXPECT_EQ(zipEntryName(name, number), expected);
    EXPECT_LE(expected.size(), 255U);
  }
}

}  // namespace
}  // namespace varnok
