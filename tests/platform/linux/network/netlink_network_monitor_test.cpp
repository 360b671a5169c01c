#include "platform/linux/network/netlink_network_monitor.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <thread>

#include "platform/testing/fake_services.h"

namespace varnok {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    char name[] = "/tmp/varnok-network-XXXXXX";
    path = ::mkdtemp(name);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory() { std::filesystem::remove_all(path); }

  std::string path;
};

struct KindCase {
  std::string name;
  InterfaceKind kind;
  std::vector<std::string> directories;  // Of the interface's directory.
  std::string type;
  std::string uevent = {};
  std::vector<std::string> files = {};
};

void PrintTo(const KindCase& c, std::ostream* out) {
  *out << c.name;
}

class Kinds : public testing::TestWithParam<KindCase> {};

TEST_P(Kinds, AreReadFromTheSystem) {
  const KindCase& c = GetParam();
  const TemporaryDirectory sysfs;
  const std::string directory = sysfs.path + "/net0";
  std::filesystem::create_directory(directory);
  for (const std::string& name : c.directories)
    std::filesystem::create_directory(directory + "/" + name);
  for (const std::string& name : c.files)
    std::ofstream(directory + "/" + name) << "0\n";
  std::ofstream(directory + "/type") << c.type << "\n";
  std::ofstream(directory + "/uevent") << c.uevent << "INTERFACE=net0\nIFINDEX=3\n";
  EXPECT_EQ(kindOfInterface(sysfs.path, "net0"), c.kind);
}

INSTANTIATE_TEST_SUITE_P(
    , Kinds,
    testing::Values(KindCase{"WirelessCard", InterfaceKind::wireless, {"device", "phy80211"}, "1", "DEVTYPE=wlan\n"},
                    KindCase{"OldWirelessDriver", InterfaceKind::wireless, {"device", "wireless"}, "1"},
                    KindCase{"EthernetCard", InterfaceKind::wired, {"device"}, "1"},
                    KindCase{"UsbGadget", InterfaceKind::wired, {"device"}, "1", "DEVTYPE=gadget\n"},
                    KindCase{"Bridge", InterfaceKind::virtualEthernet, {"bridge"}, "1", "DEVTYPE=bridge\n"},
                    KindCase{"ModemThatLooksLikeEthernet", InterfaceKind::mobile, {"device"}, "1", "DEVTYPE=wwan\n"},
                    KindCase{"ModemOfRawPackets", InterfaceKind::mobile, {"device"}, "519"},
                    KindCase{"DialUp", InterfaceKind::mobile, {}, "512", "DEVTYPE=ppp\n"},
                    KindCase{"Loopback", InterfaceKind::other, {}, "772"},
                    KindCase{"Tunnel", InterfaceKind::other, {}, "65534", "", {"tun_flags"}},
                    KindCase{"EthernetTunnel", InterfaceKind::other, {}, "1", "", {"tun_flags"}}),
    [](const testing::TestParamInfo<KindCase>& row) { return row.param.name; });

TEST(InterfaceThatHasGone, IsOfNoKind) {
  EXPECT_EQ(kindOfInterface("/nonexistent", "eth0"), InterfaceKind::other);
}

TEST(DefaultRoutes, AreThoseInUse) {
  EXPECT_THAT(
      defaultRouteInterfaces("Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT\n"
                             "wlan0\t00000000\t0100A8C0\t0003\t0\t0\t600\t00000000\t0\t0\t0\n"
                             "wlan0\t0000A8C0\t00000000\t0001\t0\t0\t600\t00FFFFFF\t0\t0\t0\n"
                             "half0\t00000000\t00000000\t0001\t0\t0\t0\t00000080\t0\t0\t0\n"
                             "*\t00000000\t00000000\t0200\t0\t0\t0\t00000000\t0\t0\t0\n"
                             "cut0\t00000000\n"),
      ElementsAre("wlan0"));
  EXPECT_TRUE(defaultRouteInterfaces("").empty());
}

// The kind is in a test interface's name.
InterfaceKind kindInName(const std::string& name) {
  if (name.starts_with("wlan")) return InterfaceKind::wireless;
  if (name.starts_with("eth") || name.starts_with("en")) return InterfaceKind::wired;
  if (name.starts_with("docker") || name.starts_with("br")) return InterfaceKind::virtualEthernet;
  return name.starts_with("wwan") ? InterfaceKind::mobile : InterfaceKind::other;
}

