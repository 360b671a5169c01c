// The promises of an address book, over the embedded one and the one in memory;
// then a random walk that does the same to both and compares.

#include "contract/contact_store_contract.h"
#include "contacts/testing/in_memory_contact_store.h"
#include "contract/contact_store_walk.h"
#include "platform/linux/sqlite/sqlite_contact_store.h"

namespace varnok {
namespace {

const Backend kInMemory{"InMemory", [](const auto&) { return std::make_unique<InMemoryContactStoreProvider>(); }};
const Backend kSQLite{"SQLite", [](const TemporaryDirectory& directory) {
                        return std::make_unique<SQLiteContactStoreProvider>(directory.file("contacts.db"));
                      }};

INSTANTIATE_TEST_SUITE_P(, ContactStoreContract, testing::Values(kInMemory, kSQLite), nameOfBackend);

// --- A connection that is kept from handle to handle ---

int countIn(ContactStoreProvider& provider) {
  Status status;
  const auto store = provider.open(status);
  EXPECT_TRUE(status.ok()) << status.message();
  return store == nullptr ? -1 : store->personCount();
}

TEST(SQLiteContactStore, AKeptConnectionFollowsOthersAndAReplacedFile) {
  const TemporaryDirectory directory;
  const auto ours = kSQLite.make(directory);
  EXPECT_EQ(countIn(*ours), 0);
  {
    Status status;
    const auto others = kSQLite.make(directory)->open(status);
    ASSERT_TRUE(others->addRecord(ABPersonCreate()).ok());
    ASSERT_TRUE(others->save().ok());
  }
  EXPECT_EQ(countIn(*ours), 1);
  std::filesystem::rename(directory.file("contacts.db"), directory.file("earlier.db"));
  EXPECT_EQ(countIn(*ours), 0);
}

TEST(ContactStoreRandomWalk, BothBackendsGiveEqualBooks) {
  const TemporaryDirectory directory;
  const auto memory = kInMemory.make(directory);
  const auto sqlite = kSQLite.make(directory);
  std::vector<WalkedBook> books;
  books.push_back({*memory});
  books.push_back({*sqlite});
  walk(std::move(books), 2000, 20);
}

}  // namespace
}  // namespace varnok
