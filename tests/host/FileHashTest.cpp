#include "host/FileHash.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/host/Program.h"

namespace orvane {
namespace {

TEST(FileHash, shouldBeTheXxh3OfTheBytes) {
  const test::TempFolder folder;
  const auto hashes = hashesOf({folder.write("a", "abc"), folder.write("empty", "")});
  ASSERT_EQ(hashes.size(), 2u);
  // As the xxhsum tool tells them.
  EXPECT_EQ(hashes[0].xxh3, "06b05ab6733a618578af5f94892f3950");
  EXPECT_EQ(hashes[0].bytes, 3u);
  EXPECT_EQ(hashes[1].xxh3, "99aa06d3014798d86001c324468d497f");
  EXPECT_EQ(hashes[1].bytes, 0u);
}

TEST(FileHash, shouldCoverFilesOfAnyLength) {
  const test::TempFolder folder;
  std::string text(3'000'000, 'x');
  const std::string one = folder.write("one", text);
  text.back() = 'y';
  const auto hashes = hashesOf({one, folder.write("other", text)});
  ASSERT_EQ(hashes.size(), 2u);
  EXPECT_EQ(hashes[0].bytes, 3'000'000u);
  EXPECT_NE(hashes[0].xxh3, hashes[1].xxh3);
}

TEST(FileHash, shouldHashEachFileOnceAndLeaveOutWhatIsNoOrdinaryFile) {
  const test::TempFolder folder;
  const std::string file = folder.write("a", "abc"), pipe = folder / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const auto hashes = hashesOf({file, pipe, folder / "missing", file});
  ASSERT_EQ(hashes.size(), 1u);
  EXPECT_EQ(hashes[0].file, file);
}

TEST(FileHash, shouldFindTheFilesOfASeriesByTheirNames) {
  const std::vector<FileHash> hashes = {{"a", 1, "1"}, {"a, b", 2, "2"}, {"c", 3, "3"}};
  const auto namesIn = [&hashes](const std::string& names) {
    std::string found;
    for (const FileHash& hash : hashesIn(hashes, names)) found += hash.xxh3;
    return found;
  };
  EXPECT_EQ(namesIn("a"), "1");
  EXPECT_EQ(namesIn("a, c"), "13");
  EXPECT_EQ(namesIn("c, a, b"), "32");
  EXPECT_EQ(namesIn("ab, c"), "3");
  EXPECT_EQ(namesIn(""), "");
}

}  // namespace
}  // namespace orvane
