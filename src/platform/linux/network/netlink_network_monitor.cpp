#include "platform/linux/network/netlink_network_monitor.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <fstream>
#include <iterator>
#include <memory>
#include <system_error>

#include "platform/check.h"
#include "platform/linux/curl/curl_connection.h"
#include "platform/linux/posix/posix_io.h"

namespace varnok {
namespace {

// The IPv4 addresses of the interfaces that are up and have a carrier.
std::optional<std::vector<NetworkInterface>> runningAddresses() {
  ifaddrs* first = nullptr;
  if (::getifaddrs(&first) != 0) return std::nullopt;
  const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> list(first, &::freeifaddrs);
  std::vector<NetworkInterface> addresses;
  for (const ifaddrs* entry = first; entry != nullptr; entry = entry->ifa_next) {
    constexpr unsigned kRunning = IFF_UP | IFF_RUNNING;
    if (entry->ifa_addr == nullptr || entry->ifa_addr->sa_family != AF_INET) continue;
    if ((entry->ifa_flags & kRunning) != kRunning) continue;
    std::array<char, INET_ADDRSTRLEN> text{};
    const auto* address = reinterpret_cast<const sockaddr_in*>(entry->ifa_addr);
    if (::inet_ntop(AF_INET, &address->sin_addr, text.data(), text.size()) == nullptr) continue;
    addresses.push_back({entry->ifa_name, text.data()});
  }
  return addresses;
}

std::string contentOf(const std::string& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

// A socket that the kernel tells changes of interfaces, addresses and routes;
// invalid, with errno, when it does not.
FileDescriptor changesOfTheNetwork() {
  FileDescriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE));
  sockaddr_nl address{};
  address.nl_family = AF_NETLINK;
  address.nl_groups = RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV4_ROUTE;
  if (!socket.valid()) return socket;
  if (::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) return {};
  return socket;
}

// What the messages say is looked up afterwards; that some were lost makes no
// difference.
void drain(int socket) {
  std::array<char, 8192> buffer{};
  while (::recv(socket, buffer.data(), buffer.size(), 0) >= 0 || errno == ENOBUFS || errno == EINTR) {
  }
}

// Signals are for the threads that ask for them. Threads made while this lives
// inherit the mask.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_{};
};

}  // namespace

std::optional<NetworkView> NetlinkNetworkMonitor::look() const {
  auto addresses = runningAddresses();
  if (!addresses) return std::nullopt;
  return networkView(std::move(*addresses), defaultRouteInterfaces(contentOf(settings_.routes)),
                     [this](const std::string& name) { return kindOfInterface(settings_.sysfs, name); });
}

std::optional<ReachabilityFlags> NetlinkNetworkMonitor::reachabilityFlags() {
  const auto view = look();
  if (!view) return std::nullopt;
  return ReachabilityFlags{.reachable = view->hasDefaultRoute};
}

bool NetlinkNetworkMonitor::canConnect(const std::string& url, std::chrono::seconds timeLimit) {
  CurlConnection connection({.plainAllowed = true, .connectLimit = timeLimit, .wholeLimit = timeLimit});
  HttpRequest request{.method = HttpRequest::Method::head, .url = url};
  request.headers = {"Cache-Control: no-cache", "Pragma: no-cache"};
  return connection.perform(request, std::stop_token()).head.status != 0;
}

std::vector<NetworkInterface> NetlinkNetworkMonitor::interfaces() {
  return look().value_or(NetworkView()).interfaces;
}

NetworkStatus NetlinkNetworkMonitor::currentReachabilityStatus() {
  return look().value_or(NetworkView()).status;
}

void NetlinkNetworkMonitor::startNotifier(std::function<void()> changed) {
  VARNOK_CHECK(watcher_.get_id() != std::this_thread::get_id());  // An observer cannot end its own thread.
  watcher_ = {};
  FileDescriptor netlink = changesOfTheNetwork();
  if (!netlink.valid()) {
    log_.write("changes of the network are not told: " + std::generic_category().message(errno));
    return;
  }
  const SignalsBlocked blocked;
  watcher_ =
      std::jthread([this, netlink = std::move(netlink), known = look(), changed = std::move(changed)](
                       const std::stop_token& stop) mutable { watch(stop, netlink.get(), std::move(known), changed); });
}

void NetlinkNetworkMonitor::watch(const std::stop_token& stop, int netlink, std::optional<NetworkView> known,
                                  const std::function<void()>& changed) const {
  const FileDescriptor wake(::eventfd(0, EFD_CLOEXEC));
  const std::stop_callback wakeUp(stop, [&wake] { ::eventfd_write(wake.get(), 1); });
  while (!stop.stop_requested()) {
    std::array<pollfd, 2> waited{{{netlink, POLLIN, 0}, {wake.get(), POLLIN, 0}}};
    if (::poll(waited.data(), waited.size(), -1) < 0 && errno != EINTR) return;
    if (stop.stop_requested()) return;
    drain(netlink);
    auto now = look();
    if (now == known) continue;
    known = std::move(now);
    changed();
  }
}

}  // namespace varnok
