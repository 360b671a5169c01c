#include "backup/dropbox/dropbox_browser_view_controller.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "platform/testing/fake_services.h"
#include "platform/testing/in_memory_preference_store.h"
#include "platform/testing/recording_presenter.h"

namespace varnok {
namespace {

using testing::ElementsAre;

DropboxMetadata file(const std::string& name, std::uint64_t size) {
  return {name, "/" + name, /*isFolder=*/false, size, {}, {}};
}

DropboxMetadata folder(const std::string& name) {
  return {name, "/" + name, /*isFolder=*/true, 0, {}, {}};
}

class Browser : public testing::Test {
 protected:
  Browser() { client_.authorized = true; }

  DropboxBrowserViewController& open(const std::string& path = "/") {
    presenter_.present(std::make_shared<DropboxBrowserViewController>(
        DropboxBrowserServices{dropbox_, texts_, presenter_, "/docs"}, path));
    return browser();
  }
  DropboxBrowserViewController& browser() { return presenter_.front<DropboxBrowserViewController>(); }

  void answerListing(const std::vector<DropboxMetadata>& entries) { client_.listings.back().second(entries, {}); }

  // "TEXT; DETAIL; FILLED %" of each row.
  std::vector<std::string> rows() {
    std::vector<std::string> rows;
    for (const TableSection& section : tableOf(browser())) {
      for (const TableRow& row : section.rows) {
        rows.push_back(row.text + (row.detail ? "; " + *row.detail : "") +
                       (row.progress ? "; " + std::to_string(std::lround(*row.progress * 100)) + " %" : ""));
      }
    }
    return rows;
  }

  // The controls that are seen.
  std::string controls() {
    std::string names;
    for (const ScreenControl& control : browser().controls())
      names += control.hidden ? "" : control.name + " ";
    return names;
  }

