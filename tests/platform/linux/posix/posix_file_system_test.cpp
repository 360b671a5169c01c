#include "platform/linux/posix/posix_file_system.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "platform/linux/posix/temporary_directory.h"

namespace varnok {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class PosixFileSystemTest : public ::testing::Test {
 protected:
  std::unique_ptr<AtomicFile> begun(const std::string& path) {
    Status status;
    auto file = files_.createAtomic(path, status);
    EXPECT_TRUE(status.ok()) << status.message();
    return file;
  }

  // With those that filesBelow() leaves out.
  int entryCount() const {
    const std::filesystem::directory_iterator entries(directory_.path());
    return static_cast<int>(std::distance(begin(entries), end(entries)));
  }

  const TemporaryDirectory directory_;
  const std::string path_ = directory_ / "backup.vcf";
  PosixFileSystem files_;
};

TEST_F(PosixFileSystemTest, APublishedFileIsReadWhateverTakesItsName) {
  Status status;
  const auto first = begun(path_);
  EXPECT_TRUE(first->append("first").ok());
  const auto open = first->publish(status);
  ASSERT_NE(open, nullptr);
  const auto second = begun(path_);
  EXPECT_TRUE(second->append("second").ok());
  ASSERT_NE(second->publish(status), nullptr);
  EXPECT_EQ(contentOf(path_), "second");
  const int descriptor = open->takeDescriptor();
  EXPECT_EQ(open->takeDescriptor(), -1);
  char bytes[10];
  EXPECT_EQ(std::string_view(bytes, static_cast<std::size_t>(::pread(descriptor, bytes, sizeof bytes, 0))), "first");
  ::close(descriptor);
  EXPECT_EQ(first->publish(status), nullptr);
  EXPECT_FALSE(status.ok());
}

TEST_F(PosixFileSystemTest, ATruncatedFileContinuesWhereItWasCut) {
  const auto file = begun(path_);
  for (const std::string& piece : {std::string(300'000, 'a'), std::string("bcd")})
    EXPECT_TRUE(file->append(piece).ok());
  EXPECT_TRUE(file->truncate(300'001).ok());
  EXPECT_TRUE(file->append("e").ok());
  EXPECT_TRUE(file->commit().ok());
  EXPECT_EQ(contentOf(path_), std::string(300'000, 'a') + "be");
}

TEST_F(PosixFileSystemTest, KnowsItsNamesAndItsRoom) {
  EXPECT_TRUE(files_.isReservedName(".backup.vcf.part-aB3dE9"));
  EXPECT_FALSE(files_.isReservedName("backup.vcf.part-aB3dE9"));
  EXPECT_FALSE(files_.isReservedName(".part-a"));
  EXPECT_GT(files_.freeSpace(directory_.path()), 0U);
  EXPECT_EQ(files_.freeSpace("/nonexistent"), 0U);
}

TEST_F(PosixFileSystemTest, AFileAppearsWholeOrNotAtAll) {
  setContent(path_, "old");
  const std::string large(1'000'000, 'x');
  {
    const auto file = begun(path_);
    for (const std::string& piece : {std::string("a"), large, std::string("b"), std::string()}) {
      EXPECT_TRUE(file->append(piece).ok());
    }
    EXPECT_EQ(contentOf(path_), "old");
    EXPECT_EQ(entryCount(), 2);
    EXPECT_TRUE(file->commit().ok());
    EXPECT_FALSE(file->append("after").ok());
  }
  EXPECT_EQ(contentOf(path_), "a" + large + "b");
  struct stat information {};
  ASSERT_EQ(::stat(path_.c_str(), &information), 0);
  EXPECT_EQ(information.st_mode & 0777U, 0600U);
  EXPECT_TRUE(begun(path_)->append("never committed").ok());
  EXPECT_EQ(contentOf(path_), "a" + large + "b");
  EXPECT_EQ(entryCount(), 1);
}

TEST_F(PosixFileSystemTest, AFullDiskLeavesTheOldFileAndNothingElse) {
  setContent(path_, "old");
  const pid_t child = ::fork();
  if (child == 0) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{300'000, 300'000};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    const auto file = begun(path_);
    Status status;
    for (int i = 0; i < 40 && status.ok(); ++i)
      status = file->append(std::string(10'000, 'x'));
    if (status.ok()) status = file->commit();
    EXPECT_EQ(status.code(), Status::Code::noSpace);
    EXPECT_THAT(status.message(), HasSubstr(path_));
    EXPECT_EQ(file->commit().code(), Status::Code::noSpace);
    ::_exit(HasFailure() ? 1 : 0);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(contentOf(path_), "old");
  EXPECT_EQ(entryCount(), 1);
}

TEST_F(PosixFileSystemTest, FailuresNameThePathAndTheCause) {
  Status status;
  const std::string missing = directory_ / "missing/backup.vcf";
  EXPECT_EQ(files_.createAtomic(missing, status), nullptr);
  EXPECT_EQ(status.code(), Status::Code::notFound);
  EXPECT_THAT(status.message(), AllOf(HasSubstr(missing), HasSubstr("No such file")));
  EXPECT_EQ(files_.readFile(path_, status), std::nullopt);
  EXPECT_EQ(status.code(), Status::Code::notFound);
  EXPECT_EQ(files_.remove(path_).code(), Status::Code::notFound);
  EXPECT_EQ(files_.createAtomic("/proc/backup.vcf", status), nullptr);
  EXPECT_NE(status.code(), Status::Code::ok);
  EXPECT_EQ(files_.readFile(directory_.path(), status), std::nullopt);
  EXPECT_EQ(status.code(), Status::Code::invalidArgument);
}

TEST_F(PosixFileSystemTest, ReadsWholeFiles) {
  Status status;
  for (const std::size_t size : {0U, 1U, 65536U, 3'000'001U}) {
    const std::string content(size, '\0');
    setContent(path_, content);
    EXPECT_EQ(files_.readFile(path_, status), content);
    EXPECT_EQ(files_.attributes(path_)->size, size);
  }
  EXPECT_FALSE(files_.readFile("/proc/self/status", status)->empty());  // Says that it is empty.
  ASSERT_EQ(::mkfifo((directory_ / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(files_.readFile(directory_ / "pipe", status), std::nullopt);  // And does not wait.
  EXPECT_EQ(files_.attributes(directory_.path()), std::nullopt);
}

TEST_F(PosixFileSystemTest, ListsRegularFilesBelowWithoutFollowingLinks) {
  std::filesystem::create_directories(directory_ / "one/two");
  setContent(path_, "");
  setContent(directory_ / "one/two/photo.vcf", "");
  setContent(directory_ / ".part-time", "");
  std::filesystem::create_directory_symlink(directory_.path(), directory_ / "one/loop");
  std::filesystem::create_symlink(path_, directory_ / "link.vcf");
  const auto onItsWay = begun(directory_ / "one/new.vcf");
  EXPECT_THAT(files_.filesBelow(directory_.path()),
              UnorderedElementsAre("backup.vcf", "one/two/photo.vcf", ".part-time"));
  EXPECT_THAT(files_.filesBelow(directory_ / "missing"), IsEmpty());
}

TEST_F(PosixFileSystemTest, SurvivesATreeDeeperThanAPathCanBe) {
  const int start = ::open(".", O_RDONLY | O_DIRECTORY);
  ASSERT_EQ(::chdir(directory_.path().c_str()), 0);
  const std::string name(200, 'd');
  for (int depth = 0; depth < 100; ++depth) {
    setContent("file", "");
    ASSERT_EQ(::mkdir(name.c_str(), 0700), 0);
    ASSERT_EQ(::chdir(name.c_str()), 0);
  }
  ASSERT_EQ(::fchdir(start), 0);
  ::close(start);
  const auto found = files_.filesBelow(directory_.path());
  EXPECT_GE(found.size(), 15U);
  EXPECT_LT(found.size(), 100U);
}

TEST_F(PosixFileSystemTest, RemovesOnlyPartsWhoseWriterIsGone) {
  const auto alive = begun(path_);
  setContent(directory_ / ".gone.vcf.part-AbC123", "");
  setContent(directory_ / ".part-AbC123", "");
  setContent(directory_ / "gone.vcf.part-AbC123", "");
  setContent(directory_ / ".gone.vcf.part-AbC1-3", "");
  removeStaleParts(directory_.path());
  EXPECT_EQ(entryCount(), 4);  // All but the first.
  EXPECT_TRUE(alive->commit().ok());
  EXPECT_TRUE(std::filesystem::exists(path_));
}

TEST_F(PosixFileSystemTest, ALockIsHeldOnce) {
  Status status;
  auto lock = files_.tryLock(path_, status);
  ASSERT_NE(lock, nullptr);
  EXPECT_EQ(files_.tryLock(path_, status), nullptr);
  EXPECT_EQ(status.code(), Status::Code::busy);
  lock.reset();
  EXPECT_NE(files_.tryLock(path_, status), nullptr);
}

TEST_F(PosixFileSystemTest, MakesDirectories) {
  const std::string deep = directory_ / "one//two/three/";
  EXPECT_TRUE(makeDirectories(deep).ok());
  EXPECT_TRUE(makeDirectories(deep).ok());
  EXPECT_TRUE(std::filesystem::is_directory(deep));
  EXPECT_EQ(std::filesystem::status(directory_ / "one").permissions(), std::filesystem::perms::owner_all);
  setContent(path_, "");
  EXPECT_FALSE(makeDirectories(path_ + "/below").ok());
}

}  // namespace
}  // namespace varnok
