// `orvane sweep` from outside: what it writes, how it goes on, and what it refuses.

#include <fcntl.h>
#include <fmt/core.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <bit>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <map>

#include "host/InputError.h"
#include "tests/host/StartedProgram.h"

namespace orvane {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using CsvRow = std::map<std::string, std::string>;

/// Splits a line; fields may stand in quotes.
std::vector<std::string> fieldsOf(const std::string& line) {
  std::vector<std::string> fields(1);
  bool isQuoted = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '"' && isQuoted && line.substr(i + 1, 1) == "\"")
      fields.back() += line[++i];
    else if (line[i] == '"')
      isQuoted = !isQuoted;
    else if (line[i] == ',' && !isQuoted)
      fields.emplace_back();
    else
      fields.back() += line[i];
  }
  EXPECT_FALSE(isQuoted) << line;
  return fields;
}

std::vector<CsvRow> csvRows(const std::string& path) {
  std::vector<CsvRow> rows;
  std::vector<std::string> head;
  std::string line;
  for (const char c : test::readFile(path)) {
    if (c != '\n') {
      line += c;
      continue;
    }
    const std::vector<std::string> fields = fieldsOf(line);
    line.clear();
    if (head.empty()) {
      head = fields;
      continue;
    }
    EXPECT_EQ(fields.size(), head.size());
    for (std::size_t i = 0; i < fields.size(); ++i)
      (i == 0 ? rows.emplace_back() : rows.back())[head[i]] = fields[i];
  }
  return rows;
}

/// Bars of an hour over so many days; the same at every run.
std::string hourlyBars(int days) {
  std::string text = "datetime,open,high,low,close,volume\n";
  std::uint32_t state = 5;
  int price = 10'000;
  for (int day = 1; day <= days; ++day)
    for (int hour = 0; hour < 24; ++hour) {
      state = state * 1'664'525 + 1'013'904'223;
      const int open = price;
      price += static_cast<int>(state >> 20) % 101 - 50;
      text += fmt::format("2021-03-{:02} {:02}:00:00,{},{},{},{},100\n", day, hour, open,
                          std::max(open, price) + 5, std::min(open, price) - 5, price);
    }
  return text;
}

class SweepProgram : public testing::Test {
 protected:
  std::vector<std::string> sweepOf(const std::vector<std::string>& more) const {
    std::vector<std::string> all = {"sweep", "-s", "sma_cross", "-b", "A.X=" + bars_};
    all.insert(all.end(), more.begin(), more.end());
    return all;
  }
  test::ProgramResult sweep(const std::vector<std::string>& more) const {
    return test::runProgram(sweepOf(more));
  }
  void expectRefused(const std::vector<std::string>& more, const std::string& message) const {
    const auto result = sweep(more);
    EXPECT_EQ(result.exitCode, kExitBadInput) << result.err;
    EXPECT_THAT(result.err, StartsWith("orvane: " + message));
  }
  /// Compares a row with a run by hand: every figure by its bits, and the digest.
  void expectSameAsRun(const CsvRow& row) {
    const std::string folder = folder_ / fmt::format("run{}", ++runs_);
    std::vector<std::string> arguments = {
        "run", "-s", "sma_cross", "-b", "A.X=" + bars_, "--strategy-log-level", "off", "-p",
        fmt::format(R"({{"mode":"longShort","fast":{},"slow":{}}})", row.at("fast"),
                    row.at("slow")),
        "--fee-per-lot", "0.7", "--report", folder,
        // The account is named like the runner, and the strategy is told so.
        "--name", "sma_cross-" + row.at("number")};
    for (const char* end : {"from", "to"})
      if (!row.at(end).empty())
        arguments.insert(arguments.end(), {std::string("--") + end, row.at(end)});
    ASSERT_EQ(test::runProgram(arguments).exitCode, 0);
    const QJsonObject runner = test::readReport(folder)["runners"].toArray()[0].toObject();
    EXPECT_EQ(row.at("digest"), runner["digest"].toString().toStdString());
    EXPECT_EQ(row.at("status"), runner["status"].toString().toStdString());
    QJsonObject figures = runner["trading"].toObject()["figures"].toObject();
    ASSERT_GT(figures["fills"].toInt(), 0) << "it never traded";
    for (const char* part : {"amount", "share"})
      figures[QString("maxDrawdown.") + part] = figures["maxDrawdown"].toObject()[part];
    for (const char* name :
         {"profit", "return", "annualReturn", "annualVolatility", "sharpe", "sortino",
          "maxDrawdown.amount", "maxDrawdown.share", "fills", "closings", "winRate", "profitFactor",
          "meanWin", "meanLoss", "turnover", "fees", "exposure", "startBalance", "finalEquity"}) {
      const QJsonValue wanted = figures[name];
      const std::string& found = row.at(name);
      EXPECT_EQ(found.empty(), wanted.isNull()) << name;
      EXPECT_EQ(std::bit_cast<std::uint64_t>(std::strtod(found.c_str(), nullptr)),
                std::bit_cast<std::uint64_t>(wanted.toDouble()))
          << name << " " << found;
    }
  }

