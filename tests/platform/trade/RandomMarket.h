#pragma once

#include <random>

#include "platform/reference/Instrument.h"
#include "platform/trade/TradeOptions.h"
#include "shared/MarketRecords.h"
#include "tests/platform/trade/NaiveExchange.h"

namespace orvane::testing {

/// Draws what a random exchange is made of and fed with: each time as the records of the true one
/// and as the integers of the naive one.
class RandomMarket {
 public:
  explicit RandomMarket(std::uint64_t seed);

  struct Code {
    NaiveTerms terms;
    Instrument instrument;
    ICodeID id;
    bool hasTicks = false;
    int64 step = 0;  ///< What prices differ by.
    int64 middle = 0;
    int64 lastEnd = -1;
    int day = 20210104;
  };
  struct Bar {
    NaiveBar naive;
    IKLine record;
    int64 previousEnd = 0;
  };
  struct Tick {
    NaiveTick naive;
    IDepthMarketData record;
  };

  TradeOptions options;
  NaiveOptions naiveOptions;
  std::vector<std::string> startBalances;
  std::vector<Code> codes;
  int64 entryLatencyMs = 0;
  int64 now = 0;

  std::int64_t below(std::int64_t limit);
  bool chance(int percent) { return below(100) < percent; }

  /// The next bar or tick of a code; moves the time on.
  Bar nextBar(Code& code);
  Tick nextTick(Code& code);
  /// An order without an id.
  NaiveOrder nextOrder();
  Order recordOf(const NaiveOrder& order);

 private:
  template <typename T>
  const T& oneOf(const std::vector<T>& all) {
    return all[static_cast<std::size_t>(below(static_cast<std::int64_t>(all.size())))];
  }
  void makeOptions();
  void addCode(int number);
  void wander(Code& code);
  void passTime(Code& code);
  /// The size of a level, trade or bar, as the record has it and as it counts.
  std::pair<double, std::optional<int64>> size(const Code& code);
  std::vector<NaiveLevel> ladder(const Code& code, bool isBid, IDepthMarketData& record);

  std::mt19937_64 random_;
  bool isWild_ = false;  ///< Prices and volumes at the ends of their ranges.
};

}  // namespace orvane::testing
