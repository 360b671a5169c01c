#include "web/http/http_request_parser.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "web/http/http_exchange.h"

namespace varnok {
namespace {

const std::string kHead = "POST /a HTTP/1.1\r\nHost: h\r\n";

struct Case {
  const char* name;
  std::string raw;
  // "METHOD URI name=value ... | body | keep or close", or a status. Bytes that were
  // not used follow behind "+".
  std::string outcome;

  friend std::ostream& operator<<(std::ostream& os, const Case& c) { return os << c.name; }
};

// Small limits, so that rows reach them.
HTTPLimits smallLimits() {
  HTTPLimits limits;
  limits.requestLine = 40;
  limits.head = 200;
  limits.fields = 4;
  return limits;
}

// `raw` cut into two pieces at `cut`, or byte by byte.
class Reading {
 public:
  explicit Reading(const std::string& raw) : raw_(raw) {}

  std::string cutAt(std::size_t cut) { return outcome({raw_.substr(0, cut), raw_.substr(cut)}); }

  std::string byteByByte() {
    std::vector<std::string> pieces;
    for (const char c : raw_)
      pieces.emplace_back(1, c);
    return outcome(pieces);
  }

 private:
  std::string outcome(const std::vector<std::string>& pieces) {
    HTTPRequestParser parser(smallLimits());
    std::string body;
    std::string waiting;
    for (const std::string& piece : pieces) {
      waiting += piece;
      while (parser.isReading()) {
        const std::size_t used = parser.parse(waiting);
        body += parser.bodyPiece();
        waiting.erase(0, used);
        if (used == 0) break;
      }
    }
    if (parser.state() == HTTPRequestParser::State::failed) return std::to_string(parser.status());
    if (parser.isReading()) return "reading";
    return describe(parser, body) + (waiting.empty() ? "" : "+" + waiting);
  }

  static std::string describe(HTTPRequestParser& parser, const std::string& body) {
    const HTTPRequest& request = parser.request();
    std::string text = request.method + " " + request.uri + (request.minorVersion == 0 ? " 1.0" : "");
    for (const auto& [name, value] : request.fields)
      text.append(" ").append(name).append("=").append(value);
    return text + "|" + body + "|" + (parser.keepAlive() ? "keep" : "close");
  }

