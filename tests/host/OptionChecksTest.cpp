// What is wrong with an option or a key is told with its place and its value.

#include "host/OptionChecks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/InputError.h"
#include "host/RunConfig.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class OptionChecks : public testing::Test {
 protected:
  void expectMessage(const std::vector<std::string>& arguments, const std::string& message) {
    const auto result = test::runProgram(arguments);
    EXPECT_EQ(result.exitCode, kExitBadInput) << result.err;
    EXPECT_THAT(result.err, StartsWith("orvane: " + message));
  }
  /// The same for a run with more options.
  void expectRefused(const std::vector<std::string>& more, const std::string& message) {
    std::vector<std::string> all = {"run", "-s", "sma_cross", "-b", "A.X=" + bars_};
    all.insert(all.end(), more.begin(), more.end());
    expectMessage(all, message);
  }
  /// A configuration with more keys of the run and of its runner.
  std::string configOf(const std::string& more, const std::string& runner = {}) {
    return folder_.write("run.json", R"({"runners": [{"strategy": "sma_cross")" + runner +
                                         R"(}], "bars": ["bars.csv"])" + more + "}");
  }
  /// The same for a configuration; `message` follows the file's name.
  void expectKeyRefused(const std::string& more, const std::string& message) {
    const std::string config = configOf(more);
    expectMessage({"run", config}, config + ": " + message);
  }

  const test::TempFolder folder_;
  const std::string bars_ = folder_.write("bars.csv", test::barsCsv());
};

TEST_F(OptionChecks, shouldRefuseAnEmptyTextWhereverItStands) {
  for (const char* option : {"--store", "--period", "--events", "--params", "--bars"})
    expectRefused({option, ""}, std::string(option) + ": \"\" is empty");
  expectMessage({"run", ""}, "config: \"\" is empty");
  expectMessage({"inspect", bars_, "--period", ""}, "--period: \"\" is empty");
  expectMessage({"generate", "--out", ""}, "--out: \"\" is empty");
}

TEST_F(OptionChecks, shouldRefuseAnEmptyTextOfAnyKey) {
  const auto expectRead = [this](const std::string& more, const std::string& message,
                                 const std::string& runner = {}) {
    const std::string config = configOf(more, runner);
    try {
      RunPlan plan;
      readRunConfig(config, plan);
      FAIL() << more << runner;
    } catch (const InputError& error) {
      EXPECT_THAT(error.what(), StartsWith(config + ": " + message));
    }
  };
  for (const char* key : {"store", "dictionary", "report", "from", "to", "timeZone", "events"})
    expectRead(std::string(", \"") + key + R"(": "")", std::string(key) + ": must not be empty");
  for (const char* key : {"records", "indexes", "instruments"})
    expectRead(std::string(", \"") + key + R"(": [""])",
               std::string(key) + ": must not be empty and hold no empty text, not [\"\"]");
  for (const char* key : {"name", "orderSource", "account", "params"})
    expectRead("", std::string("runners[0].") + key + ": must not be empty",
               std::string(", \"") + key + R"(": "")");
  expectRead(R"(, "ticks": [""])", "ticks[0]: must be the name of a file, not \"\"");
  expectRead(R"(, "published": [""])", "published[0]: must be a code, not \"\"");
  expectRead(R"(, "capital": "")", "capital: must be a decimal number, not \"\"");
  expectRead(R"(, "capital": "much")", "capital: must be a decimal number, not \"much\"");
  expectRead(R"(, "trade": {"slippage": "x"})",
             "trade.slippage: must be a decimal number, not \"x\"");
}

TEST_F(OptionChecks, shouldNameOptionValueAndBoundsOfANumber) {
  for (const char* value : {"-1", "x", "1.5", "99999999999"})
    expectRefused({"--slippage-ticks", value},
                  std::string("--slippage-ticks: \"") + value +
                      "\" is not a whole number from 0 to 2147483647\n");
  expectRefused({"--entry-latency", "-1"}, "--entry-latency: \"-1\" is not a whole number");
  expectRefused({"--threads", "0"}, "--threads: \"0\" is not a whole number from 1 to 1024\n");
  expectMessage({"generate", "--out", folder_ / "g", "--seed", "-1"}, "--seed: \"-1\" is not");
}

TEST_F(OptionChecks, shouldNameTheOptionOrKeyOfAnAmountThatIsWrong) {
  expectRefused({"--slippage", "x"}, "--slippage: \"x\" is not a decimal number");
  expectRefused({"--capital", "-5"}, "--capital: \"-5\" is below 0");
  expectRefused({"--capital", "1e400"}, "--capital: \"1e400\" is not");
  expectKeyRefused(R"(, "trade": {"barVolumeShare": 2})", "trade.barVolumeShare: \"2\" is not");
  expectKeyRefused(R"(, "to": "soon")", "to: \"soon\" is not a time");
  expectKeyRefused(R"(, "timeZone": "Mars")", "timeZone: \"Mars\" is not a time zone");
}

