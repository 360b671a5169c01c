#include "web/access/upload.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "platform/testing/in_memory_file_system.h"
#include "support/slow_boundary_cut.h"

namespace varnok {
namespace {

using testing::ElementsAre;

const std::string kDisposition = R"(Content-Disposition: form-data; name="f"; filename="a.vcf")";
const std::string kHeader = "--b\r\n" + kDisposition + "\r\nContent-Type: text/x-vcard\r\n\r\n";

TEST(PartHeader, IsReadLineByLine) {
  std::uint64_t start = 0;
  std::vector<std::string> lines;
  const auto scan = scanPartHeader(kHeader + "\r\nfile\r\n\r\n", start, lines);
  EXPECT_TRUE(scan.ended);
  EXPECT_EQ(start, kHeader.size());
  EXPECT_THAT(lines, ElementsAre("--b", kDisposition, "Content-Type: text/x-vcard"));
}

struct ScanCase {
  std::vector<std::string> pieces;
  std::vector<std::string> lines;
  std::string scans;  // Of each piece: "." nothing, "l" lines, "e" the end.
};

TEST(PartHeader, DependsOnItsPieces) {
  for (const auto& [pieces, lines, scans] : {
           ScanCase{{"", "a", "\r", "\n"}, {}, "...."}, ScanCase{{"{\"id\":1}"}, {}, "."},
           ScanCase{{"a\r\n", "b"}, {}, ".."},  // The last two bytes are not looked at.
           ScanCase{{"a\r\nb"}, {"a"}, "l"}, ScanCase{{"a\r\n\r\n"}, {"a"}, "l"}, ScanCase{{"a\r\n\r\nx"}, {"a"}, "e"},
           ScanCase{{"\r\nx"}, {}, "e"},                               // A header without lines.
           ScanCase{{"aaaa\r\nbbbb", "c\r\nd\r\ne"}, {"aaaa"}, "l."},  // A line that would end before it begins.
           ScanCase{{"a\r\nb", "cccc\r\nd"}, {"a", "c"}, "ll"},        // Not put together.
       }) {
    std::uint64_t start = 0;
    std::vector<std::string> found;
    std::string seen;
    for (const std::string& piece : pieces) {
      const auto scan = scanPartHeader(piece, start, found);
      seen += scan.ended ? 'e' : scan.foundLine ? 'l' : '.';
    }
    EXPECT_EQ(seen, scans) << pieces.front();
    EXPECT_EQ(found, lines) << pieces.front();
  }
}

TEST(PartHeader, KeepsFewOfManyLines) {
  std::string piece;
  for (int i = 0; i < 10'000; ++i)
    piece += "x\r\n";
  std::uint64_t start = 0;
  std::vector<std::string> lines;
  EXPECT_TRUE(scanPartHeader(piece, start, lines).foundLine);
  EXPECT_LT(lines.size(), 100U);
}

TEST(UploadedName, IsTheLastPartOfWhatStandsInQuotes) {
  for (const auto& [line, name] : std::map<std::string, std::optional<std::string>>{
           {kDisposition, "a.vcf"},
           {R"(x; filename="")", ""},
           {R"(x; filename="C:\Users\ada\a b.vcf")", "a b.vcf"},
           {R"(x; filename="C:\")", ""},
           {R"(x; filename="a"; filename="b")", "b"},
           {R"(x; filename="a"b")", "a"},
           {R"(x; filename="open)", "open"},
           {R"(x; filename=bare)", std::nullopt},
           {R"(x; name="f")", "f"},
           {"", std::nullopt},
       }) {
    EXPECT_EQ(uploadedFileName(line), name) << line;
  }
}

TEST(StoredName, IsAPlainFileName) {
  const InMemoryFileSystem files;
  const std::string longest(255, 'x');
  for (const std::string& name :
       std::vector<std::string>{"a.vcf", "a b.vcf", "Zoë.vcf", "...", ".hidden", "50%", "%zz", longest}) {
    EXPECT_EQ(storedFileName(name, files), name);
  }
  EXPECT_EQ(storedFileName("a%20b%C3%AB%25", files), "a bë%");
  for (const std::string& name :
       std::vector<std::string>{"", ".", "..", "%2e%2E", "a/b", "..%2fa", "%2fetc%2fpasswd", std::string("a\0b", 3),
                                "a%00.vcf", "a\nb", "a%0d%0aSet-Cookie", "a%7F", "a%C2%85", "a\xFF", "%ff",
                                longest + "x", "records.json", "%72ecords.json", ".part-x"}) {
    EXPECT_EQ(storedFileName(name, files), std::nullopt) << name;
  }
}

// The bytes in pieces of at most `pieceSize`.
std::string cut(const std::string& content, const std::string& boundary, std::size_t pieceSize = 1000) {
  FileEndFinder finder(boundary);
  for (std::size_t at = 0; at < content.size(); at += pieceSize)
    finder.add(std::string(content.substr(at, pieceSize)));
  return content.substr(0, finder.size());
}

TEST(ClosingBoundary, IsCutOff) {
  const std::string end = "\r\n--b--\r\n";
  EXPECT_EQ(cut("file" + end, "--b"), "file");
  EXPECT_EQ(cut("first\r\n--b\r\nContent-Disposition: x\r\n\r\nsubmit" + end, "--b"), "first");
  EXPECT_EQ(cut("a\r\n--b c\r\n--b d" + end, "--b"), "a\r\n--b c");
  EXPECT_EQ(cut("", "--b"), "");
  EXPECT_EQ(cut("no boundary", "--b"), "no boundary");
}

TEST(ClosingBoundary, QuirkAtTheBeginningOfTheFileStays) {
  EXPECT_EQ(cut("\r\n--b--\r\n", "--b"), "\r\n--b--\r\n");
  EXPECT_EQ(cut("x\r\n--b\r\n--b--\r\n", "--b"), "x\r\n--b");
}

// Small alphabets, so that markers are frequent, overlap and touch.
TEST(ClosingBoundary, IsCutAsASlowSearchWouldCutIt) {
  std::mt19937 chance(7);
  const auto text = [&](std::size_t size, std::string_view letters) {
    std::string result(size, ' ');
    for (char& c : result)
      c = letters[chance() % letters.size()];
    return result;
  };
  for (int round = 0; round < 20'000; ++round) {
    const std::string boundary = text(1 + chance() % 4, "\r-a");
    std::string content = text(chance() % 12, "\r\n-a");
    for (int i = 0; i < 4; ++i) {
      if (chance() % 2 == 0) content += "\r\n" + boundary;
      content += text(chance() % 8, "\r\n-a");
    }
    ASSERT_EQ(cut(content, boundary, 1 + chance() % 20), cutSlowly(content, "\r\n" + boundary)) << round;
  }
}

}  // namespace
}  // namespace varnok
