#include "host/TimeArgument.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/InputError.h"

namespace orvane {
namespace {

std::string read(const std::string& text, const std::string& zone = "UTC") {
  return isoTime(parseTimeArgument(text, zone, "--from"));
}

TEST(TimeArgument, shouldReadADateAsItsMidnightInTheZone) {
  EXPECT_EQ(read("2021-01-04"), "2021-01-04T00:00:00.000Z");
  EXPECT_EQ(read("20210104", "Asia/Shanghai"), "2021-01-03T16:00:00.000Z");
  EXPECT_EQ(read("2021/1/4", "America/New_York"), "2021-01-04T05:00:00.000Z");
}

TEST(TimeArgument, shouldReadATimeOfDay) {
  EXPECT_EQ(read("2021-01-04 09:30", "Asia/Shanghai"), "2021-01-04T01:30:00.000Z");
  EXPECT_EQ(read("2021-07-04T09:30:05.250", "America/New_York"), "2021-07-04T13:30:05.250Z");
}

TEST(TimeArgument, shouldPreferTheOffsetThatIsWrittenBesideTheTime) {
  EXPECT_EQ(read("2021-01-04T09:30:00Z", "Asia/Shanghai"), "2021-01-04T09:30:00.000Z");
  EXPECT_EQ(read("2021-01-04T09:30:00+08:00", "UTC"), "2021-01-04T01:30:00.000Z");
  EXPECT_EQ(read("2021-01-04 09:30-05:00", "UTC"), "2021-01-04T14:30:00.000Z");
}

TEST(TimeArgument, shouldNameOptionAndValueWhenATextIsNoTime) {
  for (const char* text : {"yesterday", "2021-13-04", "2021-01-04 25:00", "", "2021-01-04 x"}) {
    try {
      read(text);
      ADD_FAILURE() << text;
    } catch (const InputError& error) {
      EXPECT_THAT(error.what(), testing::StartsWith(std::string("--from: \"") + text + "\""));
    }
  }
}

}  // namespace
}  // namespace orvane
