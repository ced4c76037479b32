#include "platform/core/FileLock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <stdexcept>

#include "platform/dictionary/DictionaryStore.h"
#include "platform/trade/SqliteStore.h"
#include "tests/platform/dictionary/TempFolder.h"

namespace orvane::testing {
namespace {

using detail::FileLock;

/// The text of the refusal; empty if the lock was given.
template <typename Held = FileLock, typename... More>
std::string refusalOf(const std::string& path, More... more) {
  try {
    const Held held(path, more...);
    return {};
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

/// What `work` answers in a process of its own.
template <typename Work>
int inAnotherProcess(Work work) {
  const pid_t child = fork();
  if (child == 0) _exit(work());
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// Whether another process would be refused a lock of SQLite's for writing.
bool isLockedForOthers(const std::string& path) {
  constexpr off_t kFirstSharedByte = 0x40000000 + 2;
  return inAnotherProcess([&] {
           struct flock its {};
           its.l_type = F_WRLCK;
           its.l_whence = SEEK_SET;
           its.l_start = kFirstSharedByte;
           its.l_len = 510;
           const int file = open(path.c_str(), O_RDWR);
           return fcntl(file, F_GETLK, &its) == 0 && its.l_type != F_UNLCK ? 1 : 0;
         }) == 1;
}

TEST(FileLock, shouldRefuseASecondOwnerUntilTheFirstIsGone) {
  const TempFolder folder;
  const std::string path = folder.file("a.db");
  {
    const FileLock first(path);
    EXPECT_NE(refusalOf(path).find("in use"), std::string::npos);
    std::filesystem::create_symlink(path, folder.file("link.db"));
    EXPECT_NE(refusalOf(folder.file("link.db")), "");
    EXPECT_EQ(refusalOf(folder.file("b.db")), "") << "another file";
    EXPECT_NE(refusalOf(path), "") << "a refusal took nothing away from the first";
  }
  EXPECT_EQ(refusalOf(path), "");
}

TEST(FileLock, shouldKeepAFolderForOneOwnerAndLeaveNothingInIt) {
  const TempFolder folder;
  const std::string path = folder.file("report");
  std::filesystem::create_directory(path);
  {
    const FileLock first(path);
    EXPECT_EQ(refusalOf(path + "/"),
              "it is in use by another run; take another folder, or wait for its end");
    EXPECT_EQ(inAnotherProcess([&] { return refusalOf(path).empty() ? 1 : 0; }), 0);
    EXPECT_EQ(refusalOf(path + "/x.db"), "") << "a file in it";
    std::filesystem::remove(path + "/x.db");
  }
  EXPECT_EQ(refusalOf(path), "");
  EXPECT_TRUE(std::filesystem::is_empty(path));
}

TEST(FileLock, shouldRefuseAnotherProcessAndGoWithItsOwner) {
  const TempFolder folder;
  const std::string path = folder.file("a.db");
  int ready[2], end[2];
  ASSERT_EQ(pipe(ready), 0);
  ASSERT_EQ(pipe(end), 0);
  const pid_t owner = fork();
  if (owner == 0) {
    const FileLock held(path);
    char byte = 'x';
    if (write(ready[1], &byte, 1) == 1 && read(end[0], &byte, 1) >= 0) _exit(0);
    _exit(1);
  }
  char byte = 0;
  ASSERT_EQ(read(ready[0], &byte, 1), 1);
  EXPECT_NE(refusalOf(path).find("in use"), std::string::npos);
  kill(owner, SIGKILL);
  waitpid(owner, nullptr, 0);
  EXPECT_EQ(refusalOf(path), "");
  for (const int each : {ready[0], ready[1], end[0], end[1]}) close(each);
}

TEST(FileLock, shouldKeepADictionaryForOneRun) {
  const TempFolder folder;
  const std::string path = folder.file("d.db");
  const detail::DictionaryStore first(path, true);
  const std::string refusal = refusalOf<detail::DictionaryStore>(path, true);
  EXPECT_TRUE(refusal.starts_with("dictionary " + path + ": it is in use")) << refusal;
}

TEST(FileLock, shouldKeepATradeStoreForOneRun) {
  const TempFolder folder;
  const std::string path = folder.file("s.db");
  const detail::SqliteStore first(path);
  const std::string refusal = refusalOf<detail::SqliteStore>(path);
  EXPECT_TRUE(refusal.starts_with("store " + path + ": it is in use")) << refusal;
}

TEST(FileLock, shouldLeaveSqliteItsOwnLocksSoThatNobodyThrowsTheLogAway) {
  const TempFolder folder;
  const std::string path = folder.file("d.db");
  const detail::DictionaryStore first(path, true);
  EXPECT_TRUE(isLockedForOthers(path));
  EXPECT_NE(refusalOf<detail::DictionaryStore>(path, true), "");
  EXPECT_TRUE(isLockedForOthers(path));
}

}  // namespace
}  // namespace orvane::testing
