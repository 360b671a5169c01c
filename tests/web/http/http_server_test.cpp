// The server among many clients, slow ones, and ones that go away.

#include "web/http/http_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

#include "web/http/http_server_fixture.h"

namespace varnok {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

const std::string kGet = "GET /page.txt HTTP/1.1\r\nHost: localhost\r\n\r\n";
const std::string kUpload = "POST /echo HTTP/1.1\r\nHost: localhost\r\nContent-Length: 100000\r\n\r\n";

std::size_t entriesOf(const char* folder) {
  return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}
std::size_t descriptors() {
  return entriesOf("/proc/self/fd");
}
// A thread that was joined stands here a moment longer.
std::size_t threads() {
  return entriesOf("/proc/self/task");
}

// For things that the server does in its own time.
bool comesTrue(const std::function<bool()>& condition) {
  for (const auto end = steady_clock::now() + std::chrono::seconds(15); steady_clock::now() < end;) {
    if (condition()) return true;
    std::this_thread::sleep_for(milliseconds(2));
  }
  return false;
}

class HTTPServers : public HTTPServerFixture {
 protected:
  // Once, so that what a process makes with its first threads is there.
  HTTPServers() {
    start();
    server_.stop();
  }

  std::string writeLarge() {
    std::string bytes;
    while (bytes.size() < 20'000'000)
      bytes.append(std::to_string(bytes.size())).append(" of a large file ");
    bytes.resize(20'000'000);
    write("Web/large.bin", bytes);
    return bytes;
  }