  const test::TempFolder folder_;
  const std::string bars_ = folder_.write("bars.csv", hourlyBars(30));
  const std::string out_ = folder_ / "out";
  int runs_ = 0;
};

const std::vector<std::string> kCrossing = {"-p",
                                            R"({"mode":"longShort"})",
                                            "--fee-per-lot",
                                            "0.7",
                                            "--grid",
                                            "fast=2:6:2",
                                            "--grid",
                                            "slow=4:12:4",
                                            "--where",
                                            "fast<slow"};

std::vector<std::string> with(std::vector<std::string> all, const std::vector<std::string>& more) {
  all.insert(all.end(), more.begin(), more.end());
  return all;
}

TEST_F(SweepProgram, shouldWriteWhatRunsByHandReportRankedByAFigure) {
  const auto result = sweep(with(kCrossing, {"--digest", "--rank", "sharpe", "--out", out_}));
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("sweep of 7 combinations of sma_cross (the grid has 9)"));
  const auto rows = csvRows(out_ + "/results.csv");
  ASSERT_EQ(rows.size(), 7);
  double before = 1e9;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(rows[i].at("rank"), std::to_string(i + 1));
    EXPECT_EQ(rows[i].at("sample"), "whole");
    const double sharpe = std::strtod(rows[i].at("sharpe").c_str(), nullptr);
    EXPECT_LE(sharpe, before);
    before = sharpe;
  }
  expectSameAsRun(rows.front());
  expectSameAsRun(rows.back());
}

TEST_F(SweepProgram, shouldWalkForwardAndTellInSampleAndOutOfSampleApart) {
  const auto result = sweep(
      with(kCrossing, {"--walk-forward", "10d:5d", "--digest", "--batch", "3", "--out", out_}));
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("out-of-sample: 4 windows"));
  const auto rows = csvRows(out_ + "/results.csv");
  ASSERT_EQ(rows.size(), 4 * 8);
  std::map<std::pair<std::string, std::string>, int> parts;
  std::map<std::string, CsvRow> best;
  for (const CsvRow& row : rows) {
    ++parts[{row.at("window"), row.at("sample")}];
    if (row.at("sample") == "in-sample" && row.at("rank") == "1") best[row.at("window")] = row;
    if (row.at("sample") != "out-of-sample") continue;
    // What is tried is the best of the span that ends where it begins.
    const CsvRow& chosen = best.at(row.at("window"));
    EXPECT_EQ(row.at("number"), chosen.at("number"));
    EXPECT_EQ(row.at("from"), chosen.at("to"));
  }
  for (const auto& [part, count] : parts)
    EXPECT_EQ(count, part.second == "in-sample" ? 7 : 1) << part.first << part.second;
  expectSameAsRun(rows[8]);
  expectSameAsRun(rows[15]);
  EXPECT_EQ(rows[15].at("sample"), "out-of-sample");
}

