#include <gtest/gtest.h>

#include <filesystem>

#include "cleanup/cleanup_surroundings.h"
#include "cleanup/duplicate_records_table_view_controller.h"
#include "cleanup/duplicate_search.h"
#include "platform/linux/posix/thread_task_runner.h"
#include "platform/linux/sqlite/sqlite_contact_store.h"
#include "support/golden.h"

namespace varnok {
namespace {

using Review = DuplicateRecordsTableViewController;

struct Duplicates : testing::Test, CleanupSurroundings {
  PersonRef ada() { return person().firstName("Ada").lastName("King").phone("a", "555").email("b", "ada@x"); }

  void search() { DuplicateSearch(services).removeDuplitaceRecord(); }
  Review& review() {
    search();
    tasks.runUntilIdle();
    return presenter.front<Review>();
  }
};

TEST_F(Duplicates, AreShownOneRowAGroup) {
  const auto nameless = [] { return person().email("b", "who@x"); };
  const auto blank = [] { return person().lastName(" \u3000").phone(std::nullopt, ""); };
  putPeople(contacts, {ada(), nameless(), blank(), ada(), nameless(), blank(), ada(), person().note("only one")});
  const Review& screen = review();
  EXPECT_TRUE(matchesGolden("screens/duplicates.txt", *screen.tableHeader() + "\n" + describe(tableOf(screen))));
  EXPECT_EQ(screen.duplicateRecords(), (std::vector<RecordID>{4, 5, 6, 7}));
  EXPECT_EQ(presenter.overlays.size(), 0U);
}

TEST_F(Duplicates, AreSearchedBehindAnOverlayWithTheDeviceAwake) {
  putPeople(contacts, {ada(), ada()});
  search();
  EXPECT_EQ(presenter.overlays, std::vector<std::string>{"DUPLICATE_RECORD_SEARCHING"});
  tasks.runOneInBackground();
  EXPECT_EQ(idleTimer.log, "");
  tasks.runOneOnMain();
  EXPECT_EQ(idleTimer.log, "awake ");
  tasks.runUntilIdle();
  EXPECT_EQ(idleTimer.log, "awake sleepy ");
  EXPECT_FALSE(presenter.checkmark);
  EXPECT_EQ(tasks.slept, std::chrono::seconds(0));
}

TEST_F(Duplicates, ThatAreNotThereMakeANoticeOfTwoSeconds) {
  const auto expectNotice = [&] {
    search();
    tasks.runOneInBackground();
    for (int i = 0; i < 3; ++i)
      tasks.runOneOnMain();
    EXPECT_EQ(presenter.overlays, std::vector<std::string>{"DUPLICATE_RECORD_NOT_FOUND"});
    EXPECT_TRUE(presenter.checkmark);
    tasks.runUntilIdle();
    EXPECT_TRUE(presenter.overlays.empty());
    EXPECT_TRUE(presenter.screens.empty());
    EXPECT_EQ(idleTimer.log, "awake sleepy ");
    idleTimer.log.clear();
  };
  expectNotice();
  EXPECT_EQ(tasks.slept, std::chrono::seconds(2));
  putPeople(contacts, {ada(), person().firstName("Ada")});
  expectNotice();
  contacts.access = AuthorizationStatus::denied;
  expectNotice();
}

TEST_F(Duplicates, AreNotOfferedWhenTheBookCannotBeRead) {
  putPeople(contacts, {ada(), person().firstName("Bob")});
  contacts.failReads({Status::Code::corrupt, "the file is damaged"});
  search();
  tasks.runUntilIdle();
  EXPECT_TRUE(presenter.screens.empty());
  ASSERT_EQ(presenter.alerts.size(), 1U);
  EXPECT_EQ(presenter.alerts.front().message, "CAUSE_CORRUPT");
}

TEST_F(Duplicates, AreRemovedAndTheScreenClosesAfterASecond) {
  putPeople(contacts, {ada(), person().firstName("Bob"), ada(), ada()});
  Review& screen = review();
  EXPECT_TRUE(screen.tapControl("clearDuplicates", 0));
  EXPECT_EQ(presenter.overlays, std::vector<std::string>{"REMOVING"});
  tasks.runOneInBackground();
  EXPECT_EQ(ids(), (std::vector<RecordID>{1, 2}));
  tasks.runOneOnMain();
  EXPECT_TRUE(presenter.checkmark);
  EXPECT_EQ(presenter.overlays, std::vector<std::string>{"REMOVED"});
  EXPECT_EQ(tasks.slept, std::chrono::seconds(1));
  tasks.runUntilIdle();
  EXPECT_TRUE(presenter.screens.empty());
  presenter.settle();
}

TEST_F(Duplicates, StayWhenTheRemovalCannotBeStoredAndASecondTryChangesNothing) {
  putPeople(contacts, {ada(), ada()});
  Review& screen = review();
  contacts.failNextCommit({Status::Code::noSpace, "the disk is full"});
  for (int i = 0; i < 2; ++i) {
    screen.clearDuplicates();
    tasks.runUntilIdle();
    EXPECT_EQ(ids().size(), 2U);
    EXPECT_EQ(presenter.screens.size(), 1U);
    EXPECT_TRUE(presenter.overlays.empty());
    EXPECT_TRUE(presenter.alerts.empty());
    EXPECT_EQ(tableOf(screen).front().rows.size(), 1U);
  }
}

TEST_F(Duplicates, StayWhenTheScreenIsClosed) {
  putPeople(contacts, {ada(), ada()});
  Review& screen = review();
  EXPECT_TRUE(screen.selectRow({0, 0}));
  EXPECT_FALSE(screen.deleteRow({0, 0}));
  EXPECT_FALSE(screen.tapControl("trash", 0));
  EXPECT_TRUE(screen.tapControl("close", 0));
  presenter.settle();
  EXPECT_TRUE(presenter.screens.empty());
  EXPECT_EQ(ids().size(), 2U);
}

// The removal goes on, and has nothing to close.
TEST_F(Duplicates, AreRemovedAlthoughTheScreenHasGone) {
  putPeople(contacts, {ada(), ada()});
  Review& screen = review();
  screen.clearDuplicates();
  screen.close();
  presenter.settle();
  tasks.runUntilIdle();
  EXPECT_EQ(ids().size(), 1U);
}

TEST_F(Duplicates, QuirkARowTakenOutTakesADuplicateWithItsNumber) {
  const auto bob = [] { return person().firstName("Bob"); };
  putPeople(contacts, {ada(), ada(), ada(), bob(), bob()});
  Review& screen = review();
  screen.commitEditingStyle(/*editingStyle=*/2, {0, 1});
  screen.commitEditingStyle(Review::kDeleteStyle, {0, 2});
  EXPECT_EQ(screen.duplicateRecords().size(), 3U);
  screen.commitEditingStyle(Review::kDeleteStyle, {0, 1});
  EXPECT_EQ(screen.duplicateRecords(), (std::vector<RecordID>{2, 5}));
  ASSERT_EQ(screen.numberOfRowsInSection(0), 1);
  EXPECT_EQ(screen.cellForRowAtIndexPath({0, 0}).text, "Ada  King");
}

// The handle goes from the thread of the search to that of the removal.
TEST(DuplicatesOnThreads, AreFoundAndRemovedInADatabase) {
  std::string directory = std::filesystem::temp_directory_path() / "varnok-cleanup-XXXXXX";
  ASSERT_NE(::mkdtemp(directory.data()), nullptr);
  {
    SQLiteContactStoreProvider contacts(directory + "/contacts.db");
    std::vector<PersonRef> people;
    people.reserve(1200);
    for (int i = 0; i < 1200; ++i)
      people.push_back(person().firstName("Ada").phone("a", std::to_string(i % 400)));
    putPeople(contacts, people);
    CleanupSurroundings around;
    ThreadTaskRunner tasks;
    const CleanupServices services{contacts, around.texts,     around.collation, around.clock,
                                   tasks,    around.presenter, around.idleTimer};
    DuplicateSearch(services).removeDuplitaceRecord();
    tasks.runUntil([&] { return tasks.idle(); });
    around.presenter.front<Review>().clearDuplicates();
    tasks.runUntil([&] { return tasks.idle(); });
    EXPECT_TRUE(around.presenter.screens.empty());
    const auto store = ABAddressBookCreateWithOptions(contacts);
    EXPECT_EQ(ABAddressBookGetPersonCount(store.get()), 400);
  }
  std::filesystem::remove_all(directory);
}

}  // namespace
}  // namespace varnok
