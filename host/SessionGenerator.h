#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <string_view>

namespace orvane {

/// What a synthetic session is to look like.
struct GeneratorOptions {
  std::uint64_t seed = 1;
  int instruments = 3;
  int days = 1;       ///< Trading days; weekends are left out.
  int minutes = 240;  ///< Of each day's session, from its begin; at most 240.
  std::chrono::sys_days firstDay{std::chrono::year{2026} / 1 / 5};
};

/// The fixed properties of a synthetic instrument. Prices are counted in steps of the price tick,
/// volumes in lots, so that every one fits them.
struct SyntheticInstrument {
  std::string code, market;
  std::int64_t tickMantissa = 1;  ///< The price tick is this much ...
  int decimals = 0;               ///< ... over 10^decimals.
  std::int64_t lotSize = 1;
  std::int64_t multiplier = 1;
  std::int64_t firstPrice = 0;  ///< In ticks.

  std::string codeText() const { return code + "." + market; }
  /// A price in ticks as decimal text.
  std::string priceText(std::int64_t ticks) const;
};

/// Makes the trades and the ten-level book of one instrument, step by step, and writes them as
/// rows of a tick file and a file of 1-minute bars. The same seed gives the same bytes on every
/// machine: only integers are used, and the engine is one that the language defines fully.
class SessionGenerator {
 public:
  /// `index` counts the instruments from 0.
  SessionGenerator(const GeneratorOptions& options, int index);

  const SyntheticInstrument& instrument() const { return instrument_; }

  static std::string tickHeader();
  static std::string barHeader();

  using Write = std::function<void(std::string_view)>;
  /// Hands out the rows of all days, in time order; each call is one line with its line end. Where
  /// `tickRow` is empty, only bars are made, the same ones.
  void generate(const Write& tickRow, const Write& barRow);

 private:
  struct Bar {
    std::int64_t open = 0, high = 0, low = 0, close = 0, volume = 0, turnover = 0;
  };

  std::uint64_t below(std::uint64_t limit) { return engine_() % limit; }
  void playDay(std::chrono::sys_days day, const Write& tickRow, const Write& barRow);
  /// One step of half a second; answers whether anything changed.
  bool step();
  void trade(std::int64_t price, std::int64_t lots);
  std::string tickRowText(std::chrono::sys_days day, std::int64_t msOfDay);
  std::string barRowText(std::chrono::sys_days day, std::int64_t minuteEnd) const;
  std::string moneyText(std::int64_t tickLots) const;

  const GeneratorOptions options_;
  SyntheticInstrument instrument_;
  std::mt19937_64 engine_;

  // Prices in ticks, sizes in lots, turnover in ticks times lots.
  std::int64_t bid_ = 0, ask_ = 0, last_ = 0;
  std::int64_t sizes_[2][10] = {};
  std::int64_t openInterest_ = 0;
  std::int64_t preClose_ = 0, upper_ = 0, lower_ = 0;
  Bar day_, minute_;
  std::int64_t tickVolume_ = 0, tickTurnover_ = 0;  ///< Since the last row.
};

}  // namespace orvane
