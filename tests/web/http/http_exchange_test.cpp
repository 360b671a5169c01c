#include "web/http/http_exchange.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "web/http/http_data_response.h"

namespace varnok {
namespace {

// Writes down what it is asked.
class RecordingConnection : public HTTPConnection {
 public:
  std::string log;
  std::uint64_t largest = 1'000'000;

  std::uint64_t largestBody(const std::string& /*method*/, const std::string& path) override {
    log += "largest " + path + "\n";
    return largest;
  }
  std::unique_ptr<HTTPResponse> refusal(const HTTPRequest& request) override {
    if (request.uri != "/secret") return nullptr;
    return std::make_unique<HTTPErrorResponse>(401);
  }
  void prepareForBodyWithSize(std::uint64_t size) override { log += "prepare " + std::to_string(size) + "\n"; }
  void processDataChunk(std::string_view chunk) override {
    log += "chunk " + std::to_string(chunk.size()) + "\n";
    multipartData_ += chunk;
  }
  std::unique_ptr<HTTPResponse> httpResponseForMethod(const std::string& method, const std::string& uri) override {
    log += method + " " + uri + " length " + std::to_string(requestContentLength_) + " received " +
           std::to_string(requestContentLengthReceived_) + " kept " + std::to_string(multipartData_.size()) + " from " +
           std::to_string(dataStartIndex_) + (postHeaderOK_ ? " ok" : "") + "\n";
    dataStartIndex_ = 7;
    postHeaderOK_ = true;
    return nullptr;
  }
};

class HTTPExchanges : public ::testing::Test {
 protected:
  // What the connection was asked, then the status.
  std::string run(const std::string& method, const std::string& uri, const std::vector<std::string>& body,
                  std::uint64_t length, HTTPFields fields = {{"Host", "127.0.0.1"}}) {
    connection_.log.clear();
    auto response = exchange_.begin({method, uri, 1, std::move(fields), "127.0.0.1"}, length);
    if (!response) {
      for (const std::string& piece : body) {
        if (!exchange_.receive(piece)) return connection_.log + "too long";
      }
      response = exchange_.finish();
      if (!response) return connection_.log + "none";
    }
    std::string text = connection_.log + std::to_string(response->status());
    for (const auto& [name, value] : response->httpHeaders())
      text.append(" ").append(name).append("=").append(value);
    return text;
  }

  RecordingConnection connection_;
  HTTPExchange exchange_{connection_, std::make_shared<HTTPConfig>(HTTPConfig{.documentRoot = "/web"})};
};

TEST_F(HTTPExchanges, AskInTheirOrderAndResetTheBodyMembersForEachRequest) {
  const std::string post = "largest /a\nprepare 3\nchunk 3\nPOST /a?b length 3 received 3 kept 3 from 0\nnone";
  EXPECT_EQ(run("POST", "/a?b", {"x", "yz"}, 3), post);
  EXPECT_EQ(run("GET", "/", {}, 0), "GET / length 0 received 0 kept 0 from 0\nnone");
  EXPECT_EQ(run("POST", "/a?b", {"xyz"}, 3), post);
  EXPECT_EQ(run("POST", "/", {}, 0), "POST / length 0 received 0 kept 0 from 0\nnone");
}

TEST_F(HTTPExchanges, DeliverNoSmallFirstPiece) {
  const std::string most(16 * 1024 - 1, 'x');
  EXPECT_EQ(run("POST", "/", {most, "y", "z", "zz"}, 16387),
            "largest /\nprepare 16387\nchunk 16384\nchunk 1\nchunk 2\nPOST / length 16387 received 16387 kept 16387 "
            "from 0\nnone");
  EXPECT_EQ(run("POST", "/", {"x", most + "y"}, 16385),
            "largest /\nprepare 16385\nchunk 16385\nPOST / length 16385 received 16385 kept 16385 from 0\nnone");
}

TEST_F(HTTPExchanges, TakeChunkedBodiesOfUnknownLength) {
  EXPECT_EQ(run("POST", "/", {"xy", "z"}, HTTPExchange::kChunked),
            "largest /\nprepare 0\nchunk 3\nPOST / length 3 received 3 kept 3 from 0\nnone");
  connection_.largest = 4;
  EXPECT_EQ(run("POST", "/", {"xyz", "xyz"}, HTTPExchange::kChunked), "largest /\nprepare 0\ntoo long");
}

TEST_F(HTTPExchanges, RefuseBeforeTheBody) {
  EXPECT_EQ(run("PUT", "/a", {}, 3), "405 Allow=GET, HEAD, POST");
  EXPECT_EQ(run("BREW", "/a", {}, 0), "405 Allow=GET, HEAD, POST");
  EXPECT_EQ(run("POST", "/secret", {}, 3), "401");
  EXPECT_EQ(run("POST", "/a", {}, 3, {{"Host", "evil.example"}}), "403");
  EXPECT_EQ(run("POST", "/a", {}, 3, {{"Host", "127.0.0.1"}, {"Origin", "null"}}), "403 Connection=close");
  connection_.largest = 2;
  EXPECT_EQ(run("POST", "/%61/../b", {}, 3), "largest /b\n413");
}

TEST_F(HTTPExchanges, DropTheBodyOfAMethodThatTakesNone) {
  EXPECT_EQ(run("GET", "/", {"GET /x HTTP/1.1\r\n\r\n"}, 19), "GET / length 19 received 19 kept 0 from 0\nnone");
  EXPECT_EQ(run("GET", "/", {}, 64 * 1024 + 1), "413");
}

TEST_F(HTTPExchanges, FilePathsStayInTheDocumentRoot) {
  const auto path = [&](const char* uri) { return connection_.filePathForURI(uri).value_or("none"); };
  run("GET", "/", {}, 0);
  EXPECT_EQ(path("/no%20such.html?x"), "/web/no such.html");
  EXPECT_EQ(path("/a/../b"), "/web/b");
  EXPECT_EQ(path("/../web/b"), "/web/b");
  EXPECT_EQ(path("/../website/b"), "none");
  EXPECT_EQ(path("/%2e%2e/etc/passwd"), "none");
  EXPECT_EQ(path("/a%00"), "none");
  EXPECT_EQ(path("*"), "none");
}

}  // namespace
}  // namespace varnok
