#include "platform/linux/dbus/desktop_network_monitor.h"

#include <atomic>

#include "platform/linux/dbus/stand_in.h"

namespace varnok {
namespace {

class DesktopNetwork : public DesktopTest {
 protected:
  ~DesktopNetwork() override {
    if (monitor_) monitor_->stop();
    running_.reset();
  }

  void watch(std::chrono::milliseconds limit = 3s) {
    monitor_.emplace(BusSettings{limit}, tasks_, log_);
    monitor_->startNotifier([this] { ++changes_; });
  }
  bool reaches(NetworkStatus status) {
    return await([&] { return monitor_->currentReachabilityStatus() == status; });
  }

  std::optional<DesktopNetworkMonitor> monitor_;
  std::atomic<int> changes_{0};
  NetworkStatus kernels_ = NetlinkNetworkMonitor(log_).currentReachabilityStatus();
};

TEST_F(DesktopNetwork, IsWhatNetworkManagerTells) {
  StandIn manager("networkmanager");
  watch();
  EXPECT_TRUE(reaches(NetworkStatus::reachableViaWiFi)) << log_.text();
  int before = changes_;
  manager.tell("set 70 4 gsm");
  EXPECT_TRUE(reaches(NetworkStatus::reachableViaWWAN)) << log_.text();
  EXPECT_TRUE(await([&] { return changes_ > before; }));
  EXPECT_TRUE(monitor_->reachabilityFlags()->reachable);
  EXPECT_FALSE(monitor_->reachabilityFlags()->connectionRequired);

  manager.tell("set 70 2 802-3-ethernet");
  EXPECT_TRUE(await([&] { return monitor_->reachabilityFlags()->connectionRequired; }));
  EXPECT_EQ(monitor_->currentReachabilityStatus(), NetworkStatus::reachableViaWiFi);

  before = changes_;
  manager.tell("set 20 1");
  EXPECT_TRUE(reaches(NetworkStatus::notReachable)) << log_.text();
  EXPECT_TRUE(await([&] { return changes_ > before; }));
  EXPECT_FALSE(monitor_->reachabilityFlags()->reachable);
}

TEST_F(DesktopNetwork, IsTheKernelsWhileNetworkManagerIsAway) {
  watch();
  EXPECT_EQ(monitor_->currentReachabilityStatus(), kernels_);
  EXPECT_TRUE(await([&] { return log_.has("watched without NetworkManager"); }));
  for (int i = 0; i < 2; ++i) {
    StandIn manager("networkmanager");
    manager.tell("set 70 4 cdma");
    EXPECT_TRUE(reaches(NetworkStatus::reachableViaWWAN)) << log_.text();
    const int before = changes_;
    EXPECT_EQ(manager.tell("die"), "died");
    EXPECT_TRUE(reaches(kernels_)) << log_.text();
    EXPECT_TRUE(await([&] { return changes_ > before; }));
  }
}

TEST_F(DesktopNetwork, DoesNotWaitForANetworkManagerThatNeverAnswers) {
  const StandIn manager("silent", "org.freedesktop.NetworkManager");
  watch(300ms);
  EXPECT_EQ(monitor_->currentReachabilityStatus(), kernels_);
  EXPECT_TRUE(await([&] { return log_.has("watched without NetworkManager"); }));
  EXPECT_EQ(monitor_->currentReachabilityStatus(), kernels_);
}

TEST_F(DesktopNetwork, TellsNothingAfterItsEnd) {
  StandIn manager("networkmanager");
  watch();
  EXPECT_TRUE(reaches(NetworkStatus::reachableViaWiFi)) << log_.text();
  monitor_->stop();
  const int before = changes_;
  manager.tell("set 70 4 gsm");
  tasks_.sleep(200ms);
  EXPECT_EQ(changes_, before);
}

TEST(StatusOfNetworkManager, LeavesOpenWhatTheKernelKnowsBetter) {
  EXPECT_EQ(statusOf({50, 1, ""}), std::nullopt);
  EXPECT_EQ(statusOf({70, 4, "wireguard"}), std::nullopt);
  EXPECT_EQ(statusOf({40, 0, "802-11-wireless"}), NetworkStatus::notReachable);
  EXPECT_EQ(statusOf({70, 3, "bluetooth"}), NetworkStatus::reachableViaWWAN);
}

}  // namespace
}  // namespace varnok
