#include "host/SessionGenerator.h"

#include <fmt/core.h>
#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace orvane {
namespace {

constexpr std::int64_t kStepMs = 500;
constexpr std::int64_t kMinuteMs = 60'000;
constexpr int kLevels = 10;

struct Preset {
  const char* code;
  std::int64_t tickMantissa;
  int decimals;
  std::int64_t lotSize, multiplier, firstPrice;
};

// An index future, a share, a metal, a bond and a grain, as their price ticks and lots go.
constexpr Preset kPresets[] = {{"IDX", 2, 1, 1, 300, 20'000},
                               {"SHR", 1, 2, 100, 1, 2'500},
                               {"MTL", 1, 0, 1, 10, 3'600},
                               {"BND", 5, 3, 1, 10'000, 20'100},
                               {"GRN", 25, 2, 1, 50, 6'700}};

/// Minutes of the day that the two halves of a session begin at: two hours each.
constexpr int kHalfBegins[] = {9 * 60 + 30, 13 * 60};
constexpr int kHalfMinutes = 120;

std::string dateText(std::chrono::sys_days day) {
  const std::chrono::year_month_day date{day};
  return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(date.year()),
                     static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
}

std::string clockText(std::int64_t msOfDay, bool withMs) {
  const std::int64_t seconds = msOfDay / 1000;
  std::string text =
      fmt::format("{:02}:{:02}:{:02}", seconds / 3600, seconds / 60 % 60, seconds % 60);
  if (withMs) text += fmt::format(".{:03}", msOfDay % 1000);
  return text;
}

std::string decimalText(std::int64_t mantissa, int decimals) {
  std::int64_t power = 1;
  for (int i = 0; i < decimals; ++i) power *= 10;
  if (decimals == 0) return std::to_string(mantissa);
  return fmt::format("{}.{:0{}}", mantissa / power, mantissa % power, decimals);
}

}  // namespace

std::string SyntheticInstrument::priceText(std::int64_t ticks) const {
  return decimalText(ticks * tickMantissa, decimals);
}

SessionGenerator::SessionGenerator(const GeneratorOptions& options, int index)
    : options_(options),
      engine_(options.seed * 0x9E3779B97F4A7C15ULL + static_cast<std::uint64_t>(index)) {
  const Preset& preset = kPresets[static_cast<std::size_t>(index) % std::size(kPresets)];
  instrument_.code = fmt::format("{}{:02}", preset.code, index + 1);
  instrument_.market = "SIM";
  instrument_.tickMantissa = preset.tickMantissa;
  instrument_.decimals = preset.decimals;
  instrument_.lotSize = preset.lotSize;
  instrument_.multiplier = preset.multiplier;
  instrument_.firstPrice = preset.firstPrice;
  last_ = preset.firstPrice;
  openInterest_ = 50'000 + static_cast<std::int64_t>(below(50'000));
}

std::string SessionGenerator::tickHeader() {
  std::string text =
      "datetime,last_price,volume,turnover,total_volume,total_turnover,open_interest,open,high,"
      "low,pre_close,upper_limit,lower_limit";
  for (int level = 1; level <= kLevels; ++level)
    text += fmt::format(",bid_price{0},bid_volume{0},ask_price{0},ask_volume{0}", level);
  return text + "\n";
}

std::string SessionGenerator::barHeader() {
  return "datetime,open,high,low,close,volume,turnover,open_interest\n";
}

void SessionGenerator::generate(const Write& tickRow, const Write& barRow) {
  auto day = options_.firstDay;
  for (int done = 0; done < options_.days; day += std::chrono::days{1}) {
    const std::chrono::weekday weekday{day};
    if (weekday == std::chrono::Saturday || weekday == std::chrono::Sunday) continue;
    playDay(day, tickRow, barRow);
    ++done;
  }
}

void SessionGenerator::playDay(std::chrono::sys_days day, const Write& tickRow,
                               const Write& barRow) {
  preClose_ = last_;
  upper_ = preClose_ + preClose_ / 10;
  lower_ = preClose_ - preClose_ / 10;
  bid_ = last_;
  ask_ = last_ + 1;
  for (auto& side : sizes_)
    for (auto& size : side) size = 1 + static_cast<std::int64_t>(below(80));
  day_ = {last_, last_, last_, last_, 0, 0};
  minute_ = day_;
  int left = options_.minutes;
  for (const int begin : kHalfBegins) {
    const int minutes = std::min(left, kHalfMinutes);
    left -= minutes;
    for (int minute = 0; minute < minutes; ++minute) {
      const std::int64_t minuteBegin = (begin + minute) * kMinuteMs;
      minute_ = {last_, last_, last_, last_, 0, 0};
      for (std::int64_t ms = 0; ms < kMinuteMs; ms += kStepMs)
        if (step() && tickRow) tickRow(tickRowText(day, minuteBegin + ms));
      barRow(barRowText(day, minuteBegin + kMinuteMs));
    }
  }
}

bool SessionGenerator::step() {
  const std::uint64_t dice = below(100);
  if (dice < 45) return false;
  // The book drifts by a tick now and then, inside the day's limits, and its spread breathes.
  if (dice < 60) {
    const std::int64_t move = below(2) == 0 ? 1 : -1;
    if (bid_ + move - kLevels > lower_ && ask_ + move + kLevels < upper_) {
      bid_ += move;
      ask_ += move;
    }
  }
  if (below(20) == 0) ask_ = bid_ + 1 + static_cast<std::int64_t>(below(3));
  for (auto& side : sizes_) {
    auto& size = side[below(kLevels)];
    size = 1 + static_cast<std::int64_t>(below(80));
  }
  if (dice >= 70) {
    const bool isBuy = below(2) == 0;
    auto& standing = sizes_[isBuy ? 1 : 0][0];
    const std::int64_t lots = 1 + static_cast<std::int64_t>(below(20));
    trade(isBuy ? ask_ : bid_, std::min(lots, standing));
    standing = std::max<std::int64_t>(1, standing - lots);
  }
  return true;
}

void SessionGenerator::trade(std::int64_t price, std::int64_t lots) {
  last_ = price;
  openInterest_ +=
      static_cast<std::int64_t>(below(2 * static_cast<std::uint64_t>(lots) + 1)) - lots;
  tickVolume_ += lots;
  tickTurnover_ += price * lots;
  for (Bar* bar : {&day_, &minute_}) {
    if (bar->volume == 0) *bar = {price, price, price, price, 0, 0};
    bar->high = std::max(bar->high, price);
    bar->low = std::min(bar->low, price);
    bar->close = price;
    bar->volume += lots;
    bar->turnover += price * lots;
  }
}

std::string SessionGenerator::moneyText(std::int64_t tickLots) const {
  return decimalText(
      tickLots * instrument_.tickMantissa * instrument_.lotSize * instrument_.multiplier,
      instrument_.decimals);
}

std::string SessionGenerator::tickRowText(std::chrono::sys_days day, std::int64_t msOfDay) {
  const auto price = [this](std::int64_t ticks) { return instrument_.priceText(ticks); };
  const std::int64_t lot = instrument_.lotSize;
  fmt::memory_buffer row;
  fmt::format_to(std::back_inserter(row), "{} {},{},{},{},{},{},{},{},{},{},{},{},{}",
                 dateText(day), clockText(msOfDay, true), price(last_), tickVolume_ * lot,
                 moneyText(tickTurnover_), day_.volume * lot, moneyText(day_.turnover),
                 openInterest_, price(day_.open), price(day_.high), price(day_.low),
                 price(preClose_), price(upper_), price(lower_));
  for (int level = 0; level < kLevels; ++level)
    fmt::format_to(std::back_inserter(row), ",{},{},{},{}", price(bid_ - level),
                   sizes_[0][level] * lot, price(ask_ + level), sizes_[1][level] * lot);
  row.push_back('\n');
  tickVolume_ = 0;
  tickTurnover_ = 0;
  return fmt::to_string(row);
}

std::string SessionGenerator::barRowText(std::chrono::sys_days day, std::int64_t minuteEnd) const {
  return fmt::format("{} {},{},{},{},{},{},{},{}\n", dateText(day), clockText(minuteEnd, false),
                     instrument_.priceText(minute_.open), instrument_.priceText(minute_.high),
                     instrument_.priceText(minute_.low), instrument_.priceText(minute_.close),
                     minute_.volume * instrument_.lotSize, moneyText(minute_.turnover),
                     openInterest_);
}

}  // namespace orvane
