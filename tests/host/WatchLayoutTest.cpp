#include "host/watch/WatchLayout.h"

#include <fmt/core.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/watch/ScreenText.h"

namespace orvane {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

RunnerGlance runnerNamed(const std::string& name, double change = 2345.5) {
  RunnerGlance runner;
  runner.name = name;
  runner.status = "Running";
  runner.calls = 123'456;
  runner.callsPerSecond = 12'300;
  runner.startBalance = 1'000'000;
  runner.equity = runner.startBalance + change;
  runner.holdings = {{"IF2101.CFFEX", 2}, {"IC2101.CFFEX", -1}};
  return runner;
}

Glance glanceAt(std::size_t runners, std::size_t logLines = 0) {
  Glance glance;
  glance.title = "several";
  glance.phase = "playing";
  glance.time = "2021-03-04 10:31:00";
  glance.timeZone = "Asia/Shanghai";
  glance.delivered = 632;
  glance.total = 1000;
  glance.recordsPerSecond = 1'200'000;
  glance.elapsedSeconds = 7;
  glance.leftSeconds = 4;
  for (std::size_t i = 0; i < runners; ++i)
    glance.runners.push_back(runnerNamed(fmt::format("runner{}", i)));
  for (std::size_t i = 0; i < logLines; ++i) glance.log.push_back(fmt::format("line {}", i));
  return glance;
}

/// The picture as text, one string a line; fails where it is larger than the screen.
std::vector<std::string> shown(const Glance& glance, int columns, int rows,
                               const ViewChoice& choice = {}) {
  std::vector<std::string> lines;
  for (const std::vector<Span>& line : WatchLayout(columns, rows).picture(glance, choice)) {
    std::wstring text;
    for (const Span& span : line) text += span.text;
    EXPECT_LE(columnsOf(text), columns);
    std::string plain;
    for (const wchar_t character : text)
      plain += character < 0x80 ? static_cast<char>(character) : '~';
    lines.push_back(plain);
  }
  EXPECT_LE(lines.size(), static_cast<std::size_t>(rows));
  return lines;
}

std::string joined(const std::vector<std::string>& lines) {
  std::string all;
  for (const std::string& line : lines) all += line + "\n";
  return all;
}

TEST(WatchLayout, shouldShowEverythingOnAWideScreen) {
  const auto lines = shown(glanceAt(2, 5), 160, 40);
  ASSERT_EQ(lines.size(), 40u);
  EXPECT_THAT(lines[0], AllOf(HasSubstr(" PLAYING "), HasSubstr("several"),
                              HasSubstr("0:07 elapsed, about 0:04 left")));
  EXPECT_THAT(lines[1], HasSubstr("63.2%  2021-03-04 10:31:00 Asia/Shanghai"));
  EXPECT_THAT(lines[2],
              AllOf(HasSubstr("632 of 1,000 records  1.20M/s"),
                    HasSubstr("246,912 call-backs  24.6k/s"), HasSubstr("in all +4,691.00")));
  EXPECT_THAT(lines[4], AllOf(HasSubstr("RUNNER"), HasSubstr("EQUITY"), HasSubstr("POSITION")));
  EXPECT_THAT(lines[5], AllOf(HasSubstr("runner0  Running"), HasSubstr("123,456"),
                              HasSubstr("12.3k"), HasSubstr("1,002,345.50"), HasSubstr("+2,345.50"),
                              HasSubstr("+0.23%"), HasSubstr("IF2101.CFFEX +2, IC2101.CFFEX -1")));
  EXPECT_THAT(lines[7], HasSubstr("last lines"));
  EXPECT_EQ(lines[12], "line 4");
  EXPECT_THAT(lines[39], HasSubstr("q stop"));
}

TEST(WatchLayout, shouldShowNamesAndChangesOnATinyScreen) {
  const auto lines = shown(glanceAt(6, 5), 20, 5);
  ASSERT_EQ(lines.size(), 5u);
  EXPECT_EQ(lines[0], "63.2% 10:31 playing");
  EXPECT_EQ(lines[1], "runner0  +2,345.50");
  EXPECT_EQ(lines[4], "and 3 more");
  Glance large = glanceAt(1);
  large.runners[0].equity += 12'345'678;
  EXPECT_EQ(shown(large, 20, 5)[1], "runner0  +12.3M");
}

TEST(WatchLayout, shouldFitAnyScreen) {
  Glance glance = glanceAt(9, 30);
  glance.runners[0].name = "一个名字很长的策略运行器一个名字很长的策略运行器";
  glance.runners[1].equity = -1e15;
  glance.runners[2].message = "一" + std::string(300, 'x') + "\n\033[2J";
  glance.log.push_back("日志" + std::string(500, 'y'));
  for (int columns = 1; columns <= 130; columns += columns < 30 ? 1 : 7)
    for (int rows = 1; rows <= 40; rows += rows < 14 ? 1 : 9)
      for (const bool showsHelp : {false, true})
        shown(glance, columns, rows, {.first = 4, .showsHelp = showsHelp});
}

TEST(WatchLayout, shouldCountTheRunnersThatDoNotFit) {
  const Glance glance = glanceAt(40, 3);
  const WatchLayout layout(100, 24);
  const std::size_t seen = layout.runnersSeen(glance);
  ASSERT_GT(seen, 5u);
  ASSERT_LT(seen, 20u);
  const auto at = [&](std::size_t first) {
    return joined(shown(glance, 100, 24, {.first = first}));
  };
  EXPECT_THAT(at(0),
              AllOf(HasSubstr("runner0 "), HasSubstr(fmt::format("and {} more", 40 - seen))));
  EXPECT_THAT(at(3), AllOf(Not(HasSubstr("runner2 ")), HasSubstr("runner3 "),
                           HasSubstr(fmt::format("3 above, {} more", 37 - seen))));
  EXPECT_THAT(at(1000), AllOf(HasSubstr("runner39"), HasSubstr(fmt::format("{} above", 40 - seen)),
                              Not(HasSubstr("more\n"))));
  EXPECT_EQ(layout.firstSeen(glance, {.first = 1000}), 40 - seen);
  EXPECT_THAT(at(0), HasSubstr("line 2"));
}

TEST(WatchLayout, shouldAlignNamesOfDoubleWidth) {
  Glance glance = glanceAt(2);
  glance.runners[1].name = "双均线";
  const auto lines = WatchLayout(100, 20).picture(glance, {});
  EXPECT_EQ(lines[5][0].text, L"runner0");
  EXPECT_EQ(lines[6][0].text, screenText("双均线") + L" ");
}

TEST(WatchLayout, shouldClipALongNameBeforeItDropsAColumn) {
  Glance glance = glanceAt(1);
  glance.runners[0].name = std::string(60, 'n');
  const auto lines = shown(glance, 80, 20);
  EXPECT_THAT(lines[5], AllOf(HasSubstr("nnnn~"), HasSubstr("+2,345.50"), HasSubstr("Running"),
                              HasSubstr("1,002,345.50")));
}

TEST(WatchLayout, shouldSayWhatARunnerHasStoodInForAWhile) {
  Glance glance = glanceAt(1);
  glance.phase = "stopping";
  glance.runners[0].callback = "onBarSeries";
  EXPECT_THAT(joined(shown(glance, 160, 20)),
              AllOf(HasSubstr(" STOPPING "), HasSubstr("in onBarSeries")));
  glance.runners[0].isError = true;
  glance.runners[0].status = "Error";
  glance.runners[0].message = "no such code";
  EXPECT_THAT(joined(shown(glance, 160, 20)), HasSubstr("no such code"));
}

TEST(WatchLayout, shouldTellByTextWhatItTellsByColour) {
  Glance glance = glanceAt(2);
  glance.runners[1].equity = glance.runners[1].startBalance - 10;
  const auto lines = WatchLayout(120, 20).picture(glance, {});
  const auto tintOf = [&](std::size_t line, const std::wstring& text) {
    for (const Span& span : lines[line])
      if (span.text.find(text) != std::wstring::npos) return span.tint;
    return Tint::Plain;
  };
  EXPECT_EQ(tintOf(5, L"+2,345.50"), Tint::Good);
  EXPECT_EQ(tintOf(6, L"-10.00"), Tint::Bad);
}

TEST(WatchLayout, shouldShowThatThePictureIsPausedAndHelp) {
  const Glance glance = glanceAt(2);
  EXPECT_THAT(joined(shown(glance, 100, 20, {.isPaused = true})), HasSubstr("PICTURE PAUSED"));
  EXPECT_THAT(joined(shown(glance, 20, 5, {.isPaused = true})), HasSubstr("paused"));
  EXPECT_THAT(joined(shown(glance, 100, 20, {.showsHelp = true})),
              AllOf(HasSubstr("hold the picture"), Not(HasSubstr("runner0"))));
}

TEST(WatchLayout, shouldWrapItsHelpToTheScreen) {
  const Glance glance = glanceAt(2);
  for (const int columns : {24, 40, 60, 79, 160}) {
    const auto lines = shown(glance, columns, 40, {.showsHelp = true});
    std::string words;
    for (std::size_t i = 4; i + 1 < lines.size(); ++i)
      words += lines[i].substr(std::min(lines[i].find_first_not_of(' '), lines[i].size())) + " ";
    EXPECT_THAT(words, AllOf(HasSubstr("again ends at once "), HasSubstr("and back "),
                             HasSubstr("at the last prices; CHANGE is what it made of it. ")))
        << columns;
    EXPECT_THAT(words, Not(HasSubstr("~"))) << columns << ": something is cut";
  }
  const auto low = shown(glance, 60, 10, {.showsHelp = true});
  EXPECT_THAT(low[0], HasSubstr("63.2%"));
  EXPECT_EQ(low[1], "q, Ctrl-C   stop all in order; Ctrl-C again ends at once");
  EXPECT_EQ(low[7], "?           this help, and back");
}

}  // namespace
}  // namespace orvane
