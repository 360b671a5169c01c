// The store over a book that does what a test says, for what the real service
// does too seldom.

#include "platform/linux/eds/eds_contact_store.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <map>

#include "contacts/address_book.h"
#include "platform/linux/eds/card.h"
#include "platform/linux/posix/posix_clock.h"
#include "platform/linux/text/icu_text_codec.h"
#include "platform/testing/manual_task_runner.h"

namespace varnok {
namespace {

using Strings = std::vector<std::string>;

// What the service holds, and how it behaves.
struct Service {
  std::map<std::string, std::string> cards;  // By UID.
  Strings calls;
  std::string failing;  // The call that fails.
  bool renames = false;
  Status answer;  // To whoever connects.
  int revision = 0;
};

class ObedientBook : public EdsBook {
 public:
  explicit ObedientBook(Service& service) : service_(service) {}

  const EdsSource& source() const override { return source_; }
  std::string revision() override { return service_.revision == 0 ? "" : std::to_string(service_.revision); }
  Status fetch(Strings& cards) override {
    if (Status status = called("fetch"); !status.ok()) return status;
    for (const auto& [uid, card] : service_.cards)
      cards.push_back(card);
    return {};
  }
  Status fetchSome(const Strings& uids, Strings& cards) override {
    for (const std::string& uid : uids) {
      if (service_.cards.contains(uid)) cards.push_back(service_.cards[uid]);
    }
    return called("fetchSome");
  }
  Status add(const Strings& cards, Strings& uids) override {
    if (Status status = called("add"); !status.ok()) return status;
    for (const std::string& card : cards) {
      std::string uid = uidOf(card);
      if (service_.renames) uid = "server-" + std::to_string(service_.cards.size());
      service_.cards[uid] = service_.renames ? "BEGIN:VCARD\r\nUID:" + uid + "\r\nFN:x\r\nEND:VCARD\r\n" : card;
      uids.push_back(uid);
    }
    return {};
  }
  Status modify(const Strings& cards) override {
    if (Status status = called("modify"); !status.ok()) return status;
    for (const std::string& card : cards)
      service_.cards[uidOf(card)] = card;
    return {};
  }
  Status remove(const Strings& uids) override {
    if (Status status = called("remove"); !status.ok()) return status;
    for (const std::string& uid : uids)
      service_.cards.erase(uid);
    return {};
  }

 private:
  static std::string uidOf(const std::string& card) { return std::string(Card(card).valueOf("UID").value_or("")); }
  Status called(const std::string& name) {
    service_.calls.push_back(name);
    return name == service_.failing ? Status(Status::Code::unavailable, "it went away") : Status();
  }

  Service& service_;
  const EdsSource source_{"book", "Book", true, true};
};

class EdsContactStore : public testing::Test {
 protected:
  EdsContactStore() {
    for (const char* uid : {"a", "b", "c"})
      service_.cards[uid] = std::string("BEGIN:VCARD\r\nUID:") + uid + "\r\nFN:" + uid + "\r\nEND:VCARD\r\n";
  }
  ~EdsContactStore() override { std::filesystem::remove_all(folder_); }

  std::unique_ptr<ContactStore> open() {
    Status status;
    auto store = provider_.open(status);
    EXPECT_EQ(status.code(), service_.answer.code());
    return store;
  }

  // Adds one person, changes the first, removes the second.
  static Status saveOneOfEach(ContactStore& store) {
    const PersonArray people = store.allPeople();
    EXPECT_TRUE(store.addRecord(ABPersonCreate()).ok());
    EXPECT_TRUE(people[0]->setValue(kABPersonNoteProperty, "changed").ok());
    EXPECT_TRUE(store.removeRecord(people[1]).ok());
    return store.save();
  }

  static std::string newFolder() {
    char name[] = "/tmp/varnok-eds-XXXXXX";
    return ::mkdtemp(name);
  }

