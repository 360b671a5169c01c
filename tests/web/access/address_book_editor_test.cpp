#include "web/access/address_book_editor.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "contacts/testing/in_memory_contact_store.h"
#include "support/person_builder.h"
#include "support/person_text.h"

namespace varnok {
namespace {

const std::string kHome(label::kHome);
const std::string kWork(label::kWork);

// One person, as the edits leave it.
struct EditCase {
  std::string name;
  std::string items;  // Of "records".
  std::string expected;
};

class Edits : public testing::TestWithParam<EditCase> {
 protected:
  std::string textOf(RecordID id) {
    Status status;
    const auto store = contacts_.open(status);
    const PersonRef found = store->personWithRecordID(id);
    return found == nullptr ? "nobody" : describe(*found);
  }

  InMemoryContactStoreProvider contacts_;
  AddressBookEditor editor_{contacts_};
};

TEST_P(Edits, LeaveThePerson) {
  putPeople(contacts_, {person()
                            .firstName("Ada")
                            .phone(kHome, "0")
                            .phone(kWork, "1")
                            .phone(std::nullopt, "2")
                            .phone("own", "3")
                            .birthday(0)});
  const auto outcome = editor_.edit(R"({"id":"1","records":[)" + GetParam().items + "]}");
  EXPECT_EQ(outcome.recordID, 0);
  EXPECT_TRUE(outcome.status.ok());
  EXPECT_EQ(textOf(1), GetParam().expected);
}

const std::string kBirthday = "Birthday: 1970-01-01 00:00:00\n";
const std::string kPhones = "Phone: [_$!<Home>!$_] 0 | [_$!<Work>!$_] 1 | [null] 2 | [own] 3\n";
const std::string kUnchanged = "FirstName: Ada\n" + kBirthday + kPhones;

struct ByName {
  template <typename Info>
  std::string operator()(const Info& tested) const {
    return tested.param.name;
  }
};

INSTANTIATE_TEST_SUITE_P(
    , Edits,
    testing::Values(
        EditCase{"SetsATextAsSent", R"({"name":"1","value":" Bo\nb "})", "FirstName:  Bo\\nb \n" + kBirthday + kPhones},
        EditCase{"RemovesAnEmptyText", R"({"name":"1","value":""},{"name":13})", kPhones},
        EditCase{"AddsAtTheEnd", R"({"name":"15","value":"n","type":"-1","identifier":"_$!<Work>!$_"})",
                 "FirstName: Ada\n" + kBirthday + kPhones.substr(0, kPhones.size() - 1) + " | [_$!<Work>!$_] n\n"},
        EditCase{"AddsToAnAbsentList", R"({"name":16,"value":"a@x","type":-1})", kUnchanged + "Email: [null] a@x\n"},
        EditCase{
            "AddsNothingEmpty",
            R"({"name":"15","value":"","type":"-1"},{"name":"15","type":"-1"},{"name":"15","value":null,"type":"-1"})",
            kUnchanged},
        EditCase{
            "ReplacesAndKeepsTheLabel", R"({"name":"15","value":"new","type":"2","identifier":"_$!<Home>!$_"})",
            "FirstName: Ada\n" + kBirthday + "Phone: [_$!<Home>!$_] 0 | [_$!<Work>!$_] 1 | [null] new | [own] 3\n"},
        EditCase{"RemovesFromTheEndOn",
                 R"({"name":"15","value":"","type":"1"},{"name":"15","value":"x","type":"0"},)"
                 R"({"name":"15","value":"","type":"3"})",
                 "FirstName: Ada\n" + kBirthday + "Phone: [_$!<Home>!$_] x | [null] 2\n"},
        EditCase{"RemovesAllEntries",
                 R"({"name":15,"type":0},{"name":15,"type":1},{"name":15,"type":2},{"name":15,"type":3})",
                 "FirstName: Ada\n" + kBirthday},
        EditCase{"PassesOverWhatDoesNotFit",
                 R"(1,null,"x",[],{},{"value":"x"},{"name":"99","value":"x"},{"name":"0","value":""},)"
                 R"({"name":"13","value":"today"},{"name":"15","value":"x"},{"name":"1","value":"x","type":"0"},)"
                 R"({"name":"1","value":"","type":"0"},{"name":"20","value":"x","type":"-1"},)"
                 R"({"name":"15","value":"x","type":"4"},{"name":"15","value":"x","type":"-2"},)"
                 R"({"name":"15","value":"","type":"4"},{"name":"15","value":"","type":"-2"},)"
                 R"({"name":"1","value":5},{"name":"1","value":{}},{"name":"15","value":"x","type":null})",
                 kUnchanged},
        EditCase{"GoOnAfterOneThatDoesNotFit", R"({"name":"13","value":"x"},{"name":"2","value":"L"})",
                 "FirstName: Ada\nLastName: L\n" + kBirthday + kPhones}),
    ByName{});

using WholeEdits = Edits;

TEST_F(WholeEdits, MakeANewPerson) {
  const auto outcome =
      editor_.edit(R"({"id":-1000,"records":[{"name":"1","value":"Ada"},{"name":"15","value":"5","type":"-1"}]})");
  EXPECT_EQ(outcome.recordID, 1);
  EXPECT_EQ(textOf(1), "FirstName: Ada\nPhone: [null] 5\n");
  EXPECT_EQ(editor_.edit(R"({"id":"-1000"})").recordID, 2);
  EXPECT_EQ(textOf(2), "");
}

TEST_F(WholeEdits, OfNobodyChangeNothing) {
  putPeople(contacts_, {person().firstName("Ada")});
  const std::string items = R"("records":[{"name":"1","value":"Eve"}]})";
  for (const std::string& request :
       {R"({"id":"2",)" + items, R"({"id":"-1",)" + items, R"({"id":null,)" + items, R"({"id":"4294967297",)" + items,
        "{" + items, std::string(R"({"id":1,"records":{"name":"1","value":"Eve"}})"), std::string("[]"), std::string(),
        std::string("{\"id\":1,\"records\":[{\"name\":\"1\",\"value\":\"\xFF\"}]}"),
        R"({"id":1,"x":)" + std::string(200, '[') + std::string(200, ']') + "," + items}) {
    const auto outcome = editor_.edit(request);
    EXPECT_EQ(outcome.recordID, 0) << request;
    EXPECT_TRUE(outcome.status.ok());
    EXPECT_EQ(textOf(1), "FirstName: Ada\n") << request;
    EXPECT_EQ(textOf(2), "nobody");
  }
}

TEST_F(WholeEdits, AreAllOrNothing) {
  putPeople(contacts_, {person().firstName("Ada")});
  for (const std::string id : {"1", "-1000"}) {
    contacts_.failNextCommit({Status::Code::noSpace, "full"});
    const auto outcome = editor_.edit(R"({"id":)" + id + R"(,"records":[{"name":"1","value":"Eve"}]})");
    EXPECT_EQ(outcome.status.code(), Status::Code::noSpace);
    EXPECT_EQ(outcome.recordID, id == "1" ? 0 : -1);
  }
  EXPECT_EQ(textOf(1), "FirstName: Ada\n");
  EXPECT_EQ(textOf(2), "nobody");
  contacts_.access = AuthorizationStatus::denied;
  EXPECT_EQ(editor_.edit(R"({"id":-1000})").status.code(), Status::Code::accessDenied);
}

TEST_F(WholeEdits, RemoveWhomTheTextNames) {
  putPeople(contacts_, {person().firstName("Ada"), person().firstName("Bob")});
  EXPECT_FALSE(editor_.remove("3"));
  EXPECT_FALSE(editor_.remove("x"));
  EXPECT_TRUE(editor_.remove("1"));
  EXPECT_EQ(textOf(1), "nobody");
  EXPECT_EQ(textOf(2), "FirstName: Bob\n");
  EXPECT_FALSE(editor_.remove("1"));
}

// Each reads the same list and adds to it.
TEST_F(WholeEdits, AtOnceLoseNothing) {
  constexpr int kThreads = 4;
  constexpr int kEdits = 50;
  putPeople(contacts_, {person().firstName("Ada")});
  std::vector<std::jthread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([this] {
      for (int edit = 0; edit < kEdits; ++edit)
        editor_.edit(R"({"id":1,"records":[{"name":15,"value":"5","type":-1}]})");
    });
  }
  threads.clear();
  Status status;
  const auto store = contacts_.open(status);
  EXPECT_EQ(copyList(store->personWithRecordID(1), kABPersonPhoneProperty).entries.size(), kThreads * kEdits);
}

}  // namespace
}  // namespace varnok