  FakeDropboxClient client_;
  InMemoryPreferenceStore preferences_;
  FakeDeveloperLog log_;
  FakeTextCatalog texts_;
  RecordingPresenter presenter_;
  DropboxSession dropbox_{client_, preferences_, log_};
};

TEST_F(Browser, ListsFoldersFirst) {
  open();
  EXPECT_EQ(browser().title(), "Dropbox");
  EXPECT_EQ(controls(), "close activityIndicator ");
  answerListing({file("b.VCF", 2048), folder("Inner"), file("a", 10), folder("Other")});
  EXPECT_EQ(controls(), "close ");
  EXPECT_THAT(rows(), ElementsAre("Inner", "Other", "b.VCF; vcf, 2.00 KB", "a; 10.00 bytes"));
  EXPECT_EQ(browser().items()[0].kind, "__folder__");
}

TEST_F(Browser, SaysThatAFolderIsEmptyOnlyWhenItKnows) {
  open();
  client_.listings.back().second(std::nullopt, {Status::Code::unavailable, "away"});
  EXPECT_EQ(controls(), "close ");
  presenter_.screens.back()->viewWillAppear();
  answerListing({});
  EXPECT_EQ(controls(), "close lbl_Warning ");
}

TEST_F(Browser, OpensFoldersOneLevelDeeper) {
  open();
  answerListing({folder("Inner")});
  EXPECT_TRUE(browser().selectRow({0, 0}));
  EXPECT_EQ(client_.listings.back().first, "/Inner");
  answerListing({folder("Most")});
  browser().didSelectRowAtIndexPath({0, 0});
  EXPECT_EQ(browser().path(), "/Inner/Most");
  EXPECT_EQ(browser().title(), "Most");
  browser().tapControl("close", 0);
  presenter_.settle();
  EXPECT_EQ(client_.listings.back().first, "/Inner");  // What came to the front lists anew.
  answerListing({file("a.vcf", 1)});
  EXPECT_THAT(rows(), ElementsAre("a.vcf; vcf, 1.00 bytes"));
  EXPECT_FALSE(browser().selectRow({0, 1}));
}

TEST_F(Browser, DownloadsAFileOnce) {
  open("/Inner");
  answerListing({file("../a.vcf", 100)});
  browser().didSelectRowAtIndexPath({0, 0});
  browser().didSelectRowAtIndexPath({0, 0});
  ASSERT_EQ(client_.downloads.size(), 1U);
  const DropboxDownload download = client_.downloads[0];
  EXPECT_EQ(download.path, "/Inner/../a.vcf");
  EXPECT_EQ(download.file, "/docs/_._a.vcf");
}

TEST_F(Browser, ShowsADownloadUntilItIsThere) {
  open("/Inner");
  answerListing({file("z.vcf", 1), file("a.vcf", 100)});
  browser().didSelectRowAtIndexPath({0, 1});
  EXPECT_THAT(browser().downloadedItems(), ElementsAre(testing::Pair("a.vcf", "1")));
  const DropboxDownload download = client_.downloads[0];
  download.progress(50, 100);
  EXPECT_EQ(rows()[1], "a.vcf; vcf, 100.00 bytes; 50 %");
  EXPECT_EQ(dropbox_.downloadQueue().at("/Inner/a.vcf"), "0.500000");
  download.progress(100, 100);
  download.response(file("a.vcf", 100), {});
  EXPECT_EQ(rows()[1], "a.vcf; Downloaded");
  EXPECT_TRUE(browser().downloadedItems().empty());
  EXPECT_TRUE(dropbox_.downloadQueue().empty());
}

TEST_F(Browser, AFailedDownloadLeavesTheRowAsItWas) {
  open();
  answerListing({file("a.vcf", 100)});
  browser().didSelectRowAtIndexPath({0, 0});
  client_.downloads[0].progress(50, 100);
  client_.downloads[0].response(std::nullopt, {Status::Code::noSpace, "full"});
  EXPECT_THAT(rows(), ElementsAre("a.vcf; vcf, 100.00 bytes"));
  EXPECT_TRUE(dropbox_.downloadQueue().empty());
  browser().didSelectRowAtIndexPath({0, 0});
  EXPECT_EQ(client_.downloads.size(), 2U);
}

TEST_F(Browser, ShowsUploadsAndListsAnewAfterTheLast) {
  open();
  answerListing({file("a.vcf", 100), file("b.vcf", 100)});
  dropbox_.uploadFile("/docs/a.vcf", "a.vcf");
  dropbox_.uploadFile("/docs/b.vcf", "b.vcf");
  client_.uploads[0].progress(25, 100);
  client_.uploads[1].progress(75, 100);
  EXPECT_THAT(rows(), ElementsAre("a.vcf; vcf, 100.00 bytes; 25 %", "b.vcf; vcf, 100.00 bytes; 75 %"));
  client_.uploads[0].progress(100, 100);
  client_.uploads[0].response(file("a.vcf", 100), {});
  EXPECT_THAT(rows(), ElementsAre("a.vcf; Uploaded", "b.vcf; vcf, 100.00 bytes; 75 %"));
  EXPECT_EQ(client_.listings.size(), 1U);
  client_.uploads[1].response(std::nullopt, {Status::Code::unavailable, "away"});
  EXPECT_EQ(rows()[1], "b.vcf; vcf, 100.00 bytes");
  dropbox_.uploadFile("/docs/new.vcf", "new.vcf");
  client_.uploads[2].progress(5, 5);
  EXPECT_EQ(client_.listings.size(), 2U);
  EXPECT_FALSE(dropbox_.uploadQueue().contains("new.vcf"));
}

TEST_F(Browser, GoesWhileADownloadRuns) {
  open();
  answerListing({file("a.vcf", 100)});
  browser().didSelectRowAtIndexPath({0, 0});
  browser().close();
  presenter_.settle();
  client_.downloads[0].progress(50, 100);
  open();  // And back: the bar is still there.
  answerListing({file("a.vcf", 100)});
  EXPECT_THAT(rows(), ElementsAre("a.vcf; vcf, 100.00 bytes; 50 %"));
  browser().close();
  presenter_.settle();
  client_.downloads[0].response(std::nullopt, {Status::Code::unavailable, "away"});
  client_.listings.back().second(std::vector<DropboxMetadata>(), {});
  EXPECT_TRUE(dropbox_.downloadQueue().empty());
}

TEST_F(Browser, BeginsASignInOnlyWhereNoAccountIsLinked) {
  open();
  EXPECT_TRUE(presenter_.urls.empty());
  client_.authorized = false;
  open();
  EXPECT_THAT(presenter_.urls, ElementsAre("https://dropbox.test/authorize"));
  EXPECT_EQ(dropbox_.restClient(), nullptr);
}

}  // namespace
}  // namespace varnok
