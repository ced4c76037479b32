#include "host/SessionGenerator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <vector>

#include "host/Digest.h"

namespace orvane {
namespace {

struct MadeRows {
  std::vector<std::string> ticks, bars;
};

SessionGenerator generatorOf(std::uint64_t seed, int index) {
  GeneratorOptions options;
  options.seed = seed;
  options.days = 2;
  options.minutes = 150;
  return SessionGenerator(options, index);
}

MadeRows generate(std::uint64_t seed, int index) {
  SessionGenerator generator = generatorOf(seed, index);
  MadeRows rows;
  generator.generate([&](std::string_view row) { rows.ticks.emplace_back(row); },
                     [&](std::string_view row) { rows.bars.emplace_back(row); });
  return rows;
}

std::vector<std::string> fields(const std::string& row) {
  std::vector<std::string> result;
  std::istringstream text(row);
  for (std::string field; std::getline(text, field, ',');) result.push_back(field);
  return result;
}

/// A decimal text in its own smallest unit.
long long units(const std::string& text) {
  std::string digits;
  for (const char c : text)
    if (c != '.' && c != '\n') digits += c;
  return std::stoll(digits);
}

TEST(SessionGenerator, shouldGiveTheSameBytesForTheSameSeed) {
  EXPECT_EQ(generate(5, 1).ticks, generate(5, 1).ticks);
  EXPECT_EQ(generate(5, 1).bars, generate(5, 1).bars);
  EXPECT_NE(generate(5, 1).ticks, generate(6, 1).ticks);
}

TEST(SessionGenerator, shouldGiveTheSameBarsWhereNobodyWantsTicks) {
  SessionGenerator generator = generatorOf(5, 1);
  std::vector<std::string> bars;
  generator.generate({}, [&](std::string_view row) { bars.emplace_back(row); });
  EXPECT_EQ(bars, generate(5, 1).bars);
}

TEST(SessionGenerator, shouldGiveTheBytesThatEveryMachineGives) {
  Digest digest;
  const MadeRows rows = generate(1, 0);
  for (const auto& row : rows.ticks) digest.put(row);
  for (const auto& row : rows.bars) digest.put(row);
  EXPECT_EQ(digest.text(), "15376dae3f0ff529404ec64713eeec6f");
}

TEST(SessionGenerator, shouldRespectPriceTicksLotsAndTheOrderOfTheBook) {
  for (int index = 0; index < 5; ++index) {
    GeneratorOptions options;
    const SyntheticInstrument its = SessionGenerator(options, index).instrument();
    for (const std::string& row : generate(3, index).ticks) {
      const auto cells = fields(row);
      ASSERT_EQ(cells.size(), 13u + 40u) << row;
      EXPECT_EQ(units(cells[1]) % its.tickMantissa, 0) << row;
      EXPECT_EQ(std::stoll(cells[2]) % its.lotSize, 0) << row;
      EXPECT_LE(units(cells[1]), units(cells[11])) << row;
      EXPECT_GE(units(cells[1]), units(cells[12])) << row;
      for (std::size_t level = 0; level < 10; ++level) {
        const std::size_t at = 13 + 4 * level;
        EXPECT_EQ(units(cells[at]) % its.tickMantissa, 0) << row;
        EXPECT_GT(std::stoll(cells[at + 1]), 0) << row;
        EXPECT_EQ(std::stoll(cells[at + 1]) % its.lotSize, 0) << row;
        EXPECT_EQ(units(cells[at + 2]) % its.tickMantissa, 0) << row;
        EXPECT_EQ(std::stoll(cells[at + 3]) % its.lotSize, 0) << row;
        EXPECT_LT(units(cells[at]), units(cells[at + 2])) << row;
        if (level == 0) continue;
        EXPECT_LT(units(cells[at]), units(cells[at - 4])) << row;
        EXPECT_GT(units(cells[at + 2]), units(cells[at - 2])) << row;
      }
    }
  }
}

TEST(SessionGenerator, shouldGiveBarsThatAgreeWithTheTrades) {
  const MadeRows rows = generate(4, 0);
  EXPECT_EQ(rows.bars.size(), 300u);
  long long tickVolume = 0, barVolume = 0;
  for (const auto& row : rows.ticks) tickVolume += std::stoll(fields(row)[2]);
  for (const auto& row : rows.bars) {
    const auto cells = fields(row);
    barVolume += std::stoll(cells[5]);
    EXPECT_LE(units(cells[3]), std::min(units(cells[1]), units(cells[4]))) << row;
    EXPECT_GE(units(cells[2]), std::max(units(cells[1]), units(cells[4]))) << row;
  }
  EXPECT_EQ(tickVolume, barVolume);
  EXPECT_GT(barVolume, 0);
}

}  // namespace
}  // namespace orvane
