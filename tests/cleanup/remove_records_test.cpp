#include <gtest/gtest.h>

#include "cleanup/cleanup_surroundings.h"
#include "cleanup/remove_all_records.h"
#include "cleanup/remove_records_view_controller.h"
#include "support/golden.h"

namespace varnok {
namespace {

struct RecordRemoval : testing::Test, CleanupSurroundings {
  RemoveRecordsViewController& list() {
    presenter.present(std::make_shared<RemoveRecordsViewController>(services));
    tasks.runUntilIdle();
    return presenter.front<RemoveRecordsViewController>();
  }

  // Section titles, each with the rows' texts.
  static std::string seen(const Screen& screen) {
    std::string text;
    for (const TableSection& section : tableOf(screen)) {
      text += "[" + section.title.value_or("-") + "]";
      for (const TableRow& row : section.rows)
        text += " " + row.text + (row.marked ? "*" : "");
      text += "\n";
    }
    return text;
  }

  void putFour() {
    putPeople(contacts, {person().firstName("Ada"), person().firstName("bob"), person().firstName("Eve"),
                         person().firstName("Bert")});
  }
};

TEST_F(RecordRemoval, ShowsEverybodyInSections) {
  const std::string mobile(label::kMobile);
  const std::string work(label::kWork);
  const std::string home(label::kHome);
  putPeople(contacts,
            {person().firstName("Zoe").lastName("Ärmel").phone("own", "1").phone(work, " \t"),
             person().firstName("ärmel").phone(home, "3").phone(work, "2").phone(work, "1").phone(mobile, " "),
             person().text(kABPersonOrganizationProperty, "Acme"), person().lastName("zander"),
             person().firstName(" Ada"), person().firstName("7up"), person().note("nameless")});
  const RemoveRecordsViewController& screen = list();
  EXPECT_TRUE(matchesGolden("screens/remove_records.txt", describe(tableOf(screen))));
  EXPECT_EQ(screen.sectionIndexTitles(), (std::vector<std::string>{"", " ", "7", "Ä", "Z"}));
}

TEST_F(RecordRemoval, SortsByTheNameThatTheUserChoseOrTheOtherOne) {
  putPeople(contacts,
            {person().firstName("Ada").lastName("Zander"), person().firstName("Zoe"), person().lastName("Adler"),
             person().firstName("  ").lastName("Berg"), person().firstName("Ida").lastName("Berg")});
  EXPECT_EQ(seen(list()), "[A] Ada Zander Adler\n[B]    Berg\n[I] Ida Berg\n[Z] Zoe\n");
  contacts.ordering = SortOrdering::byLastName;
  EXPECT_EQ(seen(list()), "[A] Adler\n[B] Berg    Berg Ida\n[Z] Zander Ada Zoe\n");
}

TEST_F(RecordRemoval, QuirkPlainSectionTitlesFollowTheBytes) {
  putPeople(contacts, {person().firstName("Zoe"), person().firstName("Änne")});
  const RemoveRecordsViewController& screen = list();
  EXPECT_EQ(screen.headingOfSection(0).title, "Ä");
  EXPECT_EQ(screen.titleForHeaderInSection(0), "Z");
}

TEST_F(RecordRemoval, LoadsBehindAnOverlay) {
  putFour();
  presenter.present(std::make_shared<RemoveRecordsViewController>(services));
  EXPECT_EQ(presenter.overlays.size(), 1U);
  EXPECT_EQ(presenter.screens.back()->numberOfSections(), 0);
  tasks.runUntilIdle();
  EXPECT_TRUE(presenter.overlays.empty());
  EXPECT_EQ(presenter.screens.back()->numberOfSections(), 3);
}

TEST_F(RecordRemoval, RemovesTheMarkedOnesAfterAQuestion) {
  putFour();
  RemoveRecordsViewController& screen = list();
  EXPECT_TRUE(screen.tapControl("trash", 0));
  EXPECT_TRUE(presenter.alerts.empty());
  EXPECT_FALSE(screen.markRow({1, 2}, /*on=*/true));
  for (const IndexPath& row : {IndexPath{0, 0}, IndexPath{1, 0}, IndexPath{2, 0}})
    EXPECT_TRUE(screen.markRow(row, /*on=*/true));
  EXPECT_TRUE(screen.markRow({2, 0}, /*on=*/false));
  EXPECT_EQ(seen(screen), "[A] Ada*\n[B] Bert* bob\n[E] Eve\n");
  screen.trash(0);
  EXPECT_EQ(presenter.alerts.front().title, "");
  EXPECT_EQ(presenter.alerts.front().message, "REMOVE_SELECTED_MSG");
  EXPECT_EQ(presenter.alerts.front().buttons, (std::vector<std::string>{"Cancel", "OK"}));
  presenter.answer(0);
  tasks.runUntilIdle();
  EXPECT_EQ(ids().size(), 4U);
  screen.trash(0);
  presenter.answer(1);
  EXPECT_EQ(presenter.overlays, std::vector<std::string>{"REMOVING"});
  tasks.runUntilIdle();
  EXPECT_EQ(ids(), (std::vector<RecordID>{2, 3}));
  EXPECT_EQ(seen(screen), "[B] bob\n[E] Eve\n");
  EXPECT_TRUE(presenter.overlays.empty());
  EXPECT_TRUE(presenter.alerts.empty());
}

TEST_F(RecordRemoval, RemovesThroughTheHandleOfTheLoad) {
  putFour();
  RemoveRecordsViewController& screen = list();
  putPeople(contacts, {person().firstName("Late")});
  contacts.access = AuthorizationStatus::denied;
  screen.trash(1);
  presenter.choose(0);
  tasks.runUntilIdle();
  EXPECT_EQ(screen.numberOfSections(), 0);
  contacts.access = AuthorizationStatus::authorized;
  EXPECT_EQ(ids(), std::vector<RecordID>{5});
}

TEST_F(RecordRemoval, ShowsWhoIsLeftWhenTheRemovalCannotBeStored) {
  putFour();
  RemoveRecordsViewController& screen = list();
  screen.markRow({0, 0}, /*on=*/true);
  contacts.failNextCommit({Status::Code::noSpace, "the disk is full"});
  screen.trash(0);
  presenter.answer(1);
  tasks.runUntilIdle();
  EXPECT_EQ(seen(screen), "[A] Ada\n[B] Bert bob\n[E] Eve\n");
  EXPECT_TRUE(presenter.alerts.empty());
}

TEST_F(RecordRemoval, OffersTheWayBackOnceScrolledFar) {
  putFour();
  RemoveRecordsViewController& screen = list();
  const auto hidden = [&] { return screen.controls().back().hidden; };
  screen.scrollViewDidScroll(144);
  EXPECT_TRUE(hidden());
  screen.scrollViewDidScroll(144.5);
  EXPECT_FALSE(hidden());
  EXPECT_TRUE(screen.tapControl("scrollTop", 0));
  EXPECT_TRUE(hidden());
}

TEST_F(RecordRemoval, OutlivesItsScreen) {
  putFour();
  RemoveRecordsViewController& screen = list();
  screen.trash(1);
  presenter.choose(0);
  EXPECT_TRUE(screen.tapControl("close", 0));
  presenter.settle();
  tasks.runUntilIdle();
  EXPECT_TRUE(ids().empty());
  EXPECT_EQ(presenter.alerts.size(), 1U);
}

TEST_F(RecordRemoval, IsEmptyWithoutAccess) {
  putFour();
  contacts.access = AuthorizationStatus::denied;
  RemoveRecordsViewController& screen = list();
  EXPECT_EQ(screen.numberOfSections(), 0);
  screen.trash(1);
  presenter.choose(0);
  tasks.runUntilIdle();
  contacts.access = AuthorizationStatus::authorized;
  EXPECT_EQ(ids().size(), 4U);
}

// The question and the notice are the same on the list and on the settings screen.
struct RemoveAll : RecordRemoval, testing::WithParamInterface<bool> {
  void ask() {
    if (GetParam()) {
      list().trash(1);
    } else {
      RemoveAllRecords(services).onClickRemoveAll();
    }
    ASSERT_EQ(presenter.sheets.size(), 1U);
    const ActionSheet& sheet = presenter.sheets.front();
    EXPECT_EQ(sheet.title, "REMOVE_ALL_MSG");
    EXPECT_EQ(sheet.buttons, (std::vector<std::string>{"OK", "Cancel"}));
    EXPECT_EQ(sheet.destructiveButtonIndex, 0);
    EXPECT_EQ(sheet.cancelButtonIndex, 1);
    EXPECT_EQ(sheet.tag, 2);
  }
  void expectNotice() {
    ASSERT_EQ(presenter.alerts.size(), 1U);
    EXPECT_EQ(presenter.alerts.front().title, "REMOVE_ALL_INFO");
    EXPECT_EQ(presenter.alerts.front().message, std::nullopt);
    EXPECT_EQ(presenter.alerts.front().buttons, std::vector<std::string>{"OK"});
    presenter.answer(0);
  }
};

TEST_P(RemoveAll, RemovesEverybodyAfterAQuestion) {
  putFour();
  ask();
  presenter.choose(1);
  tasks.runUntilIdle();
  EXPECT_EQ(ids().size(), 4U);
  ask();
  presenter.choose(0);
  tasks.runUntilIdle();
  EXPECT_TRUE(ids().empty());
  expectNotice();
  ask();  // Nobody is left.
  presenter.choose(0);
  tasks.runUntilIdle();
  expectNotice();
}

TEST_P(RemoveAll, QuirkTheNoticeComesAlthoughNothingWasStored) {
  putFour();
  ask();
  contacts.failNextCommit({Status::Code::noSpace, "the disk is full"});
  presenter.choose(0);
  tasks.runUntilIdle();
  EXPECT_EQ(ids().size(), 4U);
  expectNotice();
}

INSTANTIATE_TEST_SUITE_P(Screens, RemoveAll, testing::Bool(),
                         [](const auto& screen) { return screen.param ? "List" : "Settings"; });

}  // namespace
}  // namespace varnok