TEST_F(OptionChecks, shouldNameTheOptionOrKeyOfADescriptionThatIsWrong) {
  expectRefused({"--period", "-1m"}, "--period: \"-1m\" is not a period");
  expectMessage({"inspect", bars_, "--period", "soon"}, "--period: \"soon\" is not a period");
  expectKeyRefused(R"(, "ticks": [{"file": "t.csv", "format": {"period": "-1m"}}])",
                   "ticks[0].format: \"period\": \"-1m\" is not a period");
  expectRefused({"--set", "period=-1m"}, "--set period: \"-1m\" is not a period");
  expectRefused({"--format", R"({"period": "x"})"}, "--format: \"period\": \"x\" is not a period");
}

TEST_F(OptionChecks, shouldSayWhatIsNoCommandAndNoJson) {
  expectMessage(
      {"records", "x.csv"},
      "\"records\" is not a command; the commands are run, sweep, generate, inspect, data "
      "and new-strategy");
  expectRefused({"--params", "["},
                "--params: \"[\" is neither a JSON object nor the name of a file");
  expectRefused({"-i", "A.X,foo=1"},
                "--instrument A.X,foo=1: key \"foo\": is not known; there are categories, ");
  expectRefused({"-i", "A.X,priceTik=0.2"},
                "--instrument A.X,priceTik=0.2: key \"priceTik\": is not known; is \"priceTick\" "
                "meant?\n");
  const std::string list = folder_.write("indexes.json", "[]");
  expectRefused({"--indexes", list}, list + ": must hold a JSON object with the key \"indexes\"");
}

TEST_F(OptionChecks, shouldNameTheOptionCommandOrModuleThatWasMeant) {
  expectRefused({"--reprot", "r"}, "\"--reprot\" is not an option of run; is \"--report\" meant?");
  expectRefused({"--slipage=1"}, "\"--slipage\" is not an option of run; is \"--slippage\" meant?");
  expectRefused({"--whatever"}, "\"--whatever\" is not an option of run\n");
  expectMessage({"data", "convert", bars_, "--otu", "x"},
                "\"--otu\" is not an option of data convert; is \"--out\" meant?");
  expectMessage({"rum", bars_},
                "\"rum\" is not a command; is \"run\" meant? The commands are run, ");
  expectMessage({"data", "covert", bars_},
                "\"covert\" is not a command of data; is \"convert\" meant? The commands are ");
  expectMessage({}, "give a command: run, sweep, generate, inspect, data and new-strategy\n");
  expectMessage({"run", "-s", "sma_corss", "-b", "A.X=" + bars_},
                "--strategy: there is no strategy module \"sma_corss\", neither here");
  const auto near = test::runProgram({"run", "-s", "sma_corss", "-b", "A.X=" + bars_});
  EXPECT_THAT(near.err, HasSubstr("; is \"sma_cross\" meant?"));
  const auto far = test::runProgram({"run", "-s", "ichimoku", "-b", "A.X=" + bars_});
  EXPECT_THAT(far.err, HasSubstr("; there are "));
  EXPECT_THAT(far.err, HasSubstr("sma_cross"));
}

TEST_F(OptionChecks, shouldSayWhichOptionTakesWhatWasGivenAsTheConfiguration) {
  expectMessage({"run", "sma_cross"},
                "sma_cross: is a strategy, not a configuration; run it by --strategy sma_cross");
  expectMessage({"run", "sma_cross", "-b", bars_}, "sma_cross: is a strategy, not a configuration");
  expectMessage({"run", "./mine.so"}, "./mine.so: is a strategy, not a configuration");
  expectMessage({"run", bars_}, bars_ +
                                    ": is market data, not a configuration; play it by --bars " +
                                    bars_ + " (or --ticks) and --strategy MODULE");
  expectMessage({"run", folder_ / "none.json"},
                (folder_ / "none.json") + ": there is no such file; run takes a configuration");
}

