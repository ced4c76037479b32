#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "host/InputError.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// Runs the command on bad input: it must refuse it with one message that has all of `parts`, and
/// leave nothing behind.
void expectRefused(const std::vector<std::string>& arguments,
                   const std::vector<std::string>& parts) {
  const test::TempFolder folder;
  std::vector<std::string> all = arguments;
  all.insert(all.end(), {"--report", folder / "report"});
  const auto result = test::runProgram(all);
  EXPECT_EQ(result.exitCode, kExitBadInput) << result.err;
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err, StartsWith("orvane: "));
  for (const std::string& part : parts) EXPECT_THAT(result.err, HasSubstr(part));
  EXPECT_FALSE(std::filesystem::exists(folder / "report"));
}

/// The same for a bars file whose seventh row, on line 8, is `row`.
void expectRowRefused(const std::string& row, const std::vector<std::string>& parts) {
  const test::TempFolder folder;
  std::vector<std::string> all = {"bars.csv:8:"};
  all.insert(all.end(), parts.begin(), parts.end());
  expectRefused({"run", "-s", "sma_cross", "-b", folder.write("bars.csv", test::barsCsv(row))},
                all);
}

TEST(BadInput, shouldNameTheFileWhenItIsMissing) {
  expectRefused({"run", "-s", "sma_cross", "-b", "/nowhere/bars.csv"}, {"/nowhere/bars.csv"});
  expectRefused({"run", "-s", "sma_cross", "-t", "/nowhere/ticks.csv"}, {"/nowhere/ticks.csv"});
  expectRefused({"run", "/nowhere/run.json"}, {"/nowhere/run.json"});
}

TEST(BadInput, shouldNameTheFileWhenItCannotBeRead) {
  const test::TempFolder folder;
  expectRefused({"run", "-s", "sma_cross", "-b", folder / ""}, {folder / ""});
}

TEST(BadInput, shouldRefuseAFileAsTheFolderOfCaches) {
  const test::TempFolder folder;
  const std::string bars = folder.write("bars.csv", test::barsCsv());
  const std::string file = folder.write("file", "mine");
  expectRefused({"run", "-s", "sma_cross", "-b", bars, "--cache", file},
                {"--cache: \"" + file + "\" is not a folder"});
  const std::string config = folder.write(
      "run.json",
      R"({"cache": "file", "runners": [{"strategy": "sma_cross"}], "bars": ["bars.csv"]})");
  expectRefused({"run", config}, {"run.json: cache: \"" + file + "\" is not a folder"});
  EXPECT_EQ(test::readFile(file), "mine");
}

TEST(BadInput, shouldNameTheColumnWhenItIsMissing) {
  const test::TempFolder folder;
  const auto path = folder.write("bars.csv",
                                 "datetime,open,high,low,volume\n"
                                 "2021-01-04 09:01:00,1,1,1,5\n"
                                 "2021-01-04 09:02:00,1,1,1,5\n");
  expectRefused({"run", "-s", "sma_cross", "-b", path}, {"bars.csv", "close"});
}

TEST(BadInput, shouldNameLineFieldAndValueWhenANumberIsText) {
  expectRowRefused("2021-01-04 09:07:00,10.7,11.5,9.5,ten,100", {"close", "\"ten\""});
}

TEST(BadInput, shouldNameLineAndTimeWhenTimeRunsBackwards) {
  expectRowRefused("2021-01-04 09:02:30,10.7,11.5,9.5,10.8,100", {"09:02:30"});
}

TEST(BadInput, shouldNameLineAndValueWhenATimeIsNone) {
  expectRowRefused("2021-01-04 nine,10.7,11.5,9.5,10.8,100", {"nine"});
}

TEST(BadInput, shouldNameLineAndValuesWhenAHighIsBelowALow) {
  expectRowRefused("2021-01-04 09:07:00,10.7,9.25,9.5,10.8,100", {"9.25", "9.5"});
}

