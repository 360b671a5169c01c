#include "web/access/web_access.h"

#include <gtest/gtest.h>

#include <thread>

#include "app/preferences/preference_keys.h"
#include "contacts/testing/in_memory_contact_store.h"
#include "platform/linux/posix/thread_task_runner.h"
#include "platform/testing/fake_clock.h"
#include "platform/testing/fake_image_codec.h"
#include "platform/testing/fake_random_source.h"
#include "platform/testing/fake_services.h"
#include "platform/testing/in_memory_file_system.h"
#include "platform/testing/in_memory_preference_store.h"

namespace varnok {
namespace {

// The server is a real one; it listens on the loopback interface alone.
class WebAccessTest : public testing::Test {
 protected:
  WebAccessTest() {
    files_.files["/docs/old/backup.vcf"] = "";
    preferences_.setObject("lo", key::WEB_INTERFACE);
    // A port that was free a moment ago.
    WebServer probe(services_);
    EXPECT_TRUE(probe.start(0).ok());
    port_ = probe.port();
    url_ = "[http://127.0.0.1:" + std::to_string(port_);
  }

  WebAccess& access() {
    if (access_ == nullptr)
      access_ = std::make_unique<WebAccess>(
          services_, [this] { ++changes_; }, port_);
    return *access_;
  }

  // The network is now like this, and the monitor has said so.
  void network(NetworkStatus status, std::vector<NetworkInterface> interfaces) {
    network_.status = status;
    network_.listed = std::move(interfaces);
    std::jthread([this] { network_.changed(); }).join();
    bool arrived = false;
    tasks_.mainThread([&arrived] { arrived = true; });
    tasks_.runUntil([&arrived] { return arrived; });
  }

  std::string state() {
    const auto& [on, enabled] = access().serverSwitch();
    return std::string(on ? "on" : "off") + (enabled ? "" : " disabled") + " [" + access().addressRow() + "]";
  }

  InMemoryPreferenceStore preferences_;
  InMemoryContactStoreProvider contacts_;
  InMemoryFileSystem files_;
  FakeTextCatalog texts_;
  FakeImageCodec images_;
  FakeClock clock_;
  FakeRandomSource random_;
  ThreadTaskRunner tasks_;
  NotificationCenter notifications_;
  FakeIdleTimer idleTimer_;
  FakeNetworkMonitor network_;
  FakeDeveloperLog log_;
  WebServices services_{preferences_, contacts_,      files_,     texts_,   images_, clock_,  random_,
                        tasks_,       notifications_, idleTimer_, network_, log_,    "/docs", "/nonexistent/Web"};
  std::uint16_t port_ = 0;
  std::string url_;
  int changes_ = 0;
  std::unique_ptr<WebAccess> access_;
};

const std::vector<NetworkInterface> kWiFi{{"lo", "127.0.0.1"}, {"en0", "10.0.0.1"}, {"en0", "10.0.0.2"}};

TEST_F(WebAccessTest, TheLastAddressOfTheInterfaceCounts) {
  network_.listed = kWiFi;
  EXPECT_EQ(access().getIPAddress(), "10.0.0.2");
  network_.listed = {{"en1", "10.0.0.1"}, {"en00", "10.0.0.1"}};
  EXPECT_EQ(access().getIPAddress(), std::nullopt);
}

TEST_F(WebAccessTest, TheSwitchNeedsAnAddressAndABackup) {
  EXPECT_EQ(state(), "off []");
  for (const auto& [file, enabled] : std::map<std::string, bool>{
           {"/docs/a.zip", true}, {"/docs/a.csv", false}, {"/docs/a.VCF", false}, {"/docs/vcf", false}}) {
    files_.files = {{file, ""}};
    access().refreshSwitch();
    EXPECT_EQ(access().serverSwitch().enabled, enabled) << file;
  }
  files_.files = {{"/docs/a.vcf", ""}};
  network_.listed.clear();
  access().refreshSwitch();
  EXPECT_FALSE(access().serverSwitch().enabled);
}

TEST_F(WebAccessTest, FollowsItsSwitch) {
  access().serverEvent(true);
  EXPECT_EQ(state(), "on " + url_ + "]");
  EXPECT_EQ(idleTimer_.log, "awake ");
  access().serverEvent(true);
  access().serverEvent(false);
  EXPECT_EQ(state(), "off []");
  EXPECT_EQ(idleTimer_.log, "awake awake awake sleepy ");
  access().serverEvent(true);
  EXPECT_EQ(state(), "on " + url_ + "]");
  EXPECT_EQ(changes_, 4);
  EXPECT_TRUE(log_.lines.empty());
}

TEST_F(WebAccessTest, QuirkShowsTheAddressAlsoWhenThePortIsTaken) {
  WebServer other(services_);
  ASSERT_TRUE(other.start(port_).ok());
  access().serverEvent(true);
  EXPECT_EQ(state(), "on " + url_ + "]");
  EXPECT_EQ(log_.lines.size(), 1U);
  other.stop();
  access().serverEvent(true);
  EXPECT_EQ(log_.lines.size(), 1U);
}

TEST_F(WebAccessTest, GoesOffWithTheNetwork) {
  access().serverEvent(true);
  network(NetworkStatus::reachableViaWiFi, kWiFi);
  EXPECT_EQ(state(), "on " + url_ + "]");
  network(NetworkStatus::reachableViaWWAN, {{"lo", "127.0.0.1"}});
  EXPECT_EQ(state(), "off disabled []");
  network(NetworkStatus::notReachable, kWiFi);
  EXPECT_EQ(state(), "off []");
  network(NetworkStatus::reachableViaWiFi, kWiFi);
  EXPECT_EQ(state(), "off []");
  EXPECT_EQ(log_.lines, (std::vector<std::string>{"ReachableWiFi", "ReachableWWan", "Unreachable", "ReachableWiFi"}));
  EXPECT_TRUE(idleTimer_.log.ends_with("sleepy "));
}

TEST_F(WebAccessTest, ShowsTheAccessCodeBesideTheAddress) {
  preferences_.setBool(true, key::WEB_ACCESS_CODE);
  random_.upcoming = 123456;
  access().serverEvent(true);
  EXPECT_EQ(state(), "on " + url_ + "  ACCESS_CODE 123456]");
}

}  // namespace
}  // namespace varnok