TEST_F(OptionChecks, shouldSayWhatIsUsuallyWrongWithJson) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"{'fast': 5}", "; texts and keys stand in double quotes"},
      {R"({"fast": 5, 'slow': 9})", "; texts and keys stand in double quotes"},
      {R"({"mode": 'longShort'})", "; texts and keys stand in double quotes"},
      {"{fast: 5}", "; keys stand in double quotes"},
      {R"({"mode": longShort})", "; texts stand in double quotes; other words are true,"},
      {R"({"fast": True})", "; texts stand in double quotes; other words are true,"},
      {R"({"fast": 5,})", "; there is a comma too many"},
      {R"({"fast": [5, ]})", "; there is a comma too many"},
      {"{\"fast\": 5 // short\n}", "; JSON has no comments"},
      {"{\"fast\": 5\n\"slow\": 9}", "; a comma is missing"},
      {R"({"fast": 5)", "; the end is missing"}};
  for (const auto& [json, advice] : cases) {
    const auto result =
        test::runProgram({"run", "-s", "sma_cross", "-b", "A.X=" + bars_, "-p", json});
    EXPECT_EQ(result.exitCode, kExitBadInput);
    EXPECT_THAT(result.err, StartsWith("orvane: --params:")) << json;
    EXPECT_THAT(result.err, HasSubstr(advice)) << json;
  }
  const std::string empty = folder_.write("empty.json", " \n");
  expectMessage({"run", empty}, empty + ": is empty; give JSON, at least {}\n");
}

TEST_F(OptionChecks, shouldSayThatAConfigurationIsOneValueAndNotOneALine) {
  const std::string lines = folder_.write("lines.json", "{\"a\": 1}\n{\"b\": 2}\n");
  expectMessage({"run", lines}, lines +
                                    ":2:1: bad JSON: a second value begins here; give one "
                                    "alone, not a line each (JSON Lines)\n");
  const std::string odd = folder_.write("odd.json", "{\"runners\": []}\v");
  expectMessage({"run", odd}, odd +
                                  ":1:16: bad JSON: only blanks, tabs and line ends may stand "
                                  "behind the value\n");
  const std::string named = folder_.write("run.jsonl", "{}\n");
  expectMessage({"run", named}, named +
                                    ": holds a JSON value a line, by its name; a configuration "
                                    "is one JSON object\n");
}

TEST_F(OptionChecks, shouldSayWhatAConfigurationBeginsWith) {
  const std::string config = folder_.write("run.json", R"({"runner": [], "bars": "bars.csv"})");
  expectMessage({"run", config}, config + ": runner: unknown key; is \"runners\" meant?\n");
  folder_.write("run.json", R"({"instruments": []})");
  expectMessage({"run", config},
                config +
                    ": runners: is missing; a configuration begins like {\"runners\": "
                    "[{\"strategy\": \"sma_cross\"}], \"bars\": \"if_1min.csv\"}\n");
}

TEST_F(OptionChecks, shouldSayAllThatASeriesOfAConfigurationMayBe) {
  expectKeyRefused(R"(, "ticks": [5])",
                   "ticks[0]: must be the name of a file, or an object with \"file\" or \"files\", "
                   "not 5\n");
  expectKeyRefused(R"(, "published": [true])",
                   "published[0]: must be a code, or an object with \"code\", not true\n");
}

TEST_F(OptionChecks, shouldNameAnOptionThatIsGivenTwiceWithBothValues) {
  expectRefused({"--report", "a", "--capital", "5", "-r", "b"},
                "--report: is given 2 times, as \"a\" and \"b\"; give it once\n");
}

TEST_F(OptionChecks, shouldNameTheWordsOfAnOptionAndTheOneThatWasMeant) {
  expectRefused({"--stamp", "ende"},
                "--stamp: \"ende\" is not one of start, end; is \"end\" meant?\n");
  expectRefused({"--side", "left"}, "--side: \"left\" is not one of bid, ask, mid\n");
  expectRefused({"--log-level", "wran"},
                "--log-level: \"wran\" is not one of trace, debug, info, warn, error, off; is "
                "\"warn\" meant?\n");
  expectMessage({"data", "convert", bars_, "-o", "x", "--to", "cvs"},
                "--to: \"cvs\" is not one of cache, csv; is \"csv\" meant?\n");
}

TEST_F(OptionChecks, shouldNameWhatIsMissingOrUnknownInAShortForm) {
  expectMessage({"inspect"}, "give FILE... (see inspect --help)");
  expectMessage({"data", "convert", "-o", "x"}, "give FILE... (see data convert --help)");
  expectMessage({"new-strategy"}, "give NAME (see new-strategy --help)");
  expectRefused({"-g", "fast=1"}, "\"-g\" is not an option of run\n");
  expectRefused({"-b", "=F"}, "--bars: \"=F\" has no code before \"=\"\n");
  expectRefused({"-i", "A.X,tik=0.2"},
                "--instrument A.X,tik=0.2: key \"tik\": is not known; is \"tick\" meant?\n");
  expectRefused({"-i", "A.X,colour=0.2"},
                "--instrument A.X,colour=0.2: key \"colour\": is not known; there are ");
  EXPECT_THAT(test::runProgram({"run", "-s", "sma_cross", "-b", bars_, "-i", "A,colour=1"}).err,
              HasSubstr("tick (for priceTick)"));
  EXPECT_THAT(test::runProgram({"data"}).out, HasSubstr("Usage: orvane data "));
}