TEST_F(SweepProgram, shouldMakeNoWindowBeforeTheData) {
  const auto windowsFrom = [&](const std::vector<std::string>& from) {
    const auto result =
        sweep(with({"--grid", "fast=2", "--walk-forward", "10d:5d", "--out", out_}, from));
    EXPECT_EQ(result.exitCode, 0) << result.err;
    std::vector<std::string> begins;
    for (const CsvRow& row : csvRows(out_ + "/results.csv")) begins.push_back(row.at("from"));
    std::filesystem::remove_all(out_);
    return begins;
  };
  const auto all = windowsFrom({});
  EXPECT_EQ(all.size(), 4 * 2);
  EXPECT_EQ(windowsFrom({"--from", "2020-12-01"}), all);
  EXPECT_THAT(windowsFrom({"--from", "2021-03-10"}).front(), StartsWith("2021-03-10"));
}

TEST_F(SweepProgram, shouldChooseByTheInSampleFiguresAlone) {
  // What comes after a window is changed; what it chooses is not.
  const auto choicesOf = [&](const std::string& name) {
    const std::string folder = folder_ / name;
    EXPECT_EQ(sweep(with(kCrossing, {"--walk-forward", "10d:5d", "--out", folder})).exitCode, 0);
    std::vector<std::string> choices;
    for (const CsvRow& row : csvRows(folder + "/results.csv"))
      if (row.at("sample") == "out-of-sample") choices.push_back(row.at("number"));
    return choices;
  };
  const auto before = choicesOf("before");
  std::string text = hourlyBars(30);
  const std::size_t at = text.find("2021-03-11 ");
  std::string changed = text.substr(0, at);
  for (std::string rest = text.substr(at); !rest.empty(); rest.erase(0, rest.find('\n') + 1))
    changed += rest.substr(0, 19) + ",5,9,1,7,100\n";
  folder_.write("bars.csv", changed);
  const auto after = choicesOf("after");
  ASSERT_FALSE(after.empty());
  EXPECT_EQ(after.front(), before.front());
}

TEST_F(SweepProgram, shouldGoOnWhereItWasKilledAndEndWithTheSameFiles) {
  ASSERT_EQ(mkfifo((folder_ / "gate").c_str(), 0600), 0);
  const auto arguments = [&](const std::string& out) {
    return std::vector<std::string>{"sweep",
                                    "-s",
                                    test::testModule("waiting_strategy"),
                                    "-b",
                                    "A.X=" + bars_,
                                    "-p",
                                    R"({"gate": ")" + (folder_ / "gate") + R"("})",
                                    "--grid",
                                    "n=1:4:1",
                                    "--batch",
                                    "1",
                                    "--out",
                                    out,
                                    "--quiet"};
  };
  const auto openGate = [&] { close(open((folder_ / "gate").c_str(), O_WRONLY)); };
  const std::string waiting = "waiting\n", next = "stopped\nwaiting\n";
  {
    test::StartedProgram program(arguments(out_));
    ASSERT_TRUE(program.awaitOutput(waiting));
    openGate();
    ASSERT_TRUE(program.awaitOutput(next));
    program.send(SIGKILL);
    program.end();
  }
  {
    // The first one is done; another process may not come in between.
    test::StartedProgram program(arguments(out_));
    ASSERT_TRUE(program.awaitOutput(waiting));
    const auto second = test::runProgram(arguments(out_));
    EXPECT_EQ(second.exitCode, kExitBadInput);
    EXPECT_THAT(second.err, HasSubstr("results.db\": it is in use"));
    openGate();
    ASSERT_TRUE(program.awaitOutput(next));
    program.send(SIGINT);
    openGate();
    EXPECT_EQ(program.end().exitCode, kExitInterrupted);
  }
  EXPECT_EQ(csvRows(out_ + "/results.csv").size(), 2);
  {
    test::StartedProgram program(arguments(out_));
    ASSERT_TRUE(program.awaitOutput(waiting));
    openGate();
    ASSERT_TRUE(program.awaitOutput(next));
    openGate();
    EXPECT_EQ(program.end().exitCode, 0);
  }
  test::StartedProgram whole(arguments(folder_ / "whole"));
  std::string seen = waiting;
  for (int i = 0; i < 4; ++i, seen += next) {
    ASSERT_TRUE(whole.awaitOutput(seen));
    openGate();
  }
  EXPECT_EQ(whole.end().exitCode, 0);
  for (const char* name : {"/results.csv", "/sweep.html"})
    EXPECT_EQ(test::readFile(out_ + name), test::readFile(folder_ / "whole" + name)) << name;
  EXPECT_EQ(csvRows(out_ + "/results.csv").size(), 4);
}