  const std::string folder_ = newFolder();
  Service service_;
  IcuTextCodec codec_;
  PosixClock clock_;
  ManualTaskRunner tasks_;
  EdsContactStoreProvider provider_{{"", folder_ + "/ids.db", SortOrdering::byFirstName},
                                    codec_,
                                    clock_,
                                    tasks_,
                                    [this](const std::string& /*uid*/, Status& status) {
                                      status = service_.answer;
                                      return status.ok() ? std::make_unique<ObedientBook>(service_) : nullptr;
                                    }};
};

TEST_F(EdsContactStore, AddsThenChangesThenRemoves) {
  auto store = open();
  ASSERT_TRUE(saveOneOfEach(*store).ok());
  EXPECT_EQ(service_.calls, (Strings{"fetch", "fetchSome", "add", "modify", "remove"}));
  EXPECT_EQ(store->personCount(), 3);
}

TEST_F(EdsContactStore, ReportsThePartThatFailedAndReadsAgain) {
  struct Row {
    std::string failing;
    std::string message;
    std::size_t stored;
  };
  for (const auto& [failing, message, stored] : {
           Row{"fetchSome", "looking up what changes failed (it went away); nothing was changed", 3},
           Row{"add", "adding contacts failed (it went away); nothing else was changed", 3},
           Row{"modify", "changing contacts failed (it went away); 1 contacts had been added", 4},
           Row{"remove",
               "removing contacts failed (it went away); 1 contacts had been added; 1 contacts had been changed", 5},
       }) {
    auto store = open();
    service_.failing = failing;
    const Status status = saveOneOfEach(*store);
    EXPECT_EQ(status.message(), "the address book \"Book\": " + message);
    EXPECT_EQ(service_.cards.size(), stored);
    EXPECT_EQ(store->allPeople().size(), stored) << "the handle believes what is not so";
    service_.failing.clear();
  }
}

TEST_F(EdsContactStore, AFailedReadIsRememberedAndNotRepeated) {
  auto store = open();
  service_.failing = "fetch";
  EXPECT_EQ(store->personCount(), 0);
  EXPECT_EQ(store->personWithRecordID(1), nullptr);
  EXPECT_EQ(store->readStatus().message(), "it went away");
  EXPECT_EQ(service_.calls.size(), 1U);
}

TEST_F(EdsContactStore, CountsWithoutReadingWhileTheRevisionStays) {
  service_.revision = 1;
  EXPECT_EQ(open()->personCount(), 3);
  EXPECT_EQ(open()->personCount(), 3);
  EXPECT_EQ(service_.calls, Strings{"fetch"});

  // Somebody else's change.
  service_.cards.erase("c");
  service_.revision = 2;
  EXPECT_EQ(open()->personCount(), 2);

  // Our own, of which the service has not told yet.
  auto store = open();
  ASSERT_TRUE(store->addRecord(ABPersonCreate()).ok());
  ASSERT_TRUE(store->save().ok());
  EXPECT_EQ(store->personCount(), 3);
  EXPECT_EQ(open()->personCount(), 3);

  // A service that names no revision.
  service_.revision = 0;
  service_.cards.erase("a");
  EXPECT_EQ(open()->personCount(), 2);
}

TEST_F(EdsContactStore, NumbersStayWithTheirPeopleAndAreNotUsedAgain) {
  const std::vector<RecordID> ids = open()->allPeople().ids();
  const std::string card = service_.cards["b"];
  service_.cards.erase("b");
  service_.cards["0"] = "BEGIN:VCARD\r\nUID:0\r\nFN:new\r\nEND:VCARD\r\n";
  EXPECT_EQ(open()->allPeople().ids(), (std::vector<RecordID>{ids[0], ids[2], ids[2] + 1}));
  service_.cards["b"] = card;
  EXPECT_EQ(open()->allPeople().ids(), (std::vector<RecordID>{ids[0], ids[1], ids[2], ids[2] + 1}));
}

TEST_F(EdsContactStore, FollowsAServiceThatGivesNamesOfItsOwn) {
  service_.renames = true;
  auto store = open();
  const PersonRef person = ABPersonCreate();
  ASSERT_TRUE(store->addRecord(person).ok());
  ASSERT_TRUE(store->save().ok());
  EXPECT_EQ(copyText(store->personWithRecordID(person->recordID()), kABPersonFirstNameProperty), "x");
}

TEST_F(EdsContactStore, IsDeniedOrUndeterminedAsTheServiceAnswers) {
  service_.answer = {Status::Code::unavailable, "nobody there"};
  EXPECT_EQ(open(), nullptr);
  EXPECT_EQ(provider_.authorizationStatus(), AuthorizationStatus::notDetermined);
  service_.answer = {Status::Code::accessDenied, "no"};
  EXPECT_EQ(open(), nullptr);
  EXPECT_EQ(provider_.authorizationStatus(), AuthorizationStatus::denied);
  service_.answer = {};
  EXPECT_NE(open(), nullptr);
  EXPECT_EQ(provider_.authorizationStatus(), AuthorizationStatus::authorized);
}

}  // namespace
}  // namespace varnok