struct ViewCase {
  std::string name;
  std::vector<NetworkInterface> addresses;
  std::vector<std::string> defaultRoutes;
  NetworkStatus status;
  std::string listed;  // "NAME=ADDRESS ".
};

void PrintTo(const ViewCase& c, std::ostream* out) {
  *out << c.name;
}

class Views : public testing::TestWithParam<ViewCase> {};

TEST_P(Views, NameTheWayToTheLocalNetwork) {
  const ViewCase& c = GetParam();
  const NetworkView view = networkView(c.addresses, c.defaultRoutes, kindInName);
  std::string listed;
  for (const NetworkInterface& entry : view.interfaces)
    listed += entry.name + "=" + entry.address + " ";
  EXPECT_EQ(listed, c.listed);
  EXPECT_EQ(view.status, c.status);
}

INSTANTIATE_TEST_SUITE_P(
    , Views,
    testing::Values(
        ViewCase{"NoNetwork", {{"lo", "127.0.0.1"}}, {}, NetworkStatus::notReachable, "lo=127.0.0.1 "},
        ViewCase{"WirelessBeforeWired",
                 {{"eth0", "10.0.0.2"}, {"wlan0", "10.0.1.2"}},
                 {"eth0"},
                 NetworkStatus::reachableViaWiFi,
                 "eth0=10.0.0.2 en0=10.0.1.2 "},
        ViewCase{"OfTwoTheOneWithADefaultRoute",
                 {{"eth0", "10.0.0.2"}, {"eth1", "10.0.1.2"}},
                 {"eth1"},
                 NetworkStatus::reachableViaWiFi,
                 "eth0=10.0.0.2 en0=10.0.1.2 "},
        ViewCase{"AllAddressesAndAliasesInOrder",
                 {{"wlan0", "10.0.0.2"}, {"lo", "127.0.0.1"}, {"wlan0", "10.0.0.3"}, {"wlan0:1", "10.0.0.4"}},
                 {},
                 NetworkStatus::reachableViaWiFi,
                 "en0=10.0.0.2 lo=127.0.0.1 en0=10.0.0.3 en0=10.0.0.4 "},
        ViewCase{"ContainersOfThisMachineAreNoLocalNetwork",
                 {{"docker0", "172.17.0.1"}, {"wwan0", "100.64.0.9"}},
                 {"wwan0"},
                 NetworkStatus::reachableViaWWAN,
                 "docker0=172.17.0.1 wwan0=100.64.0.9 "},
        ViewCase{"ABridgeToTheWorldIsTheLocalNetwork",
                 {{"br0", "10.0.0.2"}},
                 {"br0"},
                 NetworkStatus::reachableViaWiFi,
                 "en0=10.0.0.2 "},
        ViewCase{
            "AModemWithoutARouteIsNoWay", {{"wwan0", "10.9.0.1"}}, {}, NetworkStatus::notReachable, "wwan0=10.9.0.1 "},
        ViewCase{"AnotherOfThatNameIsNotMistaken",
                 {{"en0", "10.0.0.2"}, {"wlan0", "10.0.1.2"}},
                 {},
                 NetworkStatus::reachableViaWiFi,
                 "en0=10.0.1.2 "}),
    [](const testing::TestParamInfo<ViewCase>& row) { return row.param.name; });

// Where the interfaces of a network of its own are shown. Made in a process
// whose mounts are its own too.
class OwnNetwork {
 public:
  OwnNetwork() {
    char name[] = "/tmp/varnok-sysfs-XXXXXX";
    path_ = ::mkdtemp(name);
    entered_ = ::unshare(CLONE_NEWNET | CLONE_NEWNS) == 0 &&
               ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
               ::mount("sysfs", path_.c_str(), "sysfs", 0, nullptr) == 0;
  }
  OwnNetwork(const OwnNetwork&) = delete;
  OwnNetwork& operator=(const OwnNetwork&) = delete;
  ~OwnNetwork() {
    if (entered_) ::umount2(path_.c_str(), MNT_DETACH);
    ::rmdir(path_.c_str());
  }

  // False where the system does not allow it.
  bool entered() const { return entered_; }
  std::string interfaces() const { return path_ + "/class/net"; }

 private:
  std::string path_;
  bool entered_ = false;
};

bool runs(const std::string& command) {
  return std::system(command.c_str()) == 0;  // NOLINT(cert-env33-c): the test's own words.
}

