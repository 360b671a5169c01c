// What the server answers, over a socket, however the request's bytes are cut.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <regex>
#include <string>

#include "web/http/http_server_fixture.h"
#include "web/http/http_static_files.h"

namespace varnok {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

// Every answer begins with these; in the rows "..." stands for them.
const std::string kAlways = "\r\nDate: Tue, 05 Mar 2024 14:07:09 GMT\r\nAccept-Ranges: bytes\r\n";

const std::string kPage =
    "X-Frame-Options: DENY|ETag: TAG|Last-Modified: Sun, 06 Nov 1994 08:49:37 GMT|Cache-Control: no-cache|";

struct Case {
  const char* name;
  std::string request;  // "|" stands for a line end, a last one is added.
  std::string answer;   // The same; entity tags are TAG, boundaries B.

  friend std::ostream& operator<<(std::ostream& os, const Case& c) { return os << c.name; }
};

struct ByName {
  std::string operator()(const ::testing::TestParamInfo<Case>& info) const { return info.param.name; }
};

std::string replaced(std::string text, std::string_view from, std::string_view to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
    text.replace(at, from.size(), to);
  return text;
}

class HTTPAnswers : public HTTPServerFixture, public ::testing::WithParamInterface<Case> {
 protected:
  static std::string normalized(const std::string& answer) {
    static const std::regex tag("\"[0-9a-f]+-[0-9a-f]+-[0-9a-f]+\"");
    static const std::regex boundary("part[0-9]{12,}");
    static const std::regex length("(boundary=B[^]*Content-Length: )[0-9]+");
    const std::string text = std::regex_replace(std::regex_replace(answer, tag, "TAG"), boundary, "B");
    return std::regex_replace(text, length, "$1LENGTH");
  }
};

TEST_P(HTTPAnswers, DoNotDependOnHowTheBytesArrive) {
  start();
  const std::string request = replaced(GetParam().request, "|", "\r\n") + "\r\n";
  const std::string answer = replaced(replaced(GetParam().answer, "...", kAlways), "|", "\r\n");
  EXPECT_EQ(normalized(exchange(request)), answer);
  for (std::size_t cut = 1; cut < request.size(); ++cut) {
    HTTPTestClient client = connect();
    client.send(std::string_view(request).substr(0, cut));
    client.send(std::string_view(request).substr(cut));
    client.finish();
    ASSERT_EQ(normalized(client.receiveAll()), answer) << "cut at " << cut;
  }
}

const std::string kGet = "GET /page.txt HTTP/1.1|Host: localhost|";
const std::string kPost = "POST /echo HTTP/1.1|Host: localhost|";
const std::string kOk = "HTTP/1.1 200 OK...";
const std::string kPageAnswer = kOk + kPage + "Content-Length: 10||0123456789";
const std::string kNotFound = "HTTP/1.1 404 Not Found...Content-Length: 0||";
const std::string kBad = "HTTP/1.1 400 Bad Request...Content-Length: 0|Connection: close||";
const std::string kTooLarge = "HTTP/1.1 413 Content Too Large...Content-Length: 0|Connection: close||";
const std::string kForbidden = "HTTP/1.1 403 Forbidden...Content-Length: 0||";
const std::string kFilled = "Hi Ada, %%OTHER%%.";

INSTANTIATE_TEST_SUITE_P(
    Pages, HTTPAnswers,
    ::testing::Values(
        Case{"IndexInAnOldVersion", "GET / HTTP/1.0|",
             kOk + kPage + "Content-Length: 11|Connection: close||<p>edit</p>"},
        Case{"Page", kGet, kPageAnswer},
        Case{"WholeAddress", "GET http://localhost/page.txt HTTP/1.1|Host: localhost|", kPageAnswer},
        Case{"Head", "HEAD /page.txt HTTP/1.1|Host: localhost|", kOk + kPage + "Content-Length: 10||"},
        Case{"KeptInAnOldVersion", "GET /page.txt HTTP/1.0|Connection: keep-alive|",
             kOk + kPage + "Content-Length: 10|Connection: keep-alive||0123456789"},
        Case{"Closed", kGet + "Connection: close|", kOk + kPage + "Content-Length: 10|Connection: close||0123456789"},
        Case{
            "Style", "GET /style.css HTTP/1.1|Host: localhost|",
            kOk +
                "Content-Type: text/css|ETag: TAG|Last-Modified: Sun, 06 Nov 1994 08:49:37 GMT|Cache-Control: no-cache|"
                "Content-Length: 5||p {}\n"},
        Case{"JSONFile",
             "GET /list.json HTTP/1.1|Host: localhost|If-Modified-Since: Sun, 06 Nov 1994 08:49:37 GMT|If-None-Match: "
             "*|",
             kOk + "Content-Type: application/json|Accept: application/json|X-Content-Type-Options: nosniff|"
                   "Cache-Control: no-store|Content-Length: 2||[]"},
        Case{"JSONData", "GET /json HTTP/1.1|Host: localhost|",
             kOk + "Content-Type: application/json|Accept: application/json|X-Content-Type-Options: nosniff|"
                   "Cache-Control: no-store|Content-Length: 2||{}"},
        Case{"Filled", "GET /filled HTTP/1.1|Host: localhost|Range: bytes=0-1|",
             kOk + "X-Frame-Options: DENY|Transfer-Encoding: chunked||11|Hi Ada, %%OTHER%%|1|.|0||"},
        Case{"FilledHead", "HEAD /filled HTTP/1.1|Host: localhost|",
             kOk + "X-Frame-Options: DENY|Transfer-Encoding: chunked||"},
        Case{"FilledInAnOldVersion", "GET /filled HTTP/1.0|Connection: keep-alive|",
             kOk + "X-Frame-Options: DENY|Connection: close||Hi Ada, %%OTHER%%."},
        Case{"ReadInTheBackground", "GET /async HTTP/1.1|Host: localhost|",
             kOk + "X-Frame-Options: DENY|Content-Length: 10||0123456789"},
        Case{"RedirectWithoutControlCharacters", "GET /moved HTTP/1.1|Host: localhost|",
             "HTTP/1.1 302 Found...Location: /aX: y|X-Frame-Options: DENY|Content-Length: 0||"},
        Case{"LinkWithin", "GET /within.txt HTTP/1.1|Host: localhost|", kPageAnswer},
        Case{"Missing", "GET /no HTTP/1.1|Host: localhost|", kNotFound},
        Case{"DirectoryWithoutIndex", "GET /sub HTTP/1.1|Host: localhost|", kNotFound},
        Case{"LinkThatLeadsOut", "GET /out.txt HTTP/1.1|Host: localhost|", kNotFound},
        Case{"DirectoryThatLeadsOut", "GET /up/secret.txt HTTP/1.1|Host: localhost|", kNotFound},
        Case{"PathThatLeadsOut", "GET /%2e%2e/secret.txt HTTP/1.1|Host: localhost|", kNotFound},
        Case{"FolderWithTheSameBeginning", "GET /../Website.txt HTTP/1.1|Host: localhost|", kNotFound},
        Case{"NotAFile", "GET /pipe HTTP/1.1|Host: localhost|", kNotFound}),
    ByName());

INSTANTIATE_TEST_SUITE_P(
    Parts, HTTPAnswers,
    ::testing::Values(
        Case{"Range", kGet + "Range: bytes=2-4|",
             "HTTP/1.1 206 Partial Content...Content-Range: bytes 2-4/10|" + kPage + "Content-Length: 3||234"},
        Case{"RangeBehindTheEnd", kGet + "Range: bytes=10-|",
             "HTTP/1.1 416 Range Not Satisfiable...Content-Range: bytes */10|Content-Length: 0||"},
        Case{"RangeThatIsNone", kGet + "Range: bytes=x|", kPageAnswer},
        Case{"RangeOfAHead", "HEAD /page.txt HTTP/1.1|Host: localhost|Range: bytes=2-4|",
             kOk + kPage + "Content-Length: 10||"},
        Case{
            "Ranges", kGet + "Range: bytes=0-1,-1|",
            "HTTP/1.1 206 Partial Content...Content-Type: multipart/byteranges; boundary=B|ETag: TAG|Last-Modified: "
            "Sun, 06 Nov "
            "1994 08:49:37 GMT|Cache-Control: no-cache|Content-Length: LENGTH||--B|Content-Range: bytes 0-1/10||01|--B|"
            "Content-Range: bytes 9-9/10||9|--B--|"},
        Case{"RangeOfTheSameFile", kGet + "Range: bytes=2-4|If-Range: Sun, 06 Nov 1994 08:49:37 GMT|",
             "HTTP/1.1 206 Partial Content...Content-Range: bytes 2-4/10|" + kPage + "Content-Length: 3||234"},
        Case{"RangeOfAnotherFile", kGet + "Range: bytes=2-4|If-Range: \"x\"|", kPageAnswer},
        Case{"RangeOfJSON", "GET /json HTTP/1.1|Host: localhost|Range: bytes=1-|If-Range: \"x\"|",
             kOk + "Content-Type: application/json|Accept: application/json|X-Content-Type-Options: nosniff|"
                   "Cache-Control: no-store|Content-Length: 2||{}"},
        Case{"Unchanged", kGet + "If-Modified-Since: Sun, 06 Nov 1994 08:49:37 GMT|",
             "HTTP/1.1 304 Not Modified..." + kPage + "|"},
        Case{"Changed", kGet + "If-Modified-Since: Sun, 06 Nov 1994 08:49:36 GMT|", kPageAnswer},
        Case{"AnyTag", kGet + "If-None-Match: *|", "HTTP/1.1 304 Not Modified..." + kPage + "|"},
        Case{"OtherTagBeforeTheDate", kGet + "If-None-Match: \"x\"|If-Modified-Since: Sun, 06 Nov 1994 08:49:37 GMT|",
             kPageAnswer}),
    ByName());

INSTANTIATE_TEST_SUITE_P(
    Bodies, HTTPAnswers,
    ::testing::Values(
        Case{"Length", kPost + "Content-Length: 3||abc", kOk + "X-Frame-Options: DENY|Content-Length: 3||abc"},
        Case{"Chunks", kPost + "Transfer-Encoding: chunked||2|ab|1|c|0||",
             kOk + "X-Frame-Options: DENY|Content-Length: 3||abc"},
        Case{"None", kPost, kOk + "X-Frame-Options: DENY|Content-Length: 0||"},
        Case{"OneRequestAfterTheOther", kPost + "Content-Length: 3||abc" + kGet + "|" + kPost,
             kOk + "X-Frame-Options: DENY|Content-Length: 3||abc" + kPageAnswer + kOk +
                 "X-Frame-Options: DENY|Content-Length: 0||"},
        Case{"NothingAfterTheLast", kGet + "Connection: close||" + kGet,
             kOk + kPage + "Content-Length: 10|Connection: close||0123456789"},
        Case{"OfAGetIsSkipped", kGet + "Content-Length: 28||GET /style.css HTTP/1.1||x", kPageAnswer},
        Case{"LargerThanTaken", "POST /small HTTP/1.1|Host: localhost|Content-Length: 11||01234567890", kTooLarge},
        Case{"ChunksLargerThanTaken",
             "POST /small HTTP/1.1|Host: localhost|Transfer-Encoding: chunked||b|01234567890|0||", kTooLarge}),
    ByName());

INSTANTIATE_TEST_SUITE_P(
    Refusals, HTTPAnswers,
    ::testing::Values(
        Case{"Put", "PUT /echo HTTP/1.1|Host: localhost|",
             "HTTP/1.1 405 Method Not Allowed...Allow: GET, HEAD, POST|Content-Length: 0||"},
        Case{"PutWithABody", "PUT /echo HTTP/1.1|Host: localhost|Content-Length: 3||abc",
             "HTTP/1.1 405 Method Not Allowed...Allow: GET, HEAD, POST|Content-Length: 0|Connection: close||"},
        Case{"OtherExpectation", kPost + "Expect: tea|",
             "HTTP/1.1 417 Expectation Failed...Content-Length: 0|Connection: close||"},
        Case{"ForeignHost", "GET /page.txt HTTP/1.1|Host: evil.example|", kForbidden},
        Case{"NoHost", "GET /page.txt HTTP/1.1|", kForbidden},
        Case{"ForeignOrigin", kPost + "Origin: http://evil.example|Content-Length: 3||abc",
             "HTTP/1.1 403 Forbidden...Content-Length: 0|Connection: close||"},
        Case{"ForeignPageWithoutOrigin", kPost + "Sec-Fetch-Site: cross-site|",
             "HTTP/1.1 403 Forbidden...Content-Length: 0|Connection: close||"},
        Case{"Malformed", "GET / HTTP/1.1|Host : localhost|", kBad},
        Case{"MalformedAfterAnother", kGet + "|GET|", kPageAnswer + kBad},
        Case{"TwoLengths", kPost + "Content-Length: 3|Content-Length: 4||abc", kBad},
        Case{"LongRequestLine", "GET /" + std::string(8'192, 'x') + " HTTP/1.1|",
             "HTTP/1.1 414 URI Too Long...Content-Length: 0|Connection: close||"}),
    ByName());

// A request refused in the middle of its body gets its answer although the rest
// of the body is on its way.
TEST_F(HTTPAnswers, ReachAClientThatIsStillSending) {
  start();
  HTTPTestClient client = connect();
  client.send("POST /small HTTP/1.1\r\nHost: localhost\r\nContent-Length: 4000000\r\n\r\n");
  client.send(std::string(1'000'000, 'x'));
  EXPECT_THAT(client.receiveUntil("\r\n\r\n"), StartsWith("HTTP/1.1 413"));
}

TEST_F(HTTPAnswers, AskForABodyThatIsHeldBack) {
  start();
  HTTPTestClient client = connect();
  const std::string head =
      "POST /echo HTTP/1.1\r\nHost: localhost\r\nExpect: 100-continue\r\nContent-Length: 3\r\n\r\n";
  client.send(head);
  EXPECT_EQ(client.receiveUntil("\r\n\r\n"), "HTTP/1.1 100 Continue\r\n\r\n");
  client.send("abc");
  EXPECT_THAT(client.receiveUntil("\r\n\r\nabc"), StartsWith("HTTP/1.1 200"));
  client.send("PUT" + head.substr(4));
  EXPECT_THAT(client.receiveAll(), StartsWith("HTTP/1.1 405"));
}

TEST_F(HTTPAnswers, KnowTheEntityTagOfAFile) {
  start();
  const std::string first = get("/page.txt");
  const std::size_t at = first.find("ETag: ") + 6;
  const std::string tag = first.substr(at, first.find("\r\n", at) - at);
  EXPECT_THAT(get("/page.txt", "If-None-Match: \"x\", W/" + tag + "\r\n"), StartsWith("HTTP/1.1 304"));
  EXPECT_THAT(get("/page.txt", "Range: bytes=0-0\r\nIf-Range: " + tag + "\r\n"), StartsWith("HTTP/1.1 206"));
  write("Web/page.txt", "9876543210");
  EXPECT_THAT(get("/page.txt", "If-None-Match: " + tag + "\r\n"), HasSubstr("\r\n\r\n9876543210"));
  EXPECT_THAT(get("/page.txt", "Range: bytes=0-0\r\nIf-Range: " + tag + "\r\n"), StartsWith("HTTP/1.1 200"));
}

// A file in memory is served only as long as it is the one on the disk.
TEST_F(HTTPAnswers, AreNeverOlderThanTheFile) {
  HTTPStaticFiles files(root_ + "/Web", std::chrono::seconds(-1'000'000));
  const std::string path = root_ + "/Web/page.txt";
  const auto inMemory = [](const std::unique_ptr<HTTPResponse>& response) {
    const HTTPBody body = response->body();
    const auto* bytes = std::get_if<std::string_view>(&body);
    return bytes == nullptr ? "on disk" : std::string(*bytes);
  };
  EXPECT_EQ(files.keptResponse(path), nullptr);
  EXPECT_EQ(inMemory(files.response(path)), "0123456789");
  EXPECT_EQ(inMemory(files.keptResponse(path)), "0123456789");
  write("Web/page.txt", "short");
  EXPECT_EQ(files.keptResponse(path), nullptr);
  EXPECT_EQ(inMemory(files.response(path)), "short");
  std::filesystem::remove(path);
  EXPECT_EQ(files.response(path), nullptr);
  EXPECT_EQ(inMemory(HTTPStaticFiles(root_ + "/Web").response(root_ + "/Web/edit.html")), "on disk");
}

}  // namespace
}  // namespace varnok
