#include "host/Console.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <string>

#include "host/InputError.h"
#include "tests/host/Program.h"
#include "tests/host/TerminalProgram.h"

namespace orvane {
namespace {

constexpr char kClearLine[] = "\r\033[K";

TEST(Console, shouldClearALineOfProgressOnce) {
  noteOpenLine(true);
  EXPECT_STREQ(beforeMessage(), kClearLine);
  EXPECT_STREQ(beforeMessage(), "");
  noteOpenLine(true);
  noteOpenLine(false);
  EXPECT_STREQ(beforeMessage(), "");
}

TEST(Console, shouldBeginAMessageOfARunThatStopsOnALineOfItsOwn) {
  const test::TempFolder folder;
  // A minute of the data takes a minute, so that it goes on until it is stopped.
  test::TerminalProgram program({"run", "-s", "sma_cross", "--speed", "1x", "-b",
                                 "A.X=" + folder.write("bars.csv", test::barsCsv())});
  ASSERT_TRUE(program.awaitOutput("playing"));
  program.send(SIGINT);
  const std::string message = "orvane: interrupted: the runners are stopped in order";
  ASSERT_TRUE(program.awaitOutput(message));
  const std::string& output = program.output();
  const std::size_t at = output.find(message);
  const std::string before = output.substr(0, at).substr(output.rfind('\n', at) + 1);
  EXPECT_THAT(before, testing::HasSubstr("playing"));
  EXPECT_THAT(before, testing::EndsWith(kClearLine));
  EXPECT_EQ(program.end(), kExitInterrupted);
}

}  // namespace
}  // namespace orvane