TEST(BadInput, shouldNamePlaceAndProblemWhenJsonIsBad) {
  const test::TempFolder folder;
  const auto bars = folder.write("bars.csv", test::barsCsv());
  expectRefused({"run", folder.write("run.json", "{\n\"runners\": [}\n")}, {"run.json:2:", "JSON"});
  expectRefused({"run", "-s", "sma_cross", "-b", bars, "-p", "{\"fast\": }"}, {"--params:1:"});
  expectRefused(
      {"run", "-s", "sma_cross", "-b", bars, "-i", folder.write("instruments.json", "[{]")},
      {"instruments.json:1:"});
  expectRefused({"run", "-s", "sma_cross", "-b", bars, "--format", "{\"colums\": []}"},
                {"colums", "columns"});
}

TEST(BadInput, shouldNamePlaceAndKeyWhenAKeyComesTwice) {
  const test::TempFolder folder;
  const std::string bars = folder.write("bars.csv", test::barsCsv());
  expectRefused({"run", "-s", "sma_cross", "-b", bars, "-p", R"({"fast": 2, "fast": 9})"},
                {"--params:1:13:", "\"fast\" comes twice"});
  const std::string runner = R"("runners": [{"strategy": "sma_cross"}], "bars": "bars.csv")";
  expectRefused(
      {"run", folder.write("run.json", "{\"capital\": 5,\n \"capital\": 7, " + runner + "}")},
      {"run.json:2:2:", "\"capital\" comes twice"});
  const auto instruments = folder.write(
      "i.json", R"({"instruments": [{"code": "A", "multiplier": 1, "multiplier": 2}]})");
  expectRefused({"run", "-s", "sma_cross", "-b", bars, "-i", instruments},
                {"i.json:1:", "\"multiplier\" comes twice"});
  const auto again = folder.write("j.json", R"([{"code": "A"}, {"code": "B"}, {"code": "A"}])");
  expectRefused({"run", "-s", "sma_cross", "-b", bars, "-i", again},
                {"j.json: A: is given already"});
}

TEST(BadInput, shouldNameThePlaceOfALimitAndOfAGrid) {
  const test::TempFolder folder;
  folder.write("bars.csv", test::barsCsv());
  const auto refused = [&](const std::string& runner, const std::string& more,
                           const std::vector<std::string>& parts) {
    expectRefused(
        {"run", folder.write("run.json", R"({"runners": [{"strategy": "sma_cross")" + runner +
                                             R"(}], "bars": "bars.csv")" + more + "}")},
        parts);
  };
  refused(R"(, "limits": {"maxLoss": -1})", "", {"run.json: runners[0].limits.maxLoss:", "-1"});
  const std::string grid = R"(, "grids": [{"code": "bars", "lower": 1, "upper": 10, "volume": 1, )";
  refused("", grid + R"("step": 7}])", {"run.json: grids[0].step:"});
  refused("", R"(, "threads": 0)", {"run.json: threads:", "from 1 to 1024"});
  refused("", R"(, "capital": 5, "accounts": [{"name": "sma_cross", "startBalance": 7}])",
          {"run.json: capital:", "nobody's"});
}

TEST(BadInput, shouldNameTheCodeWhenItIsUnknown) {
  const test::TempFolder folder;
  const auto bars = folder.write("bars.csv", test::barsCsv());
  expectRefused({"run", "-s", "sma_cross", "-b", bars, "-p",
                 R"({"data": [{"code": "NOPE", "kind": "bars", "frequency": "1m"}]})"},
                {"data[0].code", "\"NOPE\""});
  const auto instruments = folder.write("instruments.json", R"([{"code": "OTHER"}])");
  expectRefused({"run", "-s", "sma_cross", "-b", "MINE=" + bars, "-i", instruments},
                {"bars.csv", "\"MINE\""});
}

