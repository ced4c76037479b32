#include "host/FreshFiles.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>

#include "tests/host/Program.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

class FreshFilesTest : public testing::Test {
 protected:
  /// Makes the file and its folder, as a run does.
  void make() const {
    fs::create_directories(folder_ / "above/out");
    folder_.write("above/out/results.db", "rows");
  }

  const test::TempFolder folder_;
  const std::string out_ = folder_ / "above/out", file_ = out_ + "/results.db";
};

TEST_F(FreshFilesTest, shouldTakeAwayWhatWasMadeBeforeARefusal) {
  {
    const FreshFiles fresh({file_}, out_);
    make();
  }
  EXPECT_FALSE(fs::exists(folder_ / "above"));
}

TEST_F(FreshFilesTest, shouldKeepResultsWhateverEndsTheRun) {
  try {
    FreshFiles fresh({file_}, out_);
    make();
    fresh.keep();
    throw std::logic_error("nobody thought of this");
  } catch (const std::logic_error&) {
  }
  EXPECT_EQ(test::readFile(file_), "rows");
}

TEST_F(FreshFilesTest, shouldTakeAwayARunThatIsRefusedOnlyAfterItBegan) {
  {
    FreshFiles fresh({file_}, out_);
    make();
    fresh.keep();
    fresh.takeAway();
  }
  EXPECT_FALSE(fs::exists(folder_ / "above"));
}

TEST_F(FreshFilesTest, shouldLeaveALinkThatLedNowhere) {
  fs::create_symlink("nowhere", folder_ / "above");
  { const FreshFiles fresh({file_}, out_); }
  EXPECT_TRUE(fs::is_symlink(folder_ / "above"));
}

}  // namespace
}  // namespace orvane
