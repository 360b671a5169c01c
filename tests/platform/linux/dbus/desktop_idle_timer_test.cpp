#include "platform/linux/dbus/desktop_idle_timer.h"

#include <gmock/gmock.h>

#include "platform/linux/dbus/stand_in.h"

namespace varnok {
namespace {

using testing::StartsWith;

class DesktopIdle : public DesktopTest {
 protected:
  DesktopIdleTimer& timer(std::chrono::milliseconds limit = 3s, std::chrono::milliseconds patience = 0ms) {
    timer_.emplace(DesktopIdleTimer::Settings{patience, {limit}}, tasks_, log_);
    return *timer_;
  }
  void keepAwake(bool awake) {
    const auto before = std::chrono::steady_clock::now();
    timer_->setIdleTimerDisabled(awake);
    EXPECT_LT(std::chrono::steady_clock::now() - before, 250ms) << "the main thread waited";
  }
  bool logged(std::string_view words) {
    return await([&] { return log_.has(words); });
  }
  bool inhibitors(StandIn& logind, const std::string& expected) {
    return await([&] { return logind.tell("inhibitors") == expected; });
  }

  std::optional<DesktopIdleTimer> timer_;
};

TEST_F(DesktopIdle, IsHeldOffByThePortal) {
  StandIn portal("portal");
  StandIn screenSaver("screensaver");
  timer();
  keepAwake(true);
  EXPECT_THAT(portal.line(), StartsWith("inhibit\t8"));
  EXPECT_TRUE(logged("kept awake by the portal")) << log_.text();
  keepAwake(false);
  EXPECT_EQ(portal.line(), "released");
  keepAwake(true);
  EXPECT_THAT(portal.line(), StartsWith("inhibit\t8"));
  EXPECT_EQ(portal.tell("die"), "died");
  EXPECT_EQ(screenSaver.line(), "inhibit\t101") << "what dies is replaced";
  timer_.reset();
  EXPECT_EQ(screenSaver.line(), "released\t101");
}

TEST_F(DesktopIdle, IsHeldOffByTheScreenSaverWhereThePortalRefuses) {
  StandIn portal("portal");
  portal.tell("answer 2");
  StandIn screenSaver("screensaver");
  timer();
  keepAwake(true);
  EXPECT_EQ(screenSaver.line(), "inhibit\t101");
  EXPECT_TRUE(log_.has("Not kept awake by the portal")) << log_.text();
}

TEST_F(DesktopIdle, IsHeldOffByLogindWhereTheOthersNeverAnswer) {
  const StandIn portal("silent", "org.freedesktop.portal.Desktop");
  const StandIn screenSaver("silent", "org.freedesktop.ScreenSaver");
  StandIn logind("logind");
  timer(300ms);
  keepAwake(true);
  EXPECT_TRUE(inhibitors(logind, "inhibitors\tVarnok: idle")) << log_.text();
  keepAwake(false);
  EXPECT_TRUE(inhibitors(logind, "inhibitors"));
}

TEST_F(DesktopIdle, IsAsItWasWantedLast) {
  StandIn screenSaver("screensaver");
  screenSaver.tell("delay 500");
  timer();
  keepAwake(true);
  EXPECT_EQ(screenSaver.line(), "inhibit\t101");
  for (const bool awake : {false, true, false})  // While it still answers.
    keepAwake(awake);
  EXPECT_EQ(screenSaver.line(), "released\t101");
  EXPECT_EQ(screenSaver.line(200ms), "(nothing)");
}

TEST_F(DesktopIdle, IsNotHeldOffByAnAnswerThatComesTooLate) {
  StandIn screenSaver("screensaver");
  screenSaver.tell("delay 600");
  timer(200ms);
  keepAwake(true);
  EXPECT_EQ(screenSaver.line(), "inhibit\t101");
  EXPECT_TRUE(logged("Nothing here keeps the session awake"));
  EXPECT_EQ(screenSaver.line(), "released\t101");
  // The same while another service goes on using the connection.
  const auto other = makeDesktopService<NetworkManagerClient>("varnokMakeNetworkManager", {});
  ASSERT_TRUE(other->start([](const auto&, const Status&) {}).ok());
  keepAwake(false);
  keepAwake(true);
  EXPECT_EQ(screenSaver.line(), "inhibit\t102");
  EXPECT_EQ(screenSaver.line(), "released\t102");
}

TEST_F(DesktopIdle, NeedsNoServiceForWhatEndsSoon) {
  StandIn portal("portal");
  timer(3s, 300ms);
  keepAwake(true);
  keepAwake(false);
  EXPECT_EQ(portal.line(600ms), "(nothing)");
}

TEST_F(DesktopIdle, StopsAtOnceDuringACallThatIsNotAnswered) {
  const StandIn portal("silent", "org.freedesktop.portal.Desktop");
  timer(60s);
  keepAwake(true);
  tasks_.sleep(200ms);  // Until it is under way.
  const auto before = std::chrono::steady_clock::now();
  timer_.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - before, 5s);
}

// The program is ended in the way that leaves it nothing to do about it.
TEST_F(DesktopIdle, ReturnsWhenTheProgramIsKilled) {
  StandIn portal("portal");
  const std::string place = home() + "/server";
  ChildProgram server({VARNOK_PROGRAM, "--home", place, "--json", "serve", "--port", "0", "--bind", "127.0.0.1"});
  EXPECT_THAT(server.line(), StartsWith("{\"url\""));
  EXPECT_THAT(portal.line(), StartsWith("inhibit\t8"));
  ::kill(server.id(), SIGKILL);
  EXPECT_EQ(portal.line(), "released");
}

}  // namespace
}  // namespace varnok