  void limit(const std::function<void(HTTPLimits&)>& change) {
    HTTPLimits limits;
    change(limits);
    server_.setLimits(limits);
    start();
  }
};

TEST_F(HTTPServers, StartAgainOnTheSameObject) {
  const std::size_t threadsBefore = threads();
  const std::size_t descriptorsBefore = descriptors();
  for (int i = 0; i < 3; ++i) {
    start();
    const std::uint16_t port = server_.listeningPort();
    EXPECT_TRUE(server_.start().ok());  // It is running.
    EXPECT_EQ(server_.listeningPort(), port);
    HTTPTestClient idle = connect();
    idle.send(kGet);
    EXPECT_THAT(idle.receiveUntil("0123456789"), StartsWith("HTTP/1.1 200"));
    HTTPTestClient uploading = connect();
    uploading.send(kUpload + std::string(50'000, 'x'));
    EXPECT_TRUE(comesTrue([&] { return notes_.received == static_cast<std::uint64_t>(50'000 * (i + 1)); }));
    server_.stop();
    EXPECT_TRUE(idle.isClosed());
    EXPECT_EQ(notes_.alive, 0);
    EXPECT_FALSE(HTTPTestClient(port).isConnected());
    EXPECT_EQ(server_.listeningPort(), 0);
  }
  server_.stop();
  EXPECT_TRUE(comesTrue([&] { return threads() == threadsBefore; })) << threads() << " instead of " << threadsBefore;
  EXPECT_EQ(descriptors(), descriptorsBefore);
}

TEST_F(HTTPServers, SayWhyTheyCannotStart) {
  start();
  HTTPServer other(tasks_, clock_);
  other.setBindAddress("127.0.0.1");
  other.setPort(server_.listeningPort());
  EXPECT_EQ(other.start().code(), Status::Code::busy);
  EXPECT_FALSE(other.isRunning());
  server_.stop();
  EXPECT_TRUE(other.start().ok());
  other.stop();
  other.setBindAddress("localhost");
  EXPECT_EQ(other.start().code(), Status::Code::invalidArgument);
  other.setBindAddress("");  // Every interface, also by IPv4.
  ASSERT_TRUE(other.start().ok());
  EXPECT_TRUE(HTTPTestClient(other.listeningPort()).isConnected());
}

TEST_F(HTTPServers, ServeOthersWhileOneHandlerIsBusy) {
  start();
  HTTPTestClient slow = connect();
  slow.send("GET /wait HTTP/1.1\r\nHost: localhost\r\n\r\n");
  notes_.waiting.get_future().wait();
  for (int i = 0; i < 3; ++i)
    EXPECT_THAT(get("/page.txt"), StartsWith("HTTP/1.1 200"));
  EXPECT_THAT(exchange("POST /echo HTTP/1.1\r\nHost: localhost\r\nContent-Length: 3\r\n\r\nabc"),
              HasSubstr("\r\n\r\nabc"));
  notes_.release.set_value();
  EXPECT_THAT(slow.receiveUntil("\r\n\r\n"), StartsWith("HTTP/1.1 404"));
}

TEST_F(HTTPServers, KeepLargeBodiesWhole) {
  const std::string large = writeLarge();
  start();
  const std::string answer = get("/large.bin");
  EXPECT_TRUE(answer.substr(answer.find("\r\n\r\n") + 4) == large);
  HTTPTestClient client = connect();
  std::thread sender([&] {
    client.send("POST /echo HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\nContent-Length: " +
                std::to_string(large.size()) + "\r\n\r\n" + large);
  });
  const std::string echo = client.receiveAll();
  sender.join();
  EXPECT_TRUE(echo.substr(echo.find("\r\n\r\n") + 4) == large);
}

TEST_F(HTTPServers, CutADownloadShortWhenItsFileIs) {
  writeLarge();
  start();
  HTTPTestClient client = connect();
  client.send("GET /large.bin HTTP/1.1\r\nHost: localhost\r\n\r\n");
  std::string received = client.receiveUntil("\r\n\r\n");
  std::filesystem::resize_file(root_ + "/Web/large.bin", 1000);
  received += client.receiveAll();
  EXPECT_LT(received.size(), 20'000'000U);
  EXPECT_THAT(received, HasSubstr("Content-Length: 20000000"));
}

TEST_F(HTTPServers, LogRequests) {
  std::mutex mutex;
  std::vector<std::string> lines;
  server_.setRequestLog([&](const HTTPLogEntry& entry) {
    const std::scoped_lock lock(mutex);
    lines.push_back(entry.peerAddress + " " + entry.method + " " + entry.uri + " " + std::to_string(entry.status) +
                    " " + std::to_string(entry.bytesSent));
  });
  start();
  exchange(kGet + "HEAD /no?x HTTP/1.1\r\nHost: localhost\r\n\r\nnonsense\r\n\r\n");
  server_.stop();
  EXPECT_THAT(lines, ElementsAre("127.0.0.1 GET /page.txt 200 10", "127.0.0.1 HEAD /no?x 404 0", "127.0.0.1   400 0"));
}

// ---- deadlines

TEST_F(HTTPServers, GiveUpOnAHeadThatDoesNotEnd) {
  limit([](HTTPLimits& limits) { limits.wholeHead = milliseconds(200); });
  HTTPTestClient silent = connect();
  HTTPTestClient slow = connect();
  // Each byte comes in time; the head as a whole does not.
  EXPECT_TRUE(comesTrue([&] {
    slow.send("G");
    return slow.hasInput();
  }));
  EXPECT_THAT(slow.receiveAll(), StartsWith("HTTP/1.1 408"));
  EXPECT_TRUE(silent.isClosed());
}

TEST_F(HTTPServers, CloseConnectionsThatAreNotUsed) {
  limit([](HTTPLimits& limits) { limits.idle = milliseconds(100); });
  HTTPTestClient client = connect();
  client.send(kGet);
  client.receiveUntil("0123456789");
  EXPECT_TRUE(client.isClosed());
}

TEST_F(HTTPServers, GiveUpOnABodyThatStops) {
  limit([](HTTPLimits& limits) { limits.betweenBytes = milliseconds(100); });
  HTTPTestClient client = connect();
  client.send(kUpload + "some");
  EXPECT_TRUE(client.isClosed());
  EXPECT_TRUE(comesTrue([&] { return notes_.alive == 0; }));
}

TEST_F(HTTPServers, GiveUpOnABodyThatIsTooSlow) {
  limit([](HTTPLimits& limits) {
    limits.bodyGrace = milliseconds(200);
    limits.bodyRate = 100'000;
  });
  HTTPTestClient client = connect();
  client.send(kUpload);
  EXPECT_TRUE(comesTrue([&] {
    client.send("x");
    std::this_thread::sleep_for(milliseconds(10));
    return server_.numberOfHTTPConnections() == 0;
  }));
}

TEST_F(HTTPServers, GiveUpOnAClientThatDoesNotRead) {
  writeLarge();
  limit([](HTTPLimits& limits) { limits.writeProgress = milliseconds(200); });
  HTTPTestClient client = connect();
  client.send("GET /large.bin HTTP/1.1\r\nHost: localhost\r\n\r\n");
  client.receiveUntil("\r\n\r\n");
  EXPECT_TRUE(comesTrue([&] { return server_.numberOfHTTPConnections() == 0; }));
}

// ---- crowds

// Descriptors for both ends of the connections.
class HTTPCrowds : public HTTPServers {
 protected:
  HTTPCrowds() {
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 4096);
    ::setrlimit(RLIMIT_NOFILE, &limit);
  }

  milliseconds timeOfARequest() {
    const auto begin = steady_clock::now();
    EXPECT_THAT(get("/page.txt"), StartsWith("HTTP/1.1 200"));
    return std::chrono::duration_cast<milliseconds>(steady_clock::now() - begin);
  }
};

TEST_F(HTTPCrowds, SlowClientsDoNotKeepOthersOut) {
  start();
  std::vector<HTTPTestClient> slow;
  for (int i = 0; i < 600; ++i) {
    slow.push_back(connect());
    slow.back().send(i % 2 == 0 ? "GET /page.txt HT" : kUpload + "slow");
  }
  std::vector<milliseconds> times;
  for (int i = 0; i < 9; ++i) {
    times.push_back(timeOfARequest());
    for (HTTPTestClient& client : slow)
      client.send("x");
  }
  std::ranges::sort(times);
  EXPECT_LT(times[4], milliseconds(250));
  EXPECT_LE(server_.numberOfHTTPConnections(), 512U);
}

TEST_F(HTTPCrowds, ThoseWhoWaitLongestMakeRoom) {
  limit([](HTTPLimits& limits) { limits.connections = 3; });
  HTTPTestClient busy = connect();
  busy.send(kUpload + "begun");
  EXPECT_TRUE(comesTrue([&] { return notes_.alive == 1; }));
  std::vector<HTTPTestClient> idle;
  for (int i = 0; i < 3; ++i) {
    idle.push_back(connect());
    idle.back().send(kGet);
    EXPECT_THAT(idle.back().receiveUntil("0123456789"), StartsWith("HTTP/1.1 200"));
  }
  EXPECT_TRUE(idle[0].isClosed());
  for (const std::size_t i : {1U, 2U}) {
    idle[i].send(kGet);
    EXPECT_THAT(idle[i].receiveUntil("0123456789"), StartsWith("HTTP/1.1 200")) << i;
  }
  busy.send(std::string(99'995, 'x'));
  EXPECT_THAT(busy.receiveUntil("\r\n\r\n"), StartsWith("HTTP/1.1 200"));
}

TEST_F(HTTPCrowds, ClientsThatGoAwayLeaveNothingBehind) {
  start();
  get("/page.txt");
  EXPECT_TRUE(comesTrue([&] { return server_.numberOfHTTPConnections() == 0; }));
  const std::size_t before = descriptors();
  const std::string heads[] = {"", "GET", kGet, kUpload, kUpload + "some"};
  for (std::size_t i = 0; i < 3000; ++i) {
    HTTPTestClient client = connect();
    client.send(heads[i % std::size(heads)]);
  }
  EXPECT_TRUE(comesTrue([&] { return server_.numberOfHTTPConnections() == 0; }));
  EXPECT_TRUE(comesTrue([&] { return descriptors() == before; })) << descriptors() << " instead of " << before;
  EXPECT_EQ(notes_.alive, 0);
}

TEST_F(HTTPCrowds, StopUnderLoad) {
  const std::size_t threadsBefore = threads();
  const std::size_t descriptorsBefore = descriptors();
  for (int round = 0; round < 3; ++round) {
    start();
    const std::uint16_t port = server_.listeningPort();
    std::atomic<int> answered = 0;
    std::vector<std::thread> clients;
    clients.reserve(4);
    for (int i = 0; i < 4; ++i) {
      clients.emplace_back([&, i] {
        const std::string request = i % 2 == 0 ? kGet : kUpload + std::string(100'000, 'x');
        for (;;) {
          HTTPTestClient client(port);
          if (!client.isConnected()) return;
          while (client.send(request) && client.receiveUntil("\r\n\r\n").starts_with("HTTP/1.1 200"))
            if (++answered % 5 == 0) break;
        }
      });
    }
    EXPECT_TRUE(comesTrue([&] { return answered >= 50; }));
    server_.stop();
    for (std::thread& client : clients)
      client.join();
    EXPECT_EQ(notes_.alive, 0);
  }
  EXPECT_TRUE(comesTrue([&] { return threads() == threadsBefore; })) << threads() << " instead of " << threadsBefore;
  EXPECT_EQ(descriptors(), descriptorsBefore);
}

}  // namespace
}  // namespace varnok
