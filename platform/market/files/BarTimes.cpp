// Finds the period of bars and sets their times.

#include <algorithm>
#include <map>

#include "platform/fields/KLineView.h"
#include "platform/market/files/BarFile.h"
#include "platform/market/files/DataFiles.h"

namespace orvane::detail {
namespace {

/// How often each distance between neighbours occurs.
using Distances = std::map<std::int64_t, std::size_t>;

Distances distancesOf(const std::vector<IKLine>& bars) {
  Distances distances;
  std::int64_t last = 0;
  std::size_t* count = nullptr;
  for (std::size_t i = 1; i < bars.size(); ++i) {
    const auto distance = bars[i].words[kline::BeginTime] - bars[i - 1].words[kline::BeginTime];
    if (!count || distance != last) {
      last = distance;
      count = &distances[distance];
    }
    ++*count;
  }
  return distances;
}

/// The most frequent distance; of several the smallest. 0: there is none.
std::int64_t usual(const Distances& distances) {
  std::int64_t best = 0;
  std::size_t count = 0;
  for (const auto& [distance, times] : distances) {
    if (times <= count) continue;
    best = distance;
    count = times;
  }
  return best;
}

/// The shares of neighbours that a period is too long for, and that it fits exactly.
struct Fit {
  bool tooLong = false;
  bool met = false;
};

Fit fitOf(std::int64_t period, const Distances& distances) {
  Fit fit;
  std::size_t all = 0;
  std::size_t shorter = 0;
  for (const auto& [distance, times] : distances) {
    all += times;
    // A day's bars may be an hour nearer where the clocks change.
    if (distance < period - (period >= kDayMs ? kDayMs / 12 : 0)) shorter += times;
    if (distance == period) fit.met = true;
  }
  fit.tooLong = shorter * 2 > all;
  return fit;
}

/// A distance as a period: days and weeks are not whole numbers of hours everywhere.
std::int64_t rounded(std::int64_t distance) {
  if (distance > 22 * kHourMs && distance < 6 * kDayMs) return kDayMs;
  if (distance >= 6 * kDayMs && distance <= 8 * kDayMs) return kWeekMs;
  return distance;
}

std::string periodText(std::int64_t ms) {
  if (ms == kWeekMs) return "a week";
  if (ms == kDayMs) return "a day";
  if (ms % 3'600'000 == 0) return std::to_string(ms / 3'600'000) + " h";
  if (ms % 60'000 == 0) return std::to_string(ms / 60'000) + " min";
  if (ms % 1000 == 0) return std::to_string(ms / 1000) + " s";
  return std::to_string(ms) + " ms";
}

class Finisher {
 public:
  Finisher(std::vector<BarPart>& parts, const Description& description, ZoneClock& zone,
           std::vector<std::string>& notes)
      : parts_(parts), description_(description), zone_(zone), notes_(notes) {}

  std::vector<IKLine> run(std::int64_t& periodMs) {
    period_ = findPeriod();
    checkParts();
    const bool stampIsEnd = findStamp();
    std::vector<IKLine> bars = std::move(parts_.front().bars);
    for (std::size_t i = 1; i < parts_.size(); ++i)
      bars.insert(bars.end(), parts_[i].bars.begin(), parts_[i].bars.end());
    if (period_ >= kDayMs)
      setDays(bars, stampIsEnd);
    else if (stampIsEnd)
      setEnds(bars);
    else
      setStarts(bars);
    periodMs = period_;
    return bars;
  }

 private:
  std::int64_t findPeriod() {
    Distances all;
    bool datesOnly = true;
    for (const BarPart& part : parts_) {
      datesOnly = datesOnly && part.datesOnly;
      for (const auto& [distance, times] : distancesOf(part.bars)) all[distance] += times;
    }
    for (std::size_t i = 1; i < parts_.size(); ++i)
      ++all[parts_[i].bars.front().words[kline::BeginTime] -
            parts_[i - 1].bars.back().words[kline::BeginTime]];
    const std::string& path = parts_.front().path;
    if (description_.periodMs != 0) {
      if (datesOnly && description_.periodMs < kDayMs)
        throw DataFileError(path + ": \"period\" is " + periodText(description_.periodMs) +
                            ", but the bars have dates without times");
      if (fitOf(description_.periodMs, all).tooLong)
        throw DataFileError(path + ": \"period\" is " + periodText(description_.periodMs) +
                            ", but the bars are mostly " + periodText(usual(all)) + " apart");
      return description_.periodMs;
    }
    const std::int64_t hint = hinted(all, datesOnly);
    if (hint != 0) return hint;
    const std::int64_t found = rounded(usual(all));
    if (found > kWeekMs)
      throw DataFileError(path + ": the bars are mostly " + std::to_string(found / kDayMs) +
                          " days apart; periods above a week are not known. For daily bars with "
                          "gaps give \"period\": \"day\"");
    if (datesOnly) return std::max(found, kDayMs);
    if (found == 0)
      throw DataFileError(path +
                          ": one bar does not tell its period; give \"period\" in a "
                          "description");
    notes_.push_back("the bars' period is taken to be " + periodText(found) +
                     ", the most frequent distance between them");
    return found;
  }

