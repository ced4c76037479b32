#include <gtest/gtest.h>

#include "platform/trade/conditions/GridTerms.h"

namespace orvane::testing {
namespace {

using detail::ContractTerms;
using detail::faultAgainst;
using detail::GridTerms;
using detail::priceOf;
using detail::readGridTerms;
using detail::volumeOf;

GridOptions options(const std::string& lower, const std::string& upper, const std::string& step,
                    const std::string& volume) {
  GridOptions grid;
  grid.lower = lower;
  grid.upper = upper;
  grid.step = step;
  grid.volume = volume;
  return grid;
}

std::string faultOf(const GridOptions& grid) {
  std::string fault;
  EXPECT_FALSE(readGridTerms(grid, fault).has_value());
  return fault;
}

GridTerms termsOf(const GridOptions& grid) {
  std::string fault;
  const auto terms = readGridTerms(grid, fault);
  EXPECT_TRUE(terms.has_value()) << fault;
  return terms.value_or(GridTerms{});
}

TEST(GridTerms, shouldCutTheRangeIntoStepsExactly) {
  const GridTerms terms = termsOf(options("0.1", "0.7", "0.2", "1.5"));
  EXPECT_EQ(terms.cells, 3u);
  EXPECT_EQ(text(terms.level(0)), "0.1");
  EXPECT_EQ(text(terms.level(1)), "0.3");
  EXPECT_EQ(text(terms.upper()), "0.7");
  EXPECT_EQ(text(terms.volume), "1.5");
}

TEST(GridTerms, shouldCountTheLevelsThatLieBelowAPrice) {
  const GridTerms terms = termsOf(options("98", "101", "1", "1"));
  const auto below = [&](const char* price) {
    return terms.levelsBelow(*priceOf(std::string_view(price)));
  };
  EXPECT_EQ(below("1"), 0u);
  EXPECT_EQ(below("98"), 0u);
  EXPECT_EQ(below("98.0000000001"), 1u);
  EXPECT_EQ(below("99"), 1u);
  EXPECT_EQ(below("100.5"), 3u);
  EXPECT_EQ(below("101"), 3u);
  EXPECT_EQ(below("101.2"), 4u);
  EXPECT_EQ(below("900000"), 4u);
}

TEST(GridTerms, shouldRefuseWhatIsNoAmountAndNameFieldAndValue) {
  EXPECT_EQ(faultOf(options("", "2", "1", "1")), "lower: \"\" is not a decimal number above 0");
  EXPECT_EQ(faultOf(options("0", "2", "1", "1")), "lower: \"0\" is not a decimal number above 0");
  EXPECT_EQ(faultOf(options("1", "x", "1", "1")), "upper: \"x\" is not a decimal number above 0");
  EXPECT_EQ(faultOf(options("1", "2", "-1", "1")), "step: \"-1\" is not a decimal number above 0");
  EXPECT_EQ(faultOf(options("1", "2", "1", "1e3")),
            "volume: \"1e3\" is not a decimal number above 0");
}

TEST(GridTerms, shouldRefuseARangeThatIsEmptyOrNotAWholeNumberOfSteps) {
  EXPECT_EQ(faultOf(options("2", "2", "1", "1")), "upper: \"2\" is not above lower, 2");
  EXPECT_EQ(faultOf(options("2", "1.5", "1", "1")), "upper: \"1.5\" is not above lower, 2");
  EXPECT_EQ(faultOf(options("1", "2", "0.3", "1")),
            "step: \"0.3\" does not divide the range from 1 to 2");
  EXPECT_EQ(faultOf(options("1", "2", "5", "1")),
            "step: \"5\" does not divide the range from 1 to 2");
}

TEST(GridTerms, shouldRefuseMoreThanAThousandSteps) {
  EXPECT_EQ(termsOf(options("1", "1001", "1", "1")).cells, 1000u);
  EXPECT_EQ(faultOf(options("1", "1002", "1", "1")),
            "step: \"1\" makes 1001 steps of the range, more than 1000");
}

TEST(GridTerms, shouldRefuseWhatTheCodeDoesNotAllow) {
  ContractTerms contract;
  contract.lot = *volumeOf(std::string_view("2"));
  contract.tick = *priceOf(std::string_view("0.2"));
  const auto fault = [&](const GridOptions& grid) { return faultAgainst(termsOf(grid), contract); };
  EXPECT_EQ(fault(options("1", "2", "0.2", "4")), "");
  EXPECT_EQ(fault(options("1.1", "2.1", "0.2", "4")),
            "lower: 1.1 is not a multiple of the price tick 0.2");
  EXPECT_EQ(fault(options("1", "2", "0.1", "4")),
            "step: 0.1 is not a multiple of the price tick 0.2");
  EXPECT_EQ(fault(options("1", "2", "0.2", "3")), "volume: 3 is not a multiple of the lot 2");
  EXPECT_EQ(fault(options("100000000", "900000000", "100000000", "90000000000")),
            "volume: 90000000000 at 900000000 is too much to reckon");
}

TEST(GridTerms, shouldAllowAnyPriceWhereThePriceTickIsNotKnown) {
  EXPECT_EQ(faultAgainst(termsOf(options("0.01", "0.07", "0.03", "1")), ContractTerms{}), "");
}

}  // namespace
}  // namespace orvane::testing