  const std::string& raw_;
};

struct ByName {
  std::string operator()(const ::testing::TestParamInfo<Case>& info) const { return info.param.name; }
};

class HTTPRequestHeads : public ::testing::TestWithParam<Case> {};

TEST_P(HTTPRequestHeads, DoNotDependOnHowTheBytesArrive) {
  const Case& c = GetParam();
  Reading reading(c.raw);
  for (std::size_t cut = 0; cut <= c.raw.size(); ++cut)
    ASSERT_EQ(reading.cutAt(cut), c.outcome) << "cut at " << cut;
  EXPECT_EQ(reading.byteByByte(), c.outcome);
}

INSTANTIATE_TEST_SUITE_P(
    , HTTPRequestHeads,
    ::testing::Values(
        Case{"Plain", "GET / HTTP/1.1\r\nHost: h\r\n\r\n", "GET / Host=h||keep"},
        Case{"Close", "GET / HTTP/1.1\r\nConnection: x, Close\r\n\r\n", "GET / Connection=x, Close||close"},
        Case{"OldVersion", "GET / HTTP/1.0\r\n\r\n", "GET / 1.0||close"},
        Case{"OldVersionKept", "GET / HTTP/1.0\r\nConnection: keep-alive\r\n\r\n",
             "GET / 1.0 Connection=keep-alive||keep"},
        Case{"SpaceAroundValues", "GET / HTTP/1.1\r\nA: \t b c\t \r\nB:\r\n\r\n", "GET / A=b c B=||keep"},
        Case{"BytesAboveASCII", "GET /\xC3\xA9 HTTP/1.1\r\nA: \xFF\r\n\r\n", "GET /\xC3\xA9 A=\xFF||keep"},
        Case{"LineEndBefore", "\r\nGET / HTTP/1.1\r\n\r\n", "GET /||keep"},
        Case{"Length", kHead + "Content-Length: 3\r\n\r\nabc", "POST /a Host=h Content-Length=3|abc|keep"},
        Case{"LengthZero", kHead + "Content-Length: 0\r\n\r\n", "POST /a Host=h Content-Length=0||keep"},
        Case{"NextRequestBehind", kHead + "Content-Length: 1\r\n\r\naGET",
             "POST /a Host=h Content-Length=1|a|keep+GET"},
        Case{"Chunked",
             kHead + "Transfer-Encoding: Chunked\r\n\r\n3\r\nabc\r\nA;x=y\r\n0123456789\r\n0\r\nT: u\r\n\r\nG",
             "POST /a Host=h Transfer-Encoding=Chunked|abc0123456789|keep+G"},
        Case{"NoChunks", kHead + "Transfer-Encoding: chunked\r\n\r\n0\r\n\r\n",
             "POST /a Host=h Transfer-Encoding=chunked||keep"},
        Case{"BodyOfGet", "GET / HTTP/1.1\r\nContent-Length: 16\r\n\r\nGET /x HTTP/1.1\n",
             "GET / Content-Length=16|GET /x HTTP/1.1\n|keep"},

        // Two ways to tell where a request ends are none.
        Case{"LengthTwice", kHead + "Content-Length: 3\r\nContent-Length: 3\r\n\r\nabc", "400"},
        Case{"LengthList", kHead + "Content-Length: 3, 3\r\n\r\nabc", "400"},
        Case{"LengthSigned", kHead + "Content-Length: +3\r\n\r\nabc", "400"},
        Case{"LengthNegative", kHead + "Content-Length: -1\r\n\r\n", "400"},
        Case{"LengthHexadecimal", kHead + "Content-Length: 0x3\r\n\r\nabc", "400"},
        Case{"LengthEmpty", kHead + "Content-Length:\r\n\r\n", "400"},
        Case{"LengthTooLarge", kHead + "Content-Length: 18446744073709551616\r\n\r\n", "400"},
        Case{"LengthBesideChunks", kHead + "Content-Length: 3\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n", "400"},
        Case{"ChunksBesideLength", kHead + "Transfer-Encoding: chunked\r\nContent-Length: 3\r\n\r\n0\r\n\r\n", "400"},
        Case{"ChunkedTwice", kHead + "Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n",
             "400"},
        Case{"CodingBeforeChunks", kHead + "Transfer-Encoding: gzip, chunked\r\n\r\n0\r\n\r\n", "400"},
        Case{"CodingUnknown", kHead + "Transfer-Encoding: xchunked\r\n\r\n", "400"},
        Case{"ChunkedInOldVersion", "POST / HTTP/1.0\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n", "400"},
        Case{"ChunkSizeNotHexadecimal", kHead + "Transfer-Encoding: chunked\r\n\r\nx\r\n\r\n", "400"},
        Case{"ChunkSizeTooLarge", kHead + "Transfer-Encoding: chunked\r\n\r\nFFFFFFFFFFFFFFFFF\r\n", "400"},
        Case{"ChunkWithoutItsLineEnd", kHead + "Transfer-Encoding: chunked\r\n\r\n1\r\nabc0\r\n\r\n", "400"},
        Case{"ChunkLineFeedAlone", kHead + "Transfer-Encoding: chunked\r\n\r\n1\na\r\n0\r\n\r\n", "400"},
        Case{"HostTwice", kHead + "host: h\r\n\r\n", "400"},

        // Anything that another program on the way might read differently.
        Case{"LineFeedAlone", "GET / HTTP/1.1\nHost: h\r\n\r\n", "400"},
        Case{"LineFeedAloneInFields", "GET / HTTP/1.1\r\nHost: h\n\r\n", "400"},
        Case{"ReturnAlone", "GET / HTTP/1.1\r\nA: b\rc\r\n\r\n", "400"},
        Case{"NUL", std::string("GET / HTTP/1.1\r\nA: b\0c\r\n\r\n", 26), "400"},
        Case{"ControlInURI", "GET /\x01 HTTP/1.1\r\n\r\n", "400"},
        Case{"BlankBeforeColon", "GET / HTTP/1.1\r\nHost : h\r\n\r\n", "400"},
        Case{"Fold", "GET / HTTP/1.1\r\nA: b\r\n c\r\n\r\n", "400"},
        Case{"FoldOfTheRequestLine", "GET / HTTP/1.1\r\n A: b\r\n\r\n", "400"},
        Case{"NoColon", "GET / HTTP/1.1\r\nHost\r\n\r\n", "400"},
        Case{"EmptyName", "GET / HTTP/1.1\r\n: h\r\n\r\n", "400"}, Case{"NoVersion", "GET /\r\n\r\n", "400"},
        Case{"OtherVersion", "GET / HTTP/2.0\r\n\r\n", "400"}, Case{"TwoSpaces", "GET  / HTTP/1.1\r\n\r\n", "400"},
        Case{"TwoLineEndsBefore", "\r\n\r\nGET / HTTP/1.1\r\n\r\n", "400"},

        Case{"LongestLine", "GET /" + std::string(26, 'x') + " HTTP/1.1\r\n\r\n",
             "GET /" + std::string(26, 'x') + "||keep"},
        Case{"LineTooLong", "GET /" + std::string(27, 'x') + " HTTP/1.1\r\n\r\n", "414"},
        Case{"LineWithoutEnd", "GET /" + std::string(300, 'x'), "414"},
        Case{"MostFields", "GET / HTTP/1.1\r\na:\r\nb:\r\nc:\r\nd:\r\n\r\n", "GET / a= b= c= d=||keep"},
        Case{"TooManyFields", "GET / HTTP/1.1\r\na:\r\nb:\r\nc:\r\nd:\r\ne:\r\n\r\n", "431"},
        Case{"LongestHead", "GET / HTTP/1.1\r\na: " + std::string(177, 'x') + "\r\n\r\n",
             "GET / a=" + std::string(177, 'x') + "||keep"},
        Case{"HeadTooLong", "GET / HTTP/1.1\r\na: " + std::string(178, 'x') + "\r\n\r\n", "431"},
        Case{"HeadWithoutEnd", "GET / HTTP/1.1\r\na: " + std::string(300, 'x'), "431"}),
    ByName());

TEST(HTTPRequestParser, ReadsTheNextRequestAfterAReset) {
  HTTPRequestParser parser(smallLimits());
  const std::string first = kHead + "Content-Length: 1\r\n\r\nx";
  std::string_view bytes = first;
  while (parser.isReading())
    bytes.remove_prefix(parser.parse(bytes));
  parser.reset();
  EXPECT_GT(parser.parse("GET /b HTTP/1.0\r\n\r\n"), 0U);
  EXPECT_EQ(parser.state(), HTTPRequestParser::State::done);
  EXPECT_EQ(parser.request().uri, "/b");
  EXPECT_TRUE(parser.request().fields.empty());
  EXPECT_EQ(parser.bodyLength(), 0U);
}

}  // namespace
}  // namespace varnok