  /// The period that the files' names tell, if their bars do not speak against it.
  std::int64_t hinted(const Distances& all, bool datesOnly) {
    const BarPart* first = nullptr;
    for (const BarPart& part : parts_) {
      if (part.hintMs == 0) continue;
      if (first && first->hintMs != part.hintMs)
        throw DataFileError(part.path + " has bars of " + periodText(part.hintMs) + " and " +
                            first->path + " of " + periodText(first->hintMs) +
                            " by their names; one series has one period");
      first = &part;
    }
    if (!first || (datesOnly && first->hintMs < kDayMs)) return 0;
    const Fit fit = fitOf(first->hintMs, all);
    const bool unmet = !fit.met && all.size() > 1 && first->hintMs < kDayMs;
    if (!fit.tooLong && !unmet) return first->hintMs;
    notes_.push_back(first->path + ": the name tells a period of " + periodText(first->hintMs) +
                     ", which the bars do not have");
    return 0;
  }

  /// Files whose bars have another period than the series do not belong to it.
  void checkParts() const {
    for (const BarPart& part : parts_) {
      if (part.bars.size() < 10) continue;
      const Distances distances = distancesOf(part.bars);
      const Fit fit = fitOf(period_, distances);
      if (!fit.tooLong && (fit.met || period_ >= kDayMs || parts_.size() == 1)) continue;
      throw DataFileError(
          part.path + ": its bars are mostly " + periodText(rounded(usual(distances))) +
          " apart, but those of the series " + periodText(period_) + "; one series has one period");
    }
  }

  bool findStamp() {
    if (description_.stampIsEnd) return *description_.stampIsEnd;
    if (parts_.front().stampIsEnd) return *parts_.front().stampIsEnd;
    if (period_ != kDayMs)
      notes_.push_back(
          "a bar's time is taken to be the start of its interval; say \"stamp\": "
          "\"end\" in a description if it is the end");
    return false;
  }

  void setEnds(std::vector<IKLine>& bars) {
    std::int64_t previous = INT64_MIN;
    for (IKLine& bar : bars) {
      const std::int64_t stamp = bar.words[kline::BeginTime];
      // Sessions may cut a bar short.
      setTimes(bar, std::max(stamp - period_, previous), stamp);
      previous = stamp;
    }
  }

  void setStarts(std::vector<IKLine>& bars) {
    for (std::size_t i = 0; i < bars.size(); ++i) {
      const std::int64_t stamp = bars[i].words[kline::BeginTime];
      std::int64_t end = stamp + period_;
      if (i + 1 < bars.size()) end = std::min(end, bars[i + 1].words[kline::BeginTime]);
      setTimes(bars[i], stamp, end);
    }
  }

  void setTimes(IKLine& bar, std::int64_t begin, std::int64_t end) {
    KLineWriter writer(bar);
    const KLineView view(bar);
    int day = view.tradingDay();
    if (day == 0) day = dayNumber(zone_.toLocal(end - 1));
    const int flags = view.flags();
    writer.setTimes(begin, end);
    writer.setDayAndFlags(day, flags);
  }

  int dayNumber(std::int64_t localMs) {
    const std::int64_t day = localMs >= 0 ? localMs / kDayMs : (localMs - kDayMs + 1) / kDayMs;
    if (day != lastDay_) {
      lastDay_ = day;
      lastNumber_ = numberOfDay(day);
    }
    return lastNumber_;
  }

  /// Bars of days and weeks carry dates: they run from midnight to midnight of their zone.
  void setDays(std::vector<IKLine>& bars, bool stampIsEnd) {
    const bool midnights = std::all_of(parts_.begin(), parts_.end(),
                                       [](const BarPart& part) { return part.midnights; });
    const bool week = period_ == kWeekMs;
    std::int64_t previousEnd = INT64_MIN;
    for (std::size_t i = 0; i < bars.size(); ++i) {
      IKLine& bar = bars[i];
      std::int64_t day = bar.words[kline::EndTime];
      if (!midnights) {
        const std::int64_t local = zone_.toLocal(bar.words[kline::BeginTime]);
        day = local >= 0 ? local / kDayMs : (local - kDayMs + 1) / kDayMs;
      }
      const std::int64_t firstDay = week && stampIsEnd ? day - 6 : day;
      const std::int64_t lastDay = week && !stampIsEnd ? day + 6 : day;
      std::int64_t begin = zone_.toUtc(firstDay * kDayMs);
      const std::int64_t end = zone_.toUtc((lastDay + 1) * kDayMs);
      if (previousEnd >= end)
        throw DataFileError(parts_.front().path + ": two bars of " + periodText(period_) +
                            " end on " + std::to_string(numberOfDay(lastDay)));
      if (stampIsEnd) begin = std::max(begin, previousEnd);
      previousEnd = end;
      KLineWriter writer(bar);
      const int flags = KLineView(bar).flags();
      writer.setTimes(begin, end);
      writer.setDayAndFlags(numberOfDay(day), flags);
    }
  }

  std::vector<BarPart>& parts_;
  const Description& description_;
  ZoneClock& zone_;
  std::vector<std::string>& notes_;
  std::int64_t period_ = 0;
  std::int64_t lastDay_ = INT64_MIN;
  int lastNumber_ = 0;
};

}  // namespace

std::vector<IKLine> finishBars(std::vector<BarPart>& parts, const Description& description,
                               ZoneClock& zone, std::int64_t& periodMs,
                               std::vector<std::string>& notes) {
  return Finisher(parts, description, zone, notes).run(periodMs);
}

}  // namespace orvane::detail