TEST_F(OptionChecks, shouldSayWhatAPeriodADateAndAFigureAre) {
  expectRefused({"--published", "NOPE=7z"},
                "--published NOPE=7z: \"7z\" is not a period such as 1m, 5m, 1d\n");
  expectMessage({"generate", "--out", folder_ / "g", "--date", "2026-02-31"},
                "--date: \"2026-02-31\" is not a date; write it like 2021-01-04\n");
  expectMessage({"sweep", "-s", "sma_cross", "-b", bars_, "--grid", "fast=1,2", "--rank", "sharp"},
                "--rank: \"sharp\" is not a figure; is \"sharpe\" meant? there are profit, ");
  expectMessage(
      {"sweep", "-s", "sma_cross", "-b", bars_, "--grid", "fast=1,2", "--where", "fast<slw"},
      "--where: \"fast<slw\": \"slw\" is no --grid parameter; there is fast\n");
  expectKeyRefused(R"(, "trade": {"capital": 5})",
                   "trade.capital: unknown key; \"capital\" stands at the top, beside \"trade\"");
}

TEST_F(OptionChecks, shouldInspectTheOtherFilesWhereOneIsBad) {
  const std::string weekly =
      folder_.write("w.csv",
                    "date,open,high,low,close\n2021-01-04,1,2,1,2\n2021-01-11,1,2,1,2\n"
                    "2021-01-18,1,2,1,2\n");
  const auto result = test::runProgram({"inspect", bars_, folder_ / "none.csv", weekly});
  EXPECT_EQ(result.exitCode, kExitBadInput);
  EXPECT_EQ(result.err,
            "orvane: " + (folder_ / "none.csv") + ": cannot be read: No such file or directory\n");
  EXPECT_THAT(result.out, HasSubstr(bars_ + "\n"));
  EXPECT_THAT(result.out, HasSubstr(", period 1w, "));
}

TEST_F(OptionChecks, shouldSayWhyAFileCannotBeReadOrWritten) {
  expectRefused(
      {"--log", folder_ / "no/log"},
      "--log: \"" + (folder_ / "no/log") + "\" cannot be written: No such file or directory\n");
  expectRefused({"--report", "/proc/x"},
                "--report: the folder \"/proc/x\" cannot be made: No such file or directory\n");
  // Not even root reads it.
  expectMessage({"run", "-s", "/proc/sys/vm/drop_caches", "-b", bars_},
                "--strategy: \"/proc/sys/vm/drop_caches\" cannot be read: Permission denied\n");
}

TEST_F(OptionChecks, shouldNameAJumpThatIsNone) {
  for (const char* value : {"0", "-1", "x", "inf"})
    expectMessage({"data", "inspect", bars_, "--jump", value},
                  std::string("--jump: \"") + value + "\" is not a number above 0\n");
}

TEST_F(OptionChecks, shouldListEachKnownKeyOnce) {
  const std::string config = folder_.write(
      "run.json", R"({"runners": [{"strategy": "sma_cross"}], "bars": ["bars.csv"], "x": 1})");
  const auto result = test::runProgram({"run", config});
  EXPECT_THAT(result.err, HasSubstr("ticks, instruments, accounts"));
  EXPECT_THAT(result.err, Not(HasSubstr("instruments, instruments")));
}

TEST_F(OptionChecks, shouldRefuseTheOrderSourceOfGrids) {
  for (const char* option : {"--order-source", "--name"}) {
    const auto result =
        test::runProgram({"run", "-s", "sma_cross", "-b", "A.X=" + bars_, option, "__grid__"});
    EXPECT_EQ(result.exitCode, kExitBadInput);
    EXPECT_THAT(result.err, StartsWith(std::string("orvane: ") + option +
                                       ": \"__grid__\" is the order source of grid conditions"));
  }
}

TEST_F(OptionChecks, shouldRefuseSlippageInTicksThatNobodyTellsAndNoteWhereOneIsMissing) {
  expectRefused({"--slippage-ticks", "2"}, "--slippage-ticks: 2 ticks of what?");
  const auto result =
      test::runProgram({"run", "-s", "sma_cross", "-b", "A.X=" + bars_, "B.X=" + bars_, "-i",
                        "A.X,priceTick=0.1", "-i", "B.X", "--slippage-ticks", "2"});
  EXPECT_EQ(result.exitCode, kExitSuccess) << result.err;
  const auto note = result.out.find("no price tick is known");
  EXPECT_GT(note, result.out.find("data B.X")) << result.out;
  EXPECT_EQ(result.out.find("no price tick is known", note + 1), std::string::npos);
}

}  // namespace
}  // namespace orvane
