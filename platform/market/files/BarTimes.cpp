// Finds the period of bars and sets their times.

#include <algorithm>
#include <map>

#include "platform/fields/KLineView.h"
#include "platform/market/files/BarFile.h"
#include "platform/market/files/DataFiles.h"
#include "platform/market/files/Parallel.h"

namespace orvane::detail {
namespace {

/// How often each distance between neighbours occurs.
using Distances = std::map<std::int64_t, std::size_t>;

/// Rows that one thread takes at a time.
constexpr std::size_t kBlock = std::size_t{1} << 14;

std::size_t blocksOf(std::size_t rows) { return (rows + kBlock - 1) / kBlock; }

void add(Distances& distances, const Distances& more) {
  for (const auto& [distance, times] : more) distances[distance] += times;
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

/// Local dates of times that lie close together.
class LocalDays {
 public:
  explicit LocalDays(const ZoneClock& zone) : zone_(zone) {}

  int numberAt(std::int64_t utcMs) {
    const std::int64_t localMs = zone_.toLocal(utcMs);
    const std::int64_t day = localMs >= 0 ? localMs / kDayMs : (localMs - kDayMs + 1) / kDayMs;
    if (day != lastDay_) {
      lastDay_ = day;
      lastNumber_ = numberOfDay(day);
    }
    return lastNumber_;
  }

 private:
  ZoneClock zone_;
  std::int64_t lastDay_ = INT64_MIN;
  int lastNumber_ = 0;
};

class Finisher {
 public:
  Finisher(std::vector<BarPart>& parts, const Description& description, const ZoneClock& zone,
           int threads, std::vector<std::string>& notes)
      : parts_(parts),
        description_(description),
        zone_(zone),
        threads_(threads > 0 ? threads : usualReadThreads()),
        notes_(notes) {
    for (const BarPart& part : parts_) distances_.push_back(part.distances.counts());
  }

  Rows<IKLine> run(std::int64_t& periodMs) {
    period_ = findPeriod();
    checkParts();
    const bool stampIsEnd = findStamp();
    Rows<IKLine> bars = std::move(parts_.front().bars);
    for (std::size_t i = 1; i < parts_.size(); ++i) bars.append(parts_[i].bars);
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
    }
    for (const Distances& distances : distances_) add(all, distances);
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
      noteUnmet(path, all);
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

  /// A period that no two bars have may be that of a market where little happens; mostly it is a
  /// mistake.
  void noteUnmet(const std::string& path, const Distances& all) {
    const bool isMet = std::any_of(all.begin(), all.end(), [this](const auto& distance) {
      return rounded(distance.first) == description_.periodMs;
    });
    if (all.empty() || isMet) return;
    notes_.push_back(path + ": \"period\" is " + periodText(description_.periodMs) +
                     ", but the bars are mostly " + periodText(rounded(usual(all))) +
                     " apart, and no two of them " + periodText(description_.periodMs));
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
    for (std::size_t i = 0; i < parts_.size(); ++i) {
      const BarPart& part = parts_[i];
      if (part.bars.size() < 10) continue;
      const Distances& distances = distances_[i];
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

  void setEnds(Rows<IKLine>& bars) {
    // Sessions may cut a bar short: each begins no earlier than the one before ends.
    std::vector<std::int64_t> ends(blocksOf(bars.size()), INT64_MIN);
    for (std::size_t block = 1; block < ends.size(); ++block)
      ends[block] = bars[block * kBlock - 1].words[kline::BeginTime];
    inBlocks(bars, [&](std::size_t from, std::size_t to, LocalDays& days) {
      std::int64_t previous = ends[from / kBlock];
      for (std::size_t i = from; i < to; ++i) {
        const std::int64_t stamp = bars[i].words[kline::BeginTime];
        bars[i].words[kline::BeginTime] = std::max(stamp - period_, previous);
        setEnd(bars[i], stamp, days);
        previous = stamp;
      }
    });
  }

  void setStarts(Rows<IKLine>& bars) {
    inBlocks(bars, [&](std::size_t from, std::size_t to, LocalDays& days) {
      for (std::size_t i = from; i < to; ++i) {
        std::int64_t end = bars[i].words[kline::BeginTime] + period_;
        if (i + 1 < bars.size()) end = std::min(end, bars[i + 1].words[kline::BeginTime]);
        setEnd(bars[i], end, days);
      }
    });
  }

  template <typename Work>
  void inBlocks(const Rows<IKLine>& bars, const Work& work) {
    forEachOf(blocksOf(bars.size()), threads_, [&](std::size_t block) {
      LocalDays days(zone_);
      work(block * kBlock, std::min((block + 1) * kBlock, bars.size()), days);
    });
  }

  static void setEnd(IKLine& bar, std::int64_t end, LocalDays& days) {
    const KLineView view(bar);
    const int day = view.tradingDay();
    bar.words[kline::EndTime] = end;
    KLineWriter(bar).setDayAndFlags(day != 0 ? day : days.numberAt(end - 1), view.flags());
  }

  /// Bars of days and weeks carry dates: they run from midnight to midnight of their zone.
  void setDays(Rows<IKLine>& bars, bool stampIsEnd) {
    ZoneClock zone = zone_;
    const bool midnights = std::all_of(parts_.begin(), parts_.end(),
                                       [](const BarPart& part) { return part.midnights; });
    const bool week = period_ == kWeekMs;
    std::int64_t previousEnd = INT64_MIN;
    for (std::size_t i = 0; i < bars.size(); ++i) {
      IKLine& bar = bars[i];
      std::int64_t day = bar.words[kline::EndTime];
      if (!midnights) {
        const std::int64_t local = zone.toLocal(bar.words[kline::BeginTime]);
        day = local >= 0 ? local / kDayMs : (local - kDayMs + 1) / kDayMs;
      }
      const std::int64_t firstDay = week && stampIsEnd ? day - 6 : day;
      const std::int64_t lastDay = week && !stampIsEnd ? day + 6 : day;
      std::int64_t begin = zone.toUtc(firstDay * kDayMs);
      const std::int64_t end = zone.toUtc((lastDay + 1) * kDayMs);
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
  const ZoneClock& zone_;
  const int threads_;
  std::vector<std::string>& notes_;
  std::vector<Distances> distances_;  ///< Of each part.
  std::int64_t period_ = 0;
};

}  // namespace

Rows<IKLine> finishWholeBars(std::vector<BarPart>& parts, const ZoneClock& zone,
                             std::int64_t& periodMs) {
  Rows<IKLine> bars;
  LocalDays days(zone);
  for (BarPart& part : parts) {
    if (part.periodMs != parts.front().periodMs)
      throw DataFileError(part.path + " tells a period of " + periodText(part.periodMs) + ", and " +
                          parts.front().path + " one of " + periodText(parts.front().periodMs) +
                          "; one series has one period");
    for (IKLine& bar : part.bars) {
      const KLineView view(bar);
      if (!bars.empty() && view.endTime() <= KLineView(bars.back()).endTime())
        throw DataFileError(part.path + ": a bar ends before the one in front of it, that of " +
                            std::to_string(days.numberAt(view.beginTime())));
      if (view.tradingDay() == 0)
        KLineWriter(bar).setDayAndFlags(days.numberAt(view.endTime() - 1), view.flags());
      bars.push_back(bar);
    }
  }
  periodMs = parts.front().periodMs;
  return bars;
}

Rows<IKLine> finishBars(std::vector<BarPart>& parts, const Description& description,
                        const ZoneClock& zone, int threads, std::int64_t& periodMs,
                        std::vector<std::string>& notes) {
  return Finisher(parts, description, zone, threads, notes).run(periodMs);
}

}  // namespace orvane::detail