TEST(BadInput, shouldNameTheFileWhenItIsNoModule) {
  const test::TempFolder folder;
  const auto bars = folder.write("bars.csv", test::barsCsv());
  const auto text = folder.write("text.so", "this is no module");
  expectRefused({"run", "-s", text, "-b", bars}, {"text.so", "is not a strategy module"});
  const std::string data = "\" is not a strategy module, but market data; give it by --bars or";
  expectRefused({"run", "-s", bars, "-b", bars}, {bars + data});
  expectRefused({"run", "-s", folder.write("my.cpp", "x"), "-b", bars},
                {"but source text; build it, and give the .so file"});
  expectRefused({"run", "-s", folder.write("run.json", "{}"), "-b", bars},
                {"but JSON; a configuration is given without --strategy"});
  expectRefused({"run", "-s", "/nowhere/my.so", "-b", bars}, {"/nowhere/my.so"});
  expectRefused({"run", "-s", "no_such_strategy", "-b", bars}, {"\"no_such_strategy\""});
}

TEST(BadInput, shouldNameTheModuleWhenItHasNoCreateStrategy) {
  const test::TempFolder folder;
  expectRefused({"run", "-s", test::testModule("no_factory"), "-b",
                 folder.write("bars.csv", test::barsCsv())},
                {"no_factory.so", "\"createStrategy\""});
}

TEST(BadInput, shouldNameWhatAModuleUsesAndNobodyDefines) {
  const test::TempFolder folder;
  expectRefused({"run", "-s", test::testModule("lacking_helper"), "-b",
                 folder.write("bars.csv", test::barsCsv())},
                {"lacking_helper.so\" is not a strategy module: nobody defines "
                 "helping::levelOf(int), which it uses; usually a source file or a library is "
                 "missing in its build, or it was built for another version of this one\n"});
}

TEST(BadInput, shouldNameOptionAndValueWhenAnArgumentIsWrong) {
  const test::TempFolder folder;
  const auto bars = folder.write("bars.csv", test::barsCsv());
  const std::vector<std::string> good = {"run", "-s", "sma_cross", "-b", bars};
  const auto with = [&](std::vector<std::string> more) {
    more.insert(more.begin(), good.begin(), good.end());
    return more;
  };
  expectRefused(with({"--from", "soon"}), {"--from", "\"soon\""});
  expectRefused(with({"--from", "2021-01-05", "--to", "2021-01-04"}), {"2021-01-05", "--to"});
  expectRefused(with({"--speed", "fast"}), {"--speed", "\"fast\""});
  expectRefused(with({"--threads", "0"}), {"--threads"});
  expectRefused(with({"--timezone", "Mars/Olympus"}), {"Mars/Olympus"});
  expectRefused(with({"--no-such-option"}), {"--no-such-option"});
  expectRefused(with({"-i", "A,priceTick=x"}), {"priceTick", "\"x\""});
  expectRefused({"run", "-s", "sma_cross"}, {"no market data"});
  expectRefused({"run", "-b", bars}, {"--strategy"});
}

TEST(BadInput, shouldRefuseReadingOptionsBesideAConfigurationWhichTheyWouldNotReach) {
  const test::TempFolder folder;
  const auto config = folder.write("run.json", R"({"runners": [{"strategy": "sma_cross"}]})");
  expectRefused({"run", config, "--timezone", "Asia/Shanghai", "--stamp", "end"},
                {"stamp, timeZone", "run.json"});
}

TEST(BadInput, shouldRefuseAReportFolderThatIsAFile) {
  const test::TempFolder folder;
  const auto bars = folder.write("bars.csv", test::barsCsv());
  const auto result = test::runProgram({"run", "-s", "sma_cross", "-b", bars, "--report", bars});
  EXPECT_EQ(result.exitCode, kExitBadInput);
  EXPECT_THAT(result.err, HasSubstr("--report"));
  EXPECT_EQ(test::readFile(bars), test::barsCsv());
}

}  // namespace
}  // namespace orvane
