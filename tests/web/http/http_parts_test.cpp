#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "web/http/http_date.h"
#include "web/http/http_dynamic_file_response.h"
#include "web/http/http_guard.h"
#include "web/http/http_range.h"
#include "web/http/http_uri.h"

namespace varnok {

std::ostream& operator<<(std::ostream& os, const HTTPByteRange& range) {
  return os << range.first << "+" << range.length;
}

namespace {

TEST(HTTPDates, AreWrittenAndRead) {
  const std::map<std::int64_t, std::string> rows{{0, "Thu, 01 Jan 1970 00:00:00 GMT"},
                                                 {784111777, "Sun, 06 Nov 1994 08:49:37 GMT"},
                                                 {951782400, "Tue, 29 Feb 2000 00:00:00 GMT"},
                                                 {253402300799, "Fri, 31 Dec 9999 23:59:59 GMT"}};
  for (const auto& [seconds, text] : rows) {
    EXPECT_EQ(httpDate(seconds), text);
    EXPECT_EQ(parseHTTPDate(text), seconds);
  }
  for (const char* text :
       {"", "Mon, 06 Nov 1994 08:49:37 GMT", "Sun, 06 Nov 1994 08:49:37 UTC", "Sun, 06 Nov 1994 08:49:60 GMT",
        "Sun, 31 Feb 1994 08:49:37 GMT", "Sun, 06 Nov 1994 -8:49:37 GMT", "Sun, 06 Xxx 1994 08:49:37 GMT"}) {
    EXPECT_EQ(parseHTTPDate(text), std::nullopt) << text;
  }
}

TEST(HTTPRanges, AreThoseOfTheBody) {
  using Ranges = std::vector<HTTPByteRange>;
  struct Row {
    const char* field;
    std::uint64_t size;
    std::optional<Ranges> ranges;
  };
  const std::optional<Ranges> whole;
  const Row rows[] = {
      {"bytes=0-0", 10, Ranges{{0, 1}}},
      {"bytes=2-", 10, Ranges{{2, 8}}},
      {"bytes=-3", 10, Ranges{{7, 3}}},
      {"bytes=-30", 10, Ranges{{0, 10}}},
      {"bytes=5-99999999999999999999", 10, Ranges{{5, 5}}},
      {"Bytes=0-1 , 4-4", 10, Ranges{{0, 2}, {4, 1}}},
      {"bytes=0-1,20-", 10, Ranges{{0, 2}}},
      {"bytes=10-", 10, Ranges{}},
      {"bytes=-0", 10, Ranges{}},
      {"bytes=0-", 0, Ranges{}},
      {"bytes=0-5,3-9", 10, whole},  // More than there is.
      {"bytes=3-1", 10, whole},
      {"bytes=a-1", 10, whole},
      {"bytes=1", 10, whole},
      {"bytes=-", 10, whole},
      {"bytes=+1-2", 10, whole},
      {"lines=0-1", 10, whole},
  };
  for (const Row& row : rows)
    EXPECT_EQ(parseRangeField(row.field, row.size), row.ranges) << row.field;
  std::string many = "bytes=0-0";
  for (int i = 1; i < 40; ++i)
    many += ",0-0";
  EXPECT_EQ(parseRangeField(many, 1000), std::nullopt);
}

TEST(HTTPURIs, GiveTheirPath) {
  struct Row {
    const char* uri;
    std::optional<std::string> path;
  };
  const Row rows[] = {
      {"/", "/"},
      {"/a%20b?c#d", "/a b"},
      {"/%2e%2E%2f", "/../"},
      {"/\xC3\xA9%C3%A9", "/\xC3\xA9\xC3\xA9"},
      {"http://h:80/a?b", "/a"},
      {"HTTP://h?x", "/"},
      {"/%", std::nullopt},
      {"/%4", std::nullopt},
      {"/%zz", std::nullopt},
      {"/a%00b", std::nullopt},
      {"*", std::nullopt},
      {"h:80", std::nullopt},
      {"", std::nullopt},
  };
  for (const Row& row : rows)
    EXPECT_EQ(decodedPathOfURI(row.uri), row.path) << row.uri;
}

TEST(Paths, CompareWholeComponents) {
  EXPECT_EQ(standardizedPath("//a/./b/../c//"), "/a/c");
  EXPECT_EQ(standardizedPath("/../../x"), "/x");
  EXPECT_EQ(standardizedPath("/a/.."), "/");
  EXPECT_TRUE(isInsideFolder("/web", "/web"));
  EXPECT_TRUE(isInsideFolder("/web/a", "/web"));
  EXPECT_FALSE(isInsideFolder("/webmail/a", "/web"));
  EXPECT_TRUE(isInsideFolder("/a", "/"));
  EXPECT_FALSE(isInsideFolder("/a", ""));
}

HTTPRequest requestWith(HTTPFields fields, int minorVersion = 1, std::string uri = "/") {
  return {"POST", std::move(uri), minorVersion, std::move(fields), "192.168.1.7"};
}

TEST(HTTPGuard, AnswersToItsOwnNamesOnly) {
  const std::vector<std::string> names = hostNamesOf("Kitchen.example.org");
  for (const char* host : {"192.168.1.5", "192.168.1.5:8080", "[::1]", "[fe80::1]:8080", "localhost", "LOCALHOST:1",
                           "kitchen", "kitchen.local:8080", "Kitchen.Example.org"}) {
    EXPECT_TRUE(isForThisHost(requestWith({{"Host", host}}), names)) << host;
  }
  for (const char* host :
       {"", "evil.example", "kitchen.evil.example", "localhost.evil.example", "192.168.1.5.evil.example",
        "192.168.1.5:80@evil", "[::1", "::1", "1", "0x7f.1", "localhost:80x", "localhost:123456"}) {
    EXPECT_FALSE(isForThisHost(requestWith({{"Host", host}}), names)) << host;
  }
  EXPECT_TRUE(isForThisHost(requestWith({}, /*minorVersion=*/0), names));
  EXPECT_FALSE(isForThisHost(requestWith({}), names));
  EXPECT_FALSE(isForThisHost(requestWith({{"Host", "localhost"}}, 1, "http://evil.example/"), names));
  EXPECT_TRUE(isForThisHost(requestWith({{"Host", "localhost"}}, 1, "http://127.0.0.1:8080/"), names));
}

TEST(HTTPGuard, TakesChangesFromItsOwnPagesOnly) {
  const std::pair<std::string, std::string> host{"Host", "192.168.1.5:8080"};
  EXPECT_TRUE(isFromThisSite(requestWith({host})));
  EXPECT_TRUE(isFromThisSite(requestWith({host, {"Sec-Fetch-Site", "none"}})));
  EXPECT_TRUE(isFromThisSite(requestWith({host, {"Sec-Fetch-Site", "same-origin"}})));
  EXPECT_TRUE(isFromThisSite(requestWith({host, {"origin", "http://192.168.1.5:8080"}})));
  EXPECT_FALSE(isFromThisSite(requestWith({host, {"Sec-Fetch-Site", "cross-site"}})));
  EXPECT_FALSE(isFromThisSite(requestWith({host, {"Sec-Fetch-Site", "same-site"}})));
  for (const char* origin : {"null", "", "http://evil.example", "http://192.168.1.5", "http://192.168.1.5:80800",
                             "https://192.168.1.5:8080", "192.168.1.5:8080"}) {
    EXPECT_FALSE(isFromThisSite(requestWith({host, {"Origin", origin}}))) << origin;
  }
  EXPECT_FALSE(isFromThisSite(requestWith({{"Origin", "http://"}})));
}

// The text in blocks of every size, which must not matter.
TEST(MarkerReplacement, DoesNotDependOnTheBlocks) {
  const MarkerReplacer::Replacements table{{"NAME", "Ada & Bob"}, {"EMPTY", ""}, {"LOOP", "%%NAME%%"}};
  const std::pair<std::string, std::string> rows[] = {
      {"", ""},
      {"plain % text", "plain % text"},
      {"<%%NAME%%>", "<Ada & Bob>"},
      {"%%NAME%%%%EMPTY%%%%NAME%%", "Ada & BobAda & Bob"},
      {"%%LOOP%%", "%%NAME%%"},
      {"%%OTHER%%", "%%OTHER%%"},
      {"%%name%%", "%%name%%"},
      {"%%a much longer text than any key%%NAME%%", "%%a much longer text than any key%%NAME%%"},
      {"%%UNKNOWN LONG KEY%%%%NAME%%", "%%UNKNOWN LONG KEY%%Ada & Bob"},
      {"%%%%NAME%%", "%%%%NAME%%"},
      {"a%%%NAME%%", "a%%%NAME%%"},
      {"%%NAME%", "%%NAME%"},
      {"%%NAME", "%%NAME"},
      {"100%%", "100%%"},
      {"%", "%"},
  };
  for (const auto& [text, expected] : rows) {
    for (std::size_t size = 1; size <= text.size() + 1; ++size) {
      MarkerReplacer replacer("%%", table);
      std::string output;
      for (std::size_t at = 0; at < text.size(); at += size)
        replacer.replace(std::string_view(text).substr(at, size), output);
      replacer.finish(output);
      EXPECT_EQ(output, expected) << text << " in blocks of " << size;
    }
  }
}

}  // namespace
}  // namespace varnok
