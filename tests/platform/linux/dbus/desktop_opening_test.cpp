// Files and pages that another application opens, and the choice of files.

#include <gmock/gmock.h>

#include "platform/linux/dbus/desktop_document_hand_over.h"
#include "platform/linux/dbus/desktop_file_chooser.h"
#include "platform/linux/dbus/desktop_store_review.h"
#include "platform/linux/dbus/stand_in.h"

namespace varnok {
namespace {

class Fallback : public DocumentHandOver {
 public:
  void presentOptionsMenu(const std::string& path) override { paths.push_back(path); }
  std::vector<std::string> paths;
};

class DesktopHandOver : public DesktopTest {
 protected:
  DesktopHandOver() {
    std::ofstream(file_) << "BEGIN:VCARD";
    program("viewer", "cat \"$1\" > " + opened_ + ".new; mv " + opened_ + ".new " + opened_);
    application("viewer", programs_ + "/viewer %f", "text/vcard;");
  }
  ~DesktopHandOver() override {
    if (handOver_) handOver_->stop();
    running_.reset();
    std::filesystem::remove(opened_);
  }

  void handOver(std::chrono::milliseconds limit = 3s) {
    if (!handOver_) handOver_.emplace(DesktopDocumentHandOver::Settings{true, {limit}}, fallback_, tasks_, log_);
    handOver_->presentOptionsMenu(file_);
  }
  bool fellBack() {
    return await([this] { return fallback_.paths == std::vector{file_}; });
  }

  const std::string file_ = home() + "/my backup.vcf";
  const std::string opened_ = home() + "/opened";
  Fallback fallback_;
  std::optional<DesktopDocumentHandOver> handOver_;
};

TEST_F(DesktopHandOver, GoesToTheApplicationThatTheUserPicks) {
  StandIn portal("portal");
  portal.tell("answer 1");
  handOver();
  EXPECT_THAT(portal.line(), testing::HasSubstr("choose\t"));
  portal.tell("answer 0");
  handOver();
  EXPECT_THAT(portal.line(), testing::HasSubstr("choose\t"));
  EXPECT_TRUE(await([this] { return std::filesystem::exists(opened_); })) << log_.text();
  EXPECT_EQ(contentOf(opened_), "BEGIN:VCARD");
  EXPECT_TRUE(fallback_.paths.empty()) << "what the user cancelled, or has, is not opened again";
}

TEST_F(DesktopHandOver, FallsBackWhereThePortalFails) {
  StandIn portal("portal");
  portal.tell("answer 2");
  handOver();
  EXPECT_TRUE(fellBack()) << log_.text();
}

TEST_F(DesktopHandOver, FallsBackWhenThePortalDiesMeanwhile) {
  StandIn portal("portal");
  portal.tell("answer never");
  handOver();
  EXPECT_THAT(portal.line(), testing::HasSubstr("choose\t"));
  EXPECT_EQ(portal.tell("die"), "died");
  EXPECT_TRUE(fellBack()) << log_.text();
}

TEST_F(DesktopHandOver, FallsBackWithoutAPortalAndFromOneThatNeverAnswers) {
  handOver(300ms);
  EXPECT_TRUE(fellBack()) << log_.text();
  fallback_.paths.clear();
  const StandIn portal("silent", "org.freedesktop.portal.Desktop");
  handOver();
  EXPECT_TRUE(fellBack()) << log_.text();
}

class DesktopStore : public DesktopTest {
 protected:
  DesktopStore() {
    const std::string script = "printf '%s' \"$0 $1\" > " + opened_ + ".new; mv " + opened_ + ".new " + opened_;
    program("viewer", script);
    program("xdg-open", script);
    application("viewer", programs_ + "/viewer %u", "x-scheme-handler/appstream;");
  }
  ~DesktopStore() override {
    if (store_) store_->stop();
    running_.reset();
    std::filesystem::remove(opened_);
  }

  void ask(bool desktop = true) {
    store_.emplace(DesktopStoreReview::Settings{desktop, "io.varnok.Varnok", {}}, tasks_, log_);
    store_->requestReview();
  }
  // The program that opened the page, and the page.
  std::string opened() {
    EXPECT_TRUE(await([this] { return std::filesystem::exists(opened_); })) << log_.text();
    return contentOf(opened_);
  }

  const std::string opened_ = home() + "/page";
  std::optional<DesktopStoreReview> store_;
};

TEST_F(DesktopStore, OpensTheApplicationsPageThroughThePortal) {
  const StandIn portal("portal");
  ask();
  EXPECT_EQ(opened(), programs_ + "/viewer appstream://io.varnok.Varnok");
}

TEST_F(DesktopStore, OpensItWithXdgOpenWithoutAPortal) {
  ask();
  EXPECT_EQ(opened(), programs_ + "/xdg-open appstream://io.varnok.Varnok");
  std::filesystem::remove(opened_);
  store_->openURL("appstream://varnok?id=42");
  EXPECT_EQ(opened(), programs_ + "/xdg-open appstream://io.varnok.Varnok");
}

TEST_F(DesktopStore, OpensNothingWhereNobodySitsAtADesktop) {
  ask(/*desktop=*/false);
  EXPECT_TRUE(tasks_.idle());
  EXPECT_TRUE(log_.has("store page: appstream://io.varnok.Varnok"));
}

using Uris = std::optional<std::vector<std::string>>;

class FileChooser : public DesktopTest {
 protected:
  ~FileChooser() override {
    chooser_.stop();
    running_.reset();
  }

  // The answer; "(none)" is the only one when none comes in time.
  Uris chosen() {
    std::optional<Uris> answer;
    chooser_.choose({"Import", "vCard", {"*.vcf", "*.VCF"}}, [&](const Uris& uris) { answer = uris; });
    return await([&] { return answer.has_value(); }) ? *answer : Uris({"(none)"});
  }

  DesktopFileChooser chooser_{{true, {3s}}, tasks_, log_};
};

TEST_F(FileChooser, GivesWhatTheUserChose) {
  StandIn portal("portal");
  EXPECT_EQ(chosen(), Uris({"file:///tmp/a%20b.vcf", "file:///tmp/c.vcf"})) << log_.text();
  EXPECT_EQ(portal.line(), "files\tImport\tseveral\tvCard *.vcf *.VCF");
  portal.tell("answer 1");
  EXPECT_EQ(chosen(), Uris(std::vector<std::string>()));
}

TEST_F(FileChooser, TheLastChoiceIsTheOneThatIsAsked) {
  StandIn portal("portal");
  portal.tell("answer never");
  bool answered = false;
  chooser_.choose({"First", "vCard", {"*.vcf"}}, [&](const Uris&) { answered = true; });
  EXPECT_THAT(portal.line(), testing::HasSubstr("First"));
  portal.tell("answer 1");
  EXPECT_EQ(chosen(), Uris(std::vector<std::string>()));
  EXPECT_EQ(portal.line(), "closed");
  EXPECT_FALSE(answered);
}

TEST_F(FileChooser, SaysThatNobodyAsks) {
  EXPECT_EQ(chosen(), std::nullopt) << "without a portal";
  {
    StandIn portal("portal");
    portal.tell("answer 2");
    EXPECT_EQ(chosen(), std::nullopt) << "where it fails";
  }
  const StandIn silent("silent", "org.freedesktop.portal.Desktop");
  EXPECT_EQ(chosen(), std::nullopt) << "where it never answers";
}

}  // namespace
}  // namespace varnok