class Changes {
 public:
  void add() {
    const std::scoped_lock lock(mutex_);
    ++count_;
    came_.notify_all();
  }
  // Looks after each change; false when none made `reached` true in time.
  bool await(const std::function<bool()>& reached) {
    std::unique_lock lock(mutex_);
    for (;;) {
      const int seen = count_;
      if (seen > 0 && reached()) return true;
      if (!came_.wait_for(lock, 5s, [&] { return count_ > seen; })) return false;
    }
  }

 private:
  std::mutex mutex_;
  std::condition_variable came_;
  int count_ = 0;
};

constexpr int kNotAllowed = 77;

// Runs in a process of its own. The number of the step that failed; 0 for none.
int followAnInterface() {
  const OwnNetwork network;
  if (!network.entered() || !runs("ip link add lan0 type veth peer name far0")) return kNotAllowed;
  FakeDeveloperLog log;
  Changes changes;
  NetlinkNetworkMonitor monitor(log, {.sysfs = network.interfaces()});
  monitor.startNotifier([&changes] { changes.add(); });
  const auto status = [&](NetworkStatus wanted) { return monitor.currentReachabilityStatus() == wanted; };
  if (!status(NetworkStatus::notReachable)) return 1;
  if (!runs("ip address add 10.7.0.2/24 dev lan0 && ip link set far0 up && ip link set lan0 up")) return 2;
  if (!changes.await([&] { return !monitor.interfaces().empty(); }) || monitor.reachabilityFlags()->reachable) return 3;
  if (!runs("ip route add default via 10.7.0.1")) return 4;
  if (!changes.await([&] { return status(NetworkStatus::reachableViaWiFi); })) return 5;
  const std::vector<NetworkInterface> listed = monitor.interfaces();
  if (listed.size() != 1 || listed[0].name != "en0" || listed[0].address != "10.7.0.2") return 6;
  if (!monitor.reachabilityFlags()->reachable) return 7;
  // The other end of the cable goes: no carrier any more.
  if (!runs("ip link set far0 down")) return 8;
  if (!changes.await([&] { return status(NetworkStatus::notReachable); })) return 9;
  return monitor.interfaces().empty() ? 0 : 10;
}

TEST(NetlinkNetworkMonitor, FollowsTheNetwork) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(followAnInterface());
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  if (WEXITSTATUS(status) == kNotAllowed) GTEST_SKIP() << "a network of its own takes an administrator";
  EXPECT_EQ(WEXITSTATUS(status), 0) << "the step that failed";
}

// A web server that refuses the first request and then goes.
class AnswersOnce {
 public:
  AnswersOnce() : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    address_.sin_family = AF_INET;
    address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address_;
    auto* address = reinterpret_cast<sockaddr*>(&address_);
    if (::bind(listener_, address, size) != 0 || ::listen(listener_, 1) != 0) std::abort();
    ::getsockname(listener_, address, &size);
    thread_ = std::thread([this] {
      const int client = ::accept(listener_, nullptr, nullptr);
      char request[4096];
      constexpr std::string_view kAnswer = "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n";
      const bool asked = ::recv(client, request, sizeof request, 0) > 0;
      if (asked && ::send(client, kAnswer.data(), kAnswer.size(), MSG_NOSIGNAL) < 0) std::abort();
      ::close(client);
    });
  }
  AnswersOnce(const AnswersOnce&) = delete;
  AnswersOnce& operator=(const AnswersOnce&) = delete;
  ~AnswersOnce() {
    ::shutdown(listener_, SHUT_RDWR);
    thread_.join();
    ::close(listener_);
  }

  std::string url() const { return "http://127.0.0.1:" + std::to_string(ntohs(address_.sin_port)) + "/"; }

 private:
  const int listener_;
  sockaddr_in address_{};
  std::thread thread_;
};

TEST(NetlinkNetworkMonitor, TheTestRequestIsARealOne) {
  FakeDeveloperLog log;
  NetlinkNetworkMonitor monitor(log);
  AnswersOnce server;
  EXPECT_TRUE(monitor.canConnect(server.url(), 20s));
  EXPECT_FALSE(monitor.canConnect("http://127.0.0.1:1/", 20s));  // Nothing listens there.
  EXPECT_FALSE(monitor.canConnect("file:///etc/hostname", 20s));
}

}  // namespace
}  // namespace varnok
