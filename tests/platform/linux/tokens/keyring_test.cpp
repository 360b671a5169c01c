#include "platform/linux/tokens/keyring.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "platform/linux/curl/dropbox_account.h"
#include "platform/testing/fake_services.h"

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace varnok {
namespace {

// The library's store in a file loses a few bytes of its own.
#ifdef __SANITIZE_ADDRESS__
using LeaksExcused = __lsan::ScopedDisabler;
#else
class LeaksExcused {
 public:
  ~LeaksExcused() {}  // Its object is not taken for an unused one.
};
#endif

// The library's own store in a file stands for the desktop's keyring.
class DropboxAccounts : public testing::Test {
 protected:
  DropboxAccounts() {
    char name[] = "/tmp/varnok-keyring-XXXXXX";
    folder_ = ::mkdtemp(name);
    ::setenv("SECRET_BACKEND", "file", 1);
    ::setenv("SECRET_FILE_TEST_PATH", (folder_ + "/keyring").c_str(), 1);
    ::setenv("SECRET_FILE_TEST_PASSWORD", "password", 1);
  }
  ~DropboxAccounts() override { std::filesystem::remove_all(folder_); }

  std::string path() const { return folder_ + "/account.json"; }
  std::string content() const {
    std::ifstream file(path());
    return {std::istreambuf_iterator<char>(file), {}};
  }

  std::string folder_;
  FakeDeveloperLog log_;
  const DropboxTokens tokens_{"the-access", "the-refresh", 12345, "dbid:1"};
};

TEST_F(DropboxAccounts, AreInTheKeyringWhereThereIsOne) {
  if (openKeyring("test") == nullptr) GTEST_SKIP() << "built without the Secret Service";
  {
    const LeaksExcused storing;
    ASSERT_TRUE(DropboxAccount(path(), openKeyring("test"), log_).link(tokens_).ok());
  }
  EXPECT_EQ(content().find("the-"), std::string::npos) << content();

  DropboxAccount later(path(), openKeyring("test"), log_);
  EXPECT_TRUE(later.isLinked());
  EXPECT_TRUE(later.isInKeyring());
  Status status;
  const auto tokens = later.tokens(status);
  ASSERT_TRUE(tokens.has_value()) << status.message();
  EXPECT_EQ(tokens->accessToken + tokens->refreshToken + tokens->accountID, "the-accessthe-refreshdbid:1");
  EXPECT_EQ(tokens->expires, 12345);

  std::optional<DropboxTokens> known;
  ASSERT_TRUE(later.unlink(known).ok());
  later.clearKeyring();
  EXPECT_EQ(openKeyring("test")->load(status), std::nullopt);
  EXPECT_FALSE(DropboxAccount(path(), openKeyring("test"), log_).isLinked());
}

// Answers nothing, as a service that has gone does.
class DeadKeyring : public Keyring {
 public:
  Status store(const std::string& /*label*/, const std::string& /*secret*/) override { return gone(); }
  std::optional<std::string> load(Status& status) override {
    status = gone();
    return std::nullopt;
  }
  Status clear() override { return gone(); }

 private:
  static Status gone() { return {Status::Code::unavailable, "gone"}; }
};

TEST_F(DropboxAccounts, AreInAFileWhereNoKeyringAnswers) {
  ASSERT_TRUE(DropboxAccount(path(), std::make_unique<DeadKeyring>(), log_).link(tokens_).ok());
  struct stat information {};
  ASSERT_EQ(::stat(path().c_str(), &information), 0);
  EXPECT_EQ(information.st_mode & 0777U, 0600U);
  DropboxAccount later(path(), nullptr, log_);
  EXPECT_FALSE(later.isInKeyring());
  Status status;
  EXPECT_EQ(later.tokens(status)->refreshToken, "the-refresh");
}

TEST_F(DropboxAccounts, StayLinkedWhileTheirKeyringIsAway) {
  std::ofstream(path()) << R"({"keyring":true,"account":"dbid:1"})";
  DropboxAccount account(path(), std::make_unique<DeadKeyring>(), log_);
  Status status;
  EXPECT_EQ(account.tokens(status), std::nullopt);
  EXPECT_EQ(status.code(), Status::Code::unavailable);
  EXPECT_TRUE(account.isLinked());
}

TEST_F(DropboxAccounts, AreNotTakenFromADamagedFile) {
  for (const char* content : {"", "{", "[]", R"({"refreshToken":5})", R"({"accessToken":"a"})"}) {
    std::ofstream(path()) << content;
    EXPECT_FALSE(DropboxAccount(path(), nullptr, log_).isLinked()) << content;
  }
}

TEST_F(DropboxAccounts, ThatWereUnlinkedMeanwhileAreNotKeptAgain) {
  DropboxAccount account(path(), nullptr, log_);
  ASSERT_TRUE(account.link(tokens_).ok());
  std::filesystem::remove(path());  // By another process.
  account.refresh(tokens_);
  EXPECT_FALSE(std::filesystem::exists(path()));
}

}  // namespace
}  // namespace varnok
