#pragma once

#include <bit>

#include "shared/MarketRecords.h"

namespace orvane {

/// The positions of the words of an `IKLine`, as the embedded platform fills them.
namespace kline {

enum Word : std::size_t {
  BeginTime = 0,     ///< Integer: start of the bar's interval, UTC milliseconds.
  EndTime = 1,       ///< Integer: end of the interval, exclusive; the bar is delivered then.
  Open = 2,          ///< Double; of the bid side in a quote bar, as are the next three.
  High = 3,          ///< Double.
  Low = 4,           ///< Double.
  Close = 5,         ///< Double.
  Volume = 6,        ///< Double; the bid's size in a quote bar.
  Turnover = 7,      ///< Double; the ask's size in a quote bar.
  OpenInterest = 8,  ///< Double.
  DayAndFlags = 9,   ///< Integer: trading day YYYYMMDD, plus the flags in the upper 32 bits.
  AskClose = 10,     ///< Double: the ask side's close in a quote bar, else 0.
};

inline constexpr int kQuoteBar = 1;    ///< Made of bid and ask, not of trades.
inline constexpr int kBidMissing = 2;  ///< Quote bar without a bid: the prices are the ask's.
inline constexpr int kAskMissing = 4;  ///< Quote bar without an ask.

}  // namespace kline

/// Reads the words of a bar by name. Holds a reference; make it where you use it.
class KLineView {
 public:
  explicit KLineView(const IKLine& bar) : bar_(bar) {}

  int64 beginTime() const { return bar_.words[kline::BeginTime]; }
  int64 endTime() const { return bar_.words[kline::EndTime]; }
  double open() const { return number(kline::Open); }
  double high() const { return number(kline::High); }
  double low() const { return number(kline::Low); }
  double close() const { return number(kline::Close); }
  double volume() const { return number(kline::Volume); }
  double turnover() const { return isQuoteBar() ? 0 : number(kline::Turnover); }
  double openInterest() const { return number(kline::OpenInterest); }
  int tradingDay() const { return static_cast<int>(bar_.words[kline::DayAndFlags] & 0xFFFFFFFF); }
  int flags() const { return static_cast<int>(bar_.words[kline::DayAndFlags] >> 32); }
  bool isQuoteBar() const { return (flags() & kline::kQuoteBar) != 0; }
  double bidSize() const { return isQuoteBar() ? number(kline::Volume) : 0; }
  double askSize() const { return isQuoteBar() ? number(kline::Turnover) : 0; }
  double askClose() const { return number(kline::AskClose); }

 private:
  double number(std::size_t at) const { return std::bit_cast<double>(bar_.words[at]); }

  const IKLine& bar_;
};

/// Writes the words of a bar by name.
class KLineWriter {
 public:
  explicit KLineWriter(IKLine& bar) : bar_(bar) {}

  void setTimes(int64 begin, int64 end) {
    bar_.words[kline::BeginTime] = begin;
    bar_.words[kline::EndTime] = end;
  }
  void set(kline::Word at, double value) { bar_.words[at] = std::bit_cast<orvane::Word>(value); }
  void setDayAndFlags(int tradingDay, int flags) {
    bar_.words[kline::DayAndFlags] = (static_cast<int64>(flags) << 32) | tradingDay;
  }

 private:
  IKLine& bar_;
};

}  // namespace orvane