TEST_F(SweepProgram, shouldRunNothingAgainAndRefuseTheFolderOfAnotherSweep) {
  const std::vector<std::string> all = with(kCrossing, {"--out", out_});
  ASSERT_EQ(sweep(all).exitCode, 0);
  const std::string another =
      "--out: \"" + out_ + "/results.db\" holds the results of another sweep: ";
  const auto again = sweep(with(all, {"--top", "3", "--threads", "1", "--rank", "fees"}));
  EXPECT_EQ(again.exitCode, 0) << again.err;
  EXPECT_THAT(again.out, HasSubstr("; 7 runs were done before"));
  const std::string csv = test::readFile(out_ + "/results.csv");
  expectRefused(with(all, {"--capital", "5"}),
                another + "--capital was not given there and is [\"5\"]. Give another folder");
  expectRefused(with(all, {"--fee-rate", "0.1", "--grid", "volume=1,2"}),
                another + R"(--fee-rate was not given there and is ["0.1"]; )"
                          R"(--grid was ["fast=2:6:2","slow=4:12:4"] there and is ["fast=2:6:2",)");
  expectRefused(with(all, {"--stamp", "end"}),
                another + "--stamp was not given there and is [\"end\"]. Give another folder");
  const std::string copy = folder_.write("copy.csv", hourlyBars(30));
  std::vector<std::string> moved = with({"sweep", "-s", "sma_cross", "-b", "A.X=" + copy}, all);
  EXPECT_THAT(test::runProgram(moved).err, HasSubstr("\"" + copy + "\" was not read there"));
  folder_.write("bars.csv", hourlyBars(29));
  expectRefused(all, another + "\"" + bars_ + "\" has changed since. Give another folder");
  EXPECT_EQ(test::readFile(out_ + "/results.csv"), csv);
  std::filesystem::create_directory(folder_ / "strange");
  folder_.write("strange/results.db", "no database at all");
  expectRefused(with(kCrossing, {"--out", folder_ / "strange"}),
                "--out: \"" + (folder_ / "strange") + "/results.db\": it is no database");
  EXPECT_EQ(test::readFile(folder_ / "strange/results.db"), "no database at all");
}

TEST_F(SweepProgram, shouldTellOfRunsThatEndAsErrorsAndRunTheOthers) {
  const auto result =
      test::runProgram({"sweep", "-s", test::testModule("swept_strategy"), "-b", "A.X=" + bars_,
                        "--grid", "every=3,4", "--grid", "fail=0,40", "--out", out_});
  EXPECT_EQ(result.exitCode, kExitRunFailed);
  EXPECT_THAT(result.err, HasSubstr("orvane: 2 runs ended as an error, the first: number 2 "
                                    "(every=3, fail=40): seen too much"));
  const auto rows = csvRows(out_ + "/results.csv");
  ASSERT_EQ(rows.size(), 4);
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(rows[i].at("rank").empty(), i >= 2) << i;
    EXPECT_EQ(rows[i].at("status"), i < 2 ? "Stopped" : "Error");
    EXPECT_EQ(rows[i].at("message"), i < 2 ? "" : "seen too much");
  }
}

