// The desktop's address book over the real service, on a bus of its own: run by
// tests/support/with_private_bus.sh.

#include <csignal>
#include <cstdio>
#include <set>
#include <sstream>
#include <stdexcept>

#include "contacts/testing/in_memory_contact_store.h"
#include "contract/contact_store_contract.h"
#include "contract/contact_store_walk.h"
#include "platform/linux/eds/card.h"
#include "platform/linux/eds/eds_contact_store.h"
#include "platform/linux/posix/posix_clock.h"
#include "platform/linux/sqlite/sqlite_contact_store.h"
#include "platform/linux/text/icu_text_codec.h"
#include "platform/testing/manual_task_runner.h"

namespace varnok {
namespace {

using Strings = std::vector<std::string>;

Strings cardsOf(EdsBook& book) {
  Strings cards;
  const Status status = book.fetch(cards);
  EXPECT_TRUE(status.ok()) << status.message();
  return cards;
}

std::string uidOf(const std::string& card) {
  return std::string(Card(card).valueOf("UID").value_or(""));
}

std::unique_ptr<EdsBook> systemBook() {
  Status status;
  auto book = openEdsBook("", status);
  if (book == nullptr) throw std::runtime_error(status.message());
  return book;
}

void clearBook() {
  const auto book = systemBook();
  Strings uids;
  for (const std::string& card : cardsOf(*book))
    uids.push_back(uidOf(card));
  const Status status = book->remove(uids);
  EXPECT_TRUE(status.ok()) << status.message();
}

class EdsBackend : public EdsContactStoreProvider {
 public:
  explicit EdsBackend(const std::string& numbers)
      : EdsContactStoreProvider({"", numbers, SortOrdering::byFirstName}, codec_, clock_, tasks_) {}

 private:
  IcuTextCodec codec_;
  PosixClock clock_;
  ManualTaskRunner tasks_;
};

const Backend kEds{"Eds", [](const TemporaryDirectory& directory) {
                     clearBook();
                     return std::make_unique<EdsBackend>(directory.file("eds-ids.db"));
                   }};

INSTANTIATE_TEST_SUITE_P(, ContactStoreContract, testing::Values(kEds), nameOfBackend);

TEST(ContactStoreRandomWalk, ThreeBackendsGiveEqualBooks) {
  const TemporaryDirectory directory;
  const auto eds = kEds.make(directory);
  InMemoryContactStoreProvider memory;
  SQLiteContactStoreProvider sqlite(directory.file("contacts.db"));
  std::vector<WalkedBook> books;
  books.push_back({memory});
  books.push_back({sqlite});
  books.push_back({*eds});
  walk(std::move(books), 1000, 25);
}

class EdsService : public testing::Test {
 protected:
  std::unique_ptr<ContactStore> open() {
    Status status;
    auto store = provider_->open(status);
    if (store == nullptr) throw std::runtime_error(status.message());
    return store;
  }

  RecordID addSaved(const std::string& firstName, const std::optional<std::string>& image = std::nullopt) {
    auto store = open();
    const PersonRef person = ABPersonCreate();
    EXPECT_TRUE(person->setValue(kABPersonFirstNameProperty, firstName).ok());
    person->setImage(image);
    EXPECT_TRUE(store->addRecord(person).ok());
    const Status status = store->save();
    EXPECT_TRUE(status.ok()) << status.message();
    return person->recordID();
  }

