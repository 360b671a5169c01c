// A server on loopback with a document root of its own, and handlers that tests
// can look into.

#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <string_view>

#include "platform/linux/posix/thread_task_runner.h"
#include "platform/testing/fake_clock.h"
#include "web/http/http_async_file_response.h"
#include "web/http/http_data_response.h"
#include "web/http/http_dynamic_file_response.h"
#include "web/http/http_file_response.h"
#include "web/http/http_redirect_response.h"
#include "web/http/http_server.h"
#include "web/http/http_test_client.h"

namespace varnok {

// What the handlers of one server share.
struct HandlerNotes {
  std::atomic<int> alive = 0;
  std::atomic<std::uint64_t> received = 0;  // Body bytes, of all.
  std::promise<void> release;               // Lets the requests for /wait go on.
  std::shared_future<void> released = release.get_future().share();
  std::promise<void> waiting;  // One of them has begun to wait.
};

class NotingConnection : public HTTPConnection {
 public:
  NotingConnection(HandlerNotes& notes, std::string root) : notes_(notes), root_(std::move(root)) { ++notes_.alive; }
  ~NotingConnection() override { --notes_.alive; }

  std::uint64_t largestBody(const std::string& /*method*/, const std::string& path) override {
    return path == "/small" ? 10 : UINT64_MAX;
  }
  bool mayTakeLong(const std::string& method, const std::string& path) override {
    return path == "/wait" || HTTPConnection::mayTakeLong(method, path);
  }
  void processDataChunk(std::string_view chunk) override {
    multipartData_ += chunk;
    notes_.received += chunk.size();
  }
  std::unique_ptr<HTTPResponse> httpResponseForMethod(const std::string& method, const std::string& uri) override {
    if (uri == "/echo") return std::make_unique<HTTPDataResponse>(multipartData_);
    if (uri == "/json") return std::make_unique<HTTPDataResponse>("{}", /*isJSON=*/true);
    if (uri == "/moved") return std::make_unique<HTTPRedirectResponse>("/a\r\nX: y");
    if (uri == "/async") return std::make_unique<HTTPAsyncFileResponse>(root_ + "/page.txt");
    if (uri == "/filled") {
      return std::make_unique<HTTPDynamicFileResponse>(root_ + "/filled.txt", "%%",
                                                       MarkerReplacer::Replacements{{"NAME", "Ada"}});
    }
    if (uri == "/wait") {
      notes_.waiting.set_value();
      notes_.released.wait();
    }
    return HTTPConnection::httpResponseForMethod(method, uri);
  }

 private:
  HandlerNotes& notes_;
  const std::string root_;
};

class HTTPServerFixture : public ::testing::Test {
 protected:
  HTTPServerFixture() {
    std::string folder = (std::filesystem::temp_directory_path() / "varnok-http-XXXXXX").string();
    root_ = ::mkdtemp(folder.data());
    std::filesystem::create_directories(root_ + "/Web/sub");
    write("Web/edit.html", "<p>edit</p>");
    write("Web/page.txt", "0123456789");
    write("Web/style.css", "p {}\n");
    write("Web/list.json", "[]");
    write("Web/filled.txt", "Hi %%NAME%%, %%OTHER%%.");
    write("secret.txt", "secret");
    write("Website.txt", "secret");
    std::filesystem::create_symlink("../secret.txt", root_ + "/Web/out.txt");
    std::filesystem::create_symlink("..", root_ + "/Web/up");
    std::filesystem::create_symlink("page.txt", root_ + "/Web/within.txt");
    ::mkfifo((root_ + "/Web/pipe").c_str(), 0600);
    server_.setDocumentRoot(root_ + "/Web/");
    server_.setBindAddress("127.0.0.1");
    server_.setConnectionClass([this] { return std::make_unique<NotingConnection>(notes_, root_ + "/Web"); });
  }

  ~HTTPServerFixture() override {
    server_.stop();
    std::filesystem::remove_all(root_);
  }

  void write(const std::string& name, const std::string& text) {
    std::ofstream(root_ + "/" + name) << text;
    std::filesystem::last_write_time(root_ + "/" + name, std::filesystem::file_time_type::clock::from_sys(kModified));
  }

  void start() {
    const Status status = server_.start();
    ASSERT_TRUE(status.ok()) << status.message();
  }

  HTTPTestClient connect() const { return HTTPTestClient(server_.listeningPort()); }

  // Everything that the server sends until it closes; the client sends no more
  // than `raw`.
  std::string exchange(std::string_view raw) const {
    HTTPTestClient client = connect();
    client.send(raw);
    client.finish();
    return client.receiveAll();
  }

  // The answer to one request on a connection of its own, without the fields
  // that every answer has.
  std::string get(const std::string& uri, const std::string& fields = "") const {
    return exchange("GET " + uri + " HTTP/1.1\r\nHost: localhost\r\n" + fields + "\r\n");
  }

  static constexpr std::chrono::sys_seconds kModified{std::chrono::seconds(784111777)};

  HandlerNotes notes_;
  std::string root_;
  ThreadTaskRunner tasks_;
  FakeClock clock_;
  HTTPServer server_{tasks_, clock_};
};

}  // namespace varnok