TEST_F(SweepProgram, shouldHoldInItsPageWhatTheTableHas) {
  ASSERT_EQ(sweep(with(kCrossing, {"--out", out_})).exitCode, 0);
  const std::string page = test::readFile(out_ + "/sweep.html");
  const std::string tag = "<script type=\"application/json\" id=\"data\">";
  const std::size_t begin = page.find(tag) + tag.size();
  const QJsonObject data =
      QJsonDocument::fromJson(
          QByteArray::fromStdString(page.substr(begin, page.find("</script>", begin) - begin)))
          .object();
  const QJsonArray rows = data["rows"].toArray(), ranges = data["ranges"].toArray();
  const auto csv = csvRows(out_ + "/results.csv");
  ASSERT_EQ(rows.size(), static_cast<qsizetype>(csv.size()));
  for (qsizetype i = 0; i < rows.size(); ++i) {
    const CsvRow& wanted = csv[static_cast<std::size_t>(i)];
    const QJsonArray row = rows[i].toArray();
    EXPECT_EQ(std::to_string(row[1].toInt()), wanted.at("number"));
    EXPECT_EQ(row[6].toArray()[0].toDouble(), std::strtod(wanted.at("profit").c_str(), nullptr));
    for (const int at : {0, 1}) {
      const QJsonObject range = ranges[at].toObject();
      const QJsonValue value = range["values"].toArray()[row[3].toArray()[at].toInt()];
      EXPECT_EQ(value.toString().toStdString(), wanted.at(range["name"].toString().toStdString()));
    }
  }
}

TEST_F(SweepProgram, shouldNameTheOptionAndTheValueThatIsWrong) {
  expectRefused({}, "what to try? Give --grid");
  const std::vector<std::string> grid = {"--grid", "fast=2,3"};
  expectRefused({"--grid", "fast=2:1:1"}, "--grid fast: \"2\" lies above \"1\"");
  expectRefused({"--grid", "account=a,b"}, "--grid: \"account\" is what the command tells");
  expectRefused(with(grid, {"--where", "fast<x"}),
                "--where: \"fast<x\": \"x\" is no --grid parameter; there is fast");
  expectRefused(with(grid, {"--rank", "luck"}),
                "--rank: \"luck\" is not a figure; there are profit");
  expectRefused(with(grid, {"--sample", "sobol"}), "--sample sobol: how many? Give --count");
  expectRefused(with(grid, {"--count", "3"}), "--count: \"3\" is of a sample");
  expectRefused(with(grid, {"--seed", "3"}), "--seed: \"3\" is of a sample; give --sample");
  expectRefused(with(grid, {"--retry-crashed"}), "--retry-crashed: nothing of an earlier call");
  expectRefused(with(grid, {"--from", "2031-01-01"}),
                "--from: \"2031-01-01\" leaves nothing to play: the data are from 2021-03-01");
  expectRefused(with(grid, {"--to", "2001-01-01"}), "--to: \"2001-01-01\" leaves nothing to play");
  expectRefused(with(grid, {"--walk-forward", "9d:x"}), "--walk-forward: \"x\" in \"9d:x\"");
  expectRefused(with(grid, {"--walk-forward", "300d:30d"}), "--walk-forward: what is to be played");
  expectRefused(with(grid, {"--capital", "much"}), "--capital: \"much\"");
  expectRefused(with(grid, {"--from", "2021-13-01"}), "--from: \"2021-13-01\" is not a time");
  expectRefused(with(grid, {"--out", bars_}), "--out: \"" + bars_ + "\" is not a folder");
  expectRefused(with(grid, {"--out", ""}), "--out: \"\" is empty");
  expectRefused(with(grid, {"--params", R"({"account":"x"})"}), "--params: \"account\"");
  EXPECT_FALSE(std::filesystem::exists(out_));
}

}  // namespace
}  // namespace orvane
