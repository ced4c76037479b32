// What the reader of data files says of descriptions, with the options of the command line.

#include "host/OptionHints.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/host/Program.h"

namespace orvane {
namespace {

using testing::HasSubstr;

TEST(OptionHints, shouldNameTheOptionBesideEachKeyThatAMessageNames) {
  EXPECT_EQ(withOptions(R"(times are taken as UTC; "timeZone" in a description tells another)"),
            R"(times are taken as UTC; "timeZone" in a description (--timezone) tells another)");
  EXPECT_EQ(withOptions("nothing of it"), "nothing of it");
}

TEST(OptionHints, shouldStandInNotesAndErrorsOfTheCommand) {
  const test::TempFolder folder;
  const std::string bars = folder.write("bars.csv", test::barsCsv());
  const auto looked = test::runProgram({"data", "inspect", bars});
  EXPECT_EQ(looked.exitCode, 0) << looked.err;
  EXPECT_THAT(looked.out, HasSubstr(R"("timeZone" in a description (--timezone) tells)"));
  EXPECT_THAT(looked.out, HasSubstr(R"("stamp": "end" in a description (--stamp end) if)"));
  const std::string strange = folder.write("strange.csv", "when,what\n2021-01-04 09:00,5\n");
  for (const std::string option : {"inspect", "data"}) {
    std::vector<std::string> words{option};
    if (option == "data") words.emplace_back("inspect");
    words.insert(words.end(), {"--bars", strange});
    const auto refused = test::runProgram(words);
    EXPECT_THAT(refused.out + refused.err, HasSubstr("in a description (--columns)")) << option;
  }
  const std::string head = "datetime,open,high,low,close\n";
  const auto refusalOf = [&](const std::string& text) {
    return test::runProgram({"inspect", "--bars", folder.write("wrong.csv", text)}).err;
  };
  EXPECT_THAT(refusalOf(head + "2021-01-04 09:00,5,5,5,5\n"),
              HasSubstr("in a description (--period)"));
  EXPECT_THAT(refusalOf(head + "2021-01-04 09:00,,,,\n2021-01-04 09:01,5,5,5,5\n"),
              HasSubstr("in a description (--set skipEmpty=true) passes"));
  EXPECT_THAT(refusalOf("2021-01-04,x,y,5\n2021-01-04,x,y,6\n"),
              HasSubstr("name them in a description (--columns), such as"));
  const auto commas = test::runProgram(
      {"inspect", "--bars",
       folder.write("commas.csv",
                    "datetime;open;high;low;close\n2021-01-04 09:00;5,1;5,2;5,0;5,1\n")});
  EXPECT_THAT(commas.err, HasSubstr("of a description (--set decimalPoint=,) tells"));
}

}  // namespace
}  // namespace orvane