  TemporaryDirectory directory_;
  std::unique_ptr<ContactStoreProvider> provider_ = kEds.make(directory_);
};

TEST_F(EdsService, AskedForAccessGivesIt) {
  IcuTextCodec codec;
  PosixClock clock;
  ManualTaskRunner tasks;
  EdsContactStoreProvider provider({"", directory_.file("ids.db"), SortOrdering::byLastName}, codec, clock, tasks);
  EXPECT_EQ(provider.authorizationStatus(), AuthorizationStatus::notDetermined);
  std::optional<bool> answer;
  provider.requestAccess([&](bool granted, const Status& /*error*/) { answer = granted; });
  EXPECT_EQ(answer, std::nullopt);
  tasks.runUntilIdle();
  EXPECT_EQ(answer, true);
  EXPECT_EQ(provider.authorizationStatus(), AuthorizationStatus::authorized);
}

TEST_F(EdsService, ListsItsBooksAndKnowsNoOthers) {
  Status status;
  const auto sources = edsSources(status);
  ASSERT_TRUE(status.ok()) << status.message();
  ASSERT_FALSE(sources.empty());
  EXPECT_TRUE(sources[0].isSystem);
  EXPECT_TRUE(sources[0].isWritable);
  EXPECT_NE(openEdsBook(sources[0].uid, status), nullptr);
  EXPECT_EQ(openEdsBook("nobody's", status), nullptr);
  EXPECT_EQ(status.code(), Status::Code::notFound);
}

TEST_F(EdsService, KeepsWhatItDoesNotKnowWhenAnotherPropertyChanges) {
  const auto book = systemBook();
  Strings uids;
  ASSERT_TRUE(book->add({"BEGIN:VCARD\r\nVERSION:3.0\r\nUID:theirs\r\nFN:Ada\r\nN:;Ada;;;\r\nCATEGORIES:a,b\r\n"
                         "item1.X-UNKNOWN;X-P=\"q:r\":1;2\\;3\r\nTEL;TYPE=PREF,HOME:1\r\nTEL;TYPE=WORK:2\r\n"
                         "LOGO;VALUE=uri:http://example.org/x\r\nEND:VCARD\r\n"},
                        uids)
                  .ok());
  auto store = open();
  const PersonRef ada = store->allPeople()[0];
  ASSERT_TRUE(ada->setValue(kABPersonNoteProperty, "new").ok());
  MultiValue numbers = copyList(ada, kABPersonPhoneProperty);
  numbers.entries[1].value = "3";
  ASSERT_TRUE(ada->setValue(kABPersonPhoneProperty, numbers).ok());
  ASSERT_TRUE(store->save().ok());
  const Card card(cardsOf(*book).at(0));
  const std::set<std::string> lines(card.lines().begin(), card.lines().end());
  for (const char* kept : {"UID:theirs", "CATEGORIES:a,b", "item1.X-UNKNOWN;X-P=\"q:r\":1;2\\;3",
                           "LOGO;VALUE=uri:http://example.org/x", "NOTE:new", "FN:Ada"}) {
    EXPECT_TRUE(lines.contains(kept)) << card.text();
  }
  EXPECT_NE(card.text().find("TYPE=PREF,HOME"), std::string::npos) << "a number that stayed lost what stood with it";
}

TEST_F(EdsService, KeepsPicturesAsTheyAre) {
  std::string picture = "\x89PNG\r\n\x1a\n";
  for (int i = 0; i < 100'000; ++i)
    picture += static_cast<char>(i * 7);
  const RecordID id = addSaved("Ada", picture);
  auto store = open();
  EXPECT_EQ(store->personWithRecordID(id)->image(), picture);
  ASSERT_TRUE(store->personWithRecordID(id)->setValue(kABPersonLastNameProperty, "L").ok());
  ASSERT_TRUE(store->save().ok());
  EXPECT_EQ(store->personWithRecordID(id)->image(), picture);
}

TEST_F(EdsService, ABookOfAnySizeIsSavedInAFewCalls) {
  auto store = open();
  constexpr int kPeople = 6000;
  for (int i = 0; i < kPeople; ++i) {
    const PersonRef person = ABPersonCreate();
    ASSERT_TRUE(person->setValue(kABPersonFirstNameProperty, std::to_string(i)).ok());
    ASSERT_TRUE(store->addRecord(person).ok());
  }
  ASSERT_TRUE(store->save().ok());
  PersonArray people = store->allPeople();
  ASSERT_EQ(people.size(), kPeople);
  for (std::size_t i = 0; i < people.size(); i += 2)
    ASSERT_TRUE(store->removeRecord(people[i]).ok());
  ASSERT_TRUE(people[1]->setValue(kABPersonFirstNameProperty, "changed").ok());
  const Status status = store->save();
  ASSERT_TRUE(status.ok()) << status.message();
  people = store->allPeople();
  ASSERT_EQ(people.size(), kPeople / 2);
  EXPECT_EQ(copyText(people[0], kABPersonFirstNameProperty), "changed");
  EXPECT_EQ(copyText(people[1], kABPersonFirstNameProperty), "3");
}

// --- The service ends, or stands still ---

std::string outputOf(const std::string& command) {
  std::string output;
  FILE* pipe = ::popen(command.c_str(), "r");
  for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
    output += static_cast<char>(c);
  ::pclose(pipe);
  return output;
}

// The processes of the service, by the names that they have on the bus.
std::set<pid_t> servicePids() {
  const std::string call =
      "dbus-send --session --print-reply=literal --dest=org.freedesktop.DBus / org.freedesktop.DBus.";
  std::set<pid_t> pids;
  std::istringstream names(outputOf(call + "ListNames"));
  for (std::string name; names >> name;) {
    if (!name.starts_with("org.gnome.evolution.dataserver.")) continue;
    const std::string answer = outputOf(call + "GetConnectionUnixProcessID string:" + name + " 2>/dev/null");
    const std::size_t digits = answer.find_last_of(' ');
    if (digits != std::string::npos) pids.insert(std::stoi(answer.substr(digits + 1)));
  }
  return pids;
}

void signalService(int signal) {
  const auto pids = servicePids();
  EXPECT_FALSE(pids.empty());
  for (const pid_t pid : pids)
    ::kill(pid, signal);
  if (signal != SIGKILL) return;
  while (!servicePids().empty())
    ::usleep(10'000);
}

using AnEdsServiceThatEnds = EdsService;

std::chrono::duration<double> timeOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::steady_clock::now() - start;
}

TEST_F(AnEdsServiceThatEnds, IsStartedAgain) {
  const RecordID id = addSaved("Ada");
  auto store = open();
  signalService(SIGKILL);
  EXPECT_EQ(copyText(store->personWithRecordID(id), kABPersonFirstNameProperty), "Ada");
  EXPECT_TRUE(store->readStatus().ok()) << store->readStatus().message();
  signalService(SIGKILL);
  EXPECT_GT(addSaved("Bob"), id);
  EXPECT_EQ(open()->personCount(), 2);
}

// Whoever was there before is there after it, and what the handle believes is
// what is stored.
TEST_F(AnEdsServiceThatEnds, DuringASaveLosesNobody) {
  const RecordID id = addSaved("Ada");
  auto store = open();
  for (int i = 0; i < 4000; ++i)
    ASSERT_TRUE(store->addRecord(ABPersonCreate()).ok());
  std::jthread killer([pids = servicePids()] {
    ::usleep(150'000);
    for (const pid_t pid : pids)
      ::kill(pid, SIGKILL);
  });
  Status status;
  const auto took = timeOf([&] { status = store->save(); });
  killer.join();
  EXPECT_LT(took.count(), 60);
  EXPECT_EQ(status.ok() ? "" : status.message().substr(0, 16), status.ok() ? "" : "the address book")
      << status.message();
  const int believed = store->personCount();
  ASSERT_TRUE(store->readStatus().ok()) << store->readStatus().message();
  EXPECT_EQ(believed, open()->personCount());
  EXPECT_GE(believed, status.ok() ? 4001 : 1);
  EXPECT_EQ(copyText(store->personWithRecordID(id), kABPersonFirstNameProperty), "Ada");
}

TEST_F(AnEdsServiceThatEnds, OrStandsStillIsGivenUpInTime) {
  addSaved("Ada");
  auto store = open();
  ASSERT_TRUE(store->addRecord(ABPersonCreate()).ok());
  signalService(SIGSTOP);
  Status status;
  const auto took = timeOf([&] { status = store->save(); });
  EXPECT_EQ(status.code(), Status::Code::unavailable);
  EXPECT_LT(took.count(), 10);
  const auto tookToOpen = timeOf([&] { EXPECT_EQ(provider_->open(status), nullptr); });
  EXPECT_EQ(status.code(), Status::Code::unavailable);
  EXPECT_LT(tookToOpen.count(), 10);
  EXPECT_LT(timeOf([&] { EXPECT_EQ(provider_->open(status), nullptr); }).count(), 1) << "it was waited for again";
  signalService(SIGCONT);
  std::unique_ptr<ContactStore> again;
  for (int i = 0; i < 100 && again == nullptr; ++i) {
    ::usleep(100'000);
    again = provider_->open(status);
  }
  ASSERT_NE(again, nullptr) << status.message();
  EXPECT_GE(again->personCount(), 1);
}

}  // namespace
}  // namespace varnok
