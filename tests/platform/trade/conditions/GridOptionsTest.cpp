// Grids that are refused: a text names the grid, the field and the value.

#include "shared/GbkLiteral.h"
#include "tests/platform/trade/conditions/GridFixture.h"

namespace orvane::testing {
namespace {

std::string whyRefused(const PlatformOptions& options) {
  try {
    const EmbeddedPlatform platform(options);
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return "accepted";
}

std::string whyRefused(const GridOptions& grid) { return whyRefused(gridOptions(grid)); }

std::string whyNotRun(const GridOptions& grid) {
  PlatformOptions options = gridOptions(grid);
  GridPlatform platform(options, {flat(1)});
  Instrument instrument;
  instrument.code = "A";
  instrument.market = "X";
  instrument.priceTick = "0.2";
  instrument.lotSize = "10";
  platform->addInstrument(instrument);
  try {
    platform->run();
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
  return "ran";
}

TEST(GridOptions, shouldRefuseAnOptionThatIsWrongAndNameGridFieldAndValue) {
  EXPECT_EQ(whyRefused(makeGrid("1", "2", "0.5", "1")), "accepted");
  EXPECT_EQ(whyRefused(makeGrid("1", "2", "0.5", "-1")),
            "grids[0].volume: \"-1\" is not a decimal number above 0");
  EXPECT_EQ(whyRefused(makeGrid("2", "1", "0.5", "1")),
            "grids[0].upper: \"1\" is not above lower, 2");
  EXPECT_EQ(whyRefused(makeGrid("1", "2", "0.3", "1")),
            "grids[0].step: \"0.3\" does not divide the range from 1 to 2");
  GridOptions grid = makeGrid("1", "2", "1", "1");
  grid.account = "账"_gbk;
  EXPECT_EQ(whyRefused(grid), "grids[0].account: \"账\" is not an account");
  grid = makeGrid("1", "2", "1", "1");
  grid.code.clear();
  EXPECT_EQ(whyRefused(grid), "grids[0].code: \"\" is not a code");
}

TEST(GridOptions, shouldRefuseTwoGridsOfOneName) {
  PlatformOptions options = gridOptions(makeGrid("1", "2", "1", "1", "same"));
  options.trade.grids.push_back(makeGrid("1", "2", "1", "1", "same"));
  EXPECT_EQ(whyRefused(options), "grids[1].name: another grid is named \"same\"");
  options.trade.grids[0].name = "grid2";
  options.trade.grids[1].name.clear();
  EXPECT_EQ(whyRefused(options), "grids[1].name: another grid is named \"grid2\"");
}

TEST(GridOptions, shouldRefuseToRunAGridThatDoesNotFitItsCode) {
  EXPECT_EQ(whyNotRun(makeGrid("1", "2", "0.2", "10")), "ran");
  EXPECT_EQ(whyNotRun(makeGrid("1", "2", "0.5", "10")),
            "grids[0].step: 0.5 is not a multiple of the price tick 0.2");
  EXPECT_EQ(whyNotRun(makeGrid("1", "2", "1", "5")),
            "grids[0].volume: 5 is not a multiple of the lot 10");
  GridOptions grid = makeGrid("1", "2", "1", "10");
  grid.code = "B.X";
  EXPECT_EQ(whyNotRun(grid), "grids[0].code: \"B.X\" is not a code that is known");
}

TEST(GridOptions, shouldAnswerWhatIsWrongWithAGridThatIsCreatedOrChanged) {
  GridPlatform platform(tradeOptions(), {flat(1)});
  Instrument instrument;
  instrument.code = "A";
  instrument.market = "X";
  instrument.lotSize = "1";
  platform->addInstrument(instrument);
  const std::string bad = "无效参数"_gbk;
  int64 id = 0;
  const auto create = [&](const GridOptions& grid) {
    const ResultStatus status = platform.grids().create(grid, id);
    EXPECT_EQ(status.code, status.message.empty() ? 0 : -2);
    return status.message;
  };
  EXPECT_EQ(create(makeGrid("1", "x", "1", "1")),
            bad + " upper: \"x\" is not a decimal number above 0");
  GridOptions grid = makeGrid("1", "2", "1", "1");
  grid.code = "B.X";
  EXPECT_EQ(create(grid), bad + " code: \"B.X\" is not a code that is known");
  EXPECT_EQ(create(makeGrid("1", "2", "1", "1.5")),
            bad + " volume: 1.5 is not a multiple of the lot 1");
  EXPECT_EQ(id, 0);
  EXPECT_EQ(create(makeGrid("1", "2", "1", "1")), "");
  EXPECT_EQ(id, 1);
  EXPECT_EQ(create(makeGrid("1", "2", "1", "1")), bad + " name: another grid is named \"g\"");

  const auto change = [&](const GridOptions& to) { return platform.grids().change(1, to).message; };
  EXPECT_EQ(change(grid), bad + " code: \"B.X\" cannot take the place of A.X");
  grid = makeGrid("1", "2", "1", "1");
  grid.account = "A2";
  EXPECT_EQ(change(grid), bad + " account: \"A2\" cannot take the place of A1");
  EXPECT_EQ(change(makeGrid("1", "2", "2", "1")),
            bad + " step: \"2\" does not divide the range from 1 to 2");
  EXPECT_EQ(change(makeGrid("1", "2", "1", "0.5")),
            bad + " volume: 0.5 is not a multiple of the lot 1");
  EXPECT_EQ(platform.state().options.volume, "1");
}

TEST(GridOptions, shouldAnswerThatAGridIsNotThere) {
  GridPlatform platform(gridOptions(makeGrid("1", "2", "1", "1")), {flat(1)});
  GridState state;
  IGridConditions& grids = platform.grids();
  const std::string missing = "不存在"_gbk;
  const std::string text = missing + " grid 2";
  for (const ResultStatus& status :
       {grids.pause(2), grids.resume(2), grids.stop(2), grids.remove(2), grids.find(2, state),
        grids.change(2, makeGrid("1", "2", "1", "1"))}) {
    EXPECT_EQ(status.code, 22);
    EXPECT_EQ(status.message, text);
  }
}

TEST(GridOptions, shouldLetTheNameOfARemovedGridBeGivenAgain) {
  PlatformOptions options = gridOptions(makeGrid("98", "102", "1", "1", "mine"));
  GridOptions unknown = makeGrid("98", "102", "1", "1", "other");
  unknown.code = "NOWHERE.X";
  options.trade.grids.push_back(unknown);
  GridPlatform platform(options, std::vector<Bar>(4, flat(100.5)));
  EXPECT_EQ(platform.grids().remove(2).code, 0) << "its code is not there";
  platform.at(2, [&] {
    int64 id = 0;
    EXPECT_EQ(platform.grids().create(makeGrid("90", "94", "1", "1", "mine"), id).code, -2);
    EXPECT_EQ(platform.grids().remove(1).code, 0);
    EXPECT_EQ(platform.grids().create(makeGrid("90", "94", "1", "1", "mine"), id).code, 0);
  });
  platform.play();
  ASSERT_EQ(platform.grids().all().size(), 1u);
  EXPECT_EQ(platform.grids().all()[0].options.lower, "90");
}

}  // namespace
}  // namespace orvane::testing
