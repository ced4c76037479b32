#include "platform/market/files/TimeParser.h"

#include <algorithm>
#include <cstring>

#include "platform/market/files/DataFiles.h"

namespace orvane::detail {
namespace {

/// Whole digits, or digits with a decimal fraction, as counters of time are written.
struct Counter {
  std::int64_t whole = 0;
  std::int64_t nanos = 0;  ///< Of the fraction.
  std::size_t width = 0;   ///< Digits before the point.
  bool hasFraction = false;
};

bool readCounter(std::string_view text, Counter& out) {
  out = {};
  const std::size_t point = text.find('.');
  out.width = std::min(point, text.size());
  if (!wholeNumber(text.substr(0, point), out.whole)) return false;
  if (point == text.npos) return true;
  const std::string_view fraction = text.substr(point + 1);
  out.hasFraction = true;
  if (fraction.size() > 12) return false;
  std::int64_t unit = 100'000'000;
  for (const char c : fraction) {
    if (c < '0' || c > '9') return false;
    out.nanos += (c - '0') * unit;
    unit /= 10;
  }
  return true;
}

bool clockDigits(std::int64_t hhmmss, std::int64_t& ms) {
  const std::int64_t hour = hhmmss / 10000;
  const std::int64_t minute = hhmmss / 100 % 100;
  const std::int64_t second = hhmmss % 100;
  if (hour > 24 || minute > 59 || second > 59 || (hour == 24 && minute + second > 0)) return false;
  ms = ((hour * 60 + minute) * 60 + second) * 1000;
  return true;
}

/// The time of day that a counter means in a format; false if it has no such.
bool timeOfDay(TimeFormat format, const Counter& value, std::int64_t& ms) {
  const std::int64_t fractionMs = value.nanos / 1'000'000;
  switch (format) {
    case TimeFormat::MsOfDay:
      ms = value.whole;
      return value.whole <= kDayMs;
    case TimeFormat::SecondsOfDay:
      if (value.whole > kDayMs / 1000) return false;
      ms = value.whole * 1000 + fractionMs;
      return ms <= kDayMs;
    case TimeFormat::HourMinute:
      return value.whole <= 2400 && !value.hasFraction && clockDigits(value.whole * 100, ms);
    case TimeFormat::HourMinuteSecond:
      if (value.whole > 240'000 || !clockDigits(value.whole, ms)) return false;
      ms += fractionMs;
      return true;
    case TimeFormat::HourMinuteSecondMillis:
      if (value.whole > 240'000'000 || value.hasFraction) return false;
      if (!clockDigits(value.whole / 1000, ms)) return false;
      ms += value.whole % 1000;
      return true;
    default:
      return false;
  }
}

/// The milliseconds since 1970 of a counter, if it lies between 1980 and 2100.
bool epochMs(TimeFormat format, const Counter& value, std::int64_t& ms) {
  switch (format) {
    case TimeFormat::EpochSeconds:
      if (value.whole > 10'000'000'000) return false;
      ms = value.whole * 1000 + value.nanos / 1'000'000;
      break;
    case TimeFormat::EpochMillis:
      ms = value.whole;
      break;
    case TimeFormat::EpochMicros:
      ms = value.whole / 1000;
      break;
    case TimeFormat::EpochNanos:
      ms = value.whole / 1'000'000;
      break;
    default:
      return false;
  }
  return ms >= 315'532'800'000 && ms <= 4'102'444'800'000;
}

bool fits(TimeFormat format, const Counter& value) {
  std::int64_t ms = 0;
  return epochMs(format, value, ms) || timeOfDay(format, value, ms);
}

/// One clock has one width, unless its leading zeros were lost.
bool fitsWidth(TimeFormat format, const Counter& value) {
  const std::size_t full = format == TimeFormat::HourMinute         ? 4
                           : format == TimeFormat::HourMinuteSecond ? 6
                                                                    : 9;
  return value.width == full;
}

bool isTextMoment(std::string_view text) {
  MomentText moment;
  return parseMoment(text, DateOrder::Unknown, moment) != DateResult::Bad;
}

}  // namespace

TimeParser::TimeParser(const std::string& file, TimeColumns columns, const Description& description,
                       std::optional<std::int64_t> fileDay, const SampleRows& samples,
                       const std::vector<std::string>& names, std::vector<std::string>& notes)
    : file_(file),
      columns_(columns),
      zone_(description.timeZone.empty() ? "UTC" : description.timeZone),
      order_(description.dateOrder),
      day_(description.date ? description.date : fileDay),
      wanted_(description.timeFormat) {
  for (const int column : {columns_.moment, columns_.date, columns_.time, columns_.tradingDay})
    if (column >= 0) findOrder(column, samples, names, notes);
  settleColumns(samples);
  if (columns_.moment < 0 || samples.empty()) return;

  MomentText first;
  bool epoch = false;
  const std::string& text = samples.front()[static_cast<std::size_t>(columns_.moment)];
  const bool good = parseColumn(columns_.moment, momentFormat_, text, momentCache_, first, epoch);
  if (!good || first.hasDate) return;
  if (!day_)
    throw DataFileError(file_ + ": column \"" + names[static_cast<std::size_t>(columns_.moment)] +
                        "\" is a time of day, and nothing tells the date: give \"date\" in the "
                        "description, or put YYYYMMDD into the file's name");
  if (!description.date)
    notes.push_back("rows have a time of day only; the date is the one in the file's name");
}

/// Where two columns are named but one of them holds all, that one is taken.
void TimeParser::settleColumns(const SampleRows& samples) {
  const auto hasDate = [&](int column, TimeFormat format, bool& hasTime) {
    bool any = false;
    hasTime = false;
    Cached cache;
    for (const auto& row : samples) {
      MomentText moment;
      bool epoch = false;
      const std::string& text = row[static_cast<std::size_t>(column)];
      if (!parseColumn(column, format, text, cache, moment, epoch)) continue;
      any = any || moment.hasDate;
      hasTime = hasTime || (moment.hasTime && moment.msOfDay != 0);
    }
    return any;
  };
  bool hasTime = false;
  if (columns_.moment >= 0) {
    momentFormat_ =
        formatOf(columns_.moment, columns_.momentIsTimeOfDay || columns_.date >= 0, samples);
    if (columns_.date < 0 || hasDate(columns_.moment, momentFormat_, hasTime)) {
      columns_.date = columns_.time = -1;
      return;
    }
    // A column called a time stamp that holds a time of day beside a date.
    columns_.time = columns_.moment;
    columns_.moment = -1;
  }
  timeFormat_ = formatOf(columns_.time, true, samples);
  dateFormat_ = formatOf(columns_.date, false, samples);
  if (hasDate(columns_.time, timeFormat_, hasTime)) {
    columns_.moment = columns_.time;
    momentFormat_ = timeFormat_;
    columns_.date = columns_.time = -1;
  } else if (hasDate(columns_.date, dateFormat_, hasTime) && hasTime) {
    columns_.moment = columns_.date;
    momentFormat_ = dateFormat_;
    columns_.date = columns_.time = -1;
  }
}

TimeFormat TimeParser::formatOf(int column, bool isTimeOfDay, const SampleRows& samples) const {
  using enum TimeFormat;
  if (wanted_ != Auto && (isTimeOfDay || columns_.date < 0)) return wanted_;
  std::vector<Counter> counters;
  bool compact = true;
  for (const auto& row : samples) {
    const std::string& text = row[static_cast<std::size_t>(column)];
    if (text.empty()) continue;
    Counter counter;
    if (!readCounter(text, counter)) return Text;
    compact = compact && isTextMoment(text);
    counters.push_back(counter);
  }
  if (counters.empty() || (compact && !isTimeOfDay)) return Text;
  const auto all = [&](TimeFormat format) {
    return std::all_of(counters.begin(), counters.end(),
                       [&](const Counter& counter) { return fits(format, counter); });
  };
  const auto allWide = [&](TimeFormat format) {
    return all(format) &&
           std::all_of(counters.begin(), counters.end(),
                       [&](const Counter& counter) { return fitsWidth(format, counter); });
  };
  for (const TimeFormat format : {EpochNanos, EpochMicros, EpochMillis, EpochSeconds})
    if (all(format)) return format;
  if (compact && counters.front().width > 9) return Text;
  for (const TimeFormat format : {HourMinuteSecondMillis, HourMinuteSecond, HourMinute})
    if (isTimeOfDay && allWide(format)) return format;
  if (compact) return Text;
  const bool fractions = std::any_of(counters.begin(), counters.end(),
                                     [](const Counter& counter) { return counter.hasFraction; });
  if (isTimeOfDay || fractions) {
    for (const TimeFormat format : {HourMinute, HourMinuteSecond, HourMinuteSecondMillis})
      if (all(format)) return format;
    return all(SecondsOfDay) ? SecondsOfDay : MsOfDay;
  }
  return all(MsOfDay) ? MsOfDay : HourMinuteSecondMillis;
}

void TimeParser::findOrder(int column, const SampleRows& samples,
                           const std::vector<std::string>& names, std::vector<std::string>& notes) {
  if (order_ != DateOrder::Unknown) return;
  const std::string* ambiguous = nullptr;
  bool dayFirst = true;
  bool monthFirst = true;
  for (const auto& row : samples) {
    const std::string& text = row[static_cast<std::size_t>(column)];
    MomentText moment;
    if (parseMoment(text, DateOrder::Unknown, moment) != DateResult::Ambiguous) continue;
    ambiguous = &text;
    dayFirst = dayFirst && parseMoment(text, DateOrder::DayFirst, moment) == DateResult::Good;
    monthFirst = monthFirst && parseMoment(text, DateOrder::MonthFirst, moment) == DateResult::Good;
  }
  if (!ambiguous) return;
  const std::string& name = names[static_cast<std::size_t>(column)];
  if (dayFirst == monthFirst)
    throw DataFileError(file_ + ": column \"" + name + "\": \"" + *ambiguous +
                        "\" may begin with the day or with the month; say which in the "
                        "description: \"dateOrder\": \"DMY\" or \"MDY\"");
  order_ = dayFirst ? DateOrder::DayFirst : DateOrder::MonthFirst;
  notes.push_back(std::string("dates are read as ") +
                  (dayFirst ? "day/month/year" : "month/day/year") + ", which alone fits them all");
}

bool TimeParser::fail(int column, const char* text) {
  errorColumn_ = column;
  errorText_ = text;
  return false;
}

bool TimeParser::parseText(int column, std::string_view text, Cached& cache, MomentText& out) {
  // Rows close together have their date in common, so its text is only compared. What follows from
  // the rows before must be what the text says by itself, so only plain times of day pass here.
  if (cache.hasDate && text.starts_with(cache.prefix)) {
    const std::string_view clock = text.substr(cache.prefix.size());
    const bool isPlain = !clock.empty() && !cache.endsInDigit && text.size() <= kMostMomentBytes &&
                         clock.back() > ' ';
    if (isPlain && parseClockTime(clock, out.msOfDay)) {
      out.hasDate = true;
      out.hasTime = true;
      out.day = cache.day;
      return true;
    }
    if (clock.empty()) {
      out.hasDate = true;
      out.day = cache.day;
      return true;
    }
  }
  const DateResult result = parseMoment(text, order_, out);
  if (result == DateResult::Ambiguous)
    return fail(column, "may begin with the day or with the month; \"dateOrder\" tells which");
  if (result == DateResult::Bad)
    return fail(column, text.empty() ? "is empty" : "is not a date or time");
  if (out.hasDate && out.datePart > 0 && !out.hasOffset) {
    cache.prefix.assign(text.substr(0, out.datePart));
    cache.day = out.day;
    cache.endsInDigit = cache.prefix.back() >= '0' && cache.prefix.back() <= '9';
    cache.isPlain = !cache.endsInDigit && cache.prefix.find_first_of(",;|\t\"") == text.npos;
    // A date of digits in front of more of them is no prefix that stands for itself.
    cache.hasDate = !cache.endsInDigit || text.size() == cache.prefix.size();
  }
  return true;
}

bool TimeParser::parseDigits(int column, TimeFormat format, std::string_view text, MomentText& out,
                             bool& epoch) {
  Counter counter;
  if (!readCounter(text, counter)) return fail(column, text.empty() ? "is empty" : "is not a time");
  std::int64_t ms = 0;
  if (epochMs(format, counter, ms)) {
    out.hasDate = out.hasTime = out.hasOffset = true;
    out.day = ms / kDayMs;
    out.msOfDay = ms % kDayMs;
    epoch = true;
    return true;
  }
  if (!timeOfDay(format, counter, out.msOfDay)) return fail(column, "is not a time");
  out.hasTime = true;
  return true;
}

bool TimeParser::parseColumn(int column, TimeFormat format, std::string_view text, Cached& cache,
                             MomentText& out, bool& epoch) {
  out = {};
  if (format == TimeFormat::Text || format == TimeFormat::Auto)
    return parseText(column, text, cache, out);
  return parseDigits(column, format, text, out, epoch);
}

bool TimeParser::addMillis(std::span<const CsvField> fields, std::int64_t& ms) {
  if (columns_.millis < 0) return true;
  const std::string_view text = fields[static_cast<std::size_t>(columns_.millis)].text;
  Counter counter;
  if (text.empty()) return true;
  if (!readCounter(text, counter) || counter.whole > 999)
    return fail(columns_.millis, "is not a number of milliseconds from 0 to 999");
  ms += counter.whole;
  return true;
}

bool TimeParser::parse(std::span<const CsvField> fields, std::int64_t notBefore, RowTime& out) {
  out = {};
  MomentText moment;
  bool epoch = false;
  if (columns_.moment >= 0) {
    if (!parseColumn(columns_.moment, momentFormat_,
                     fields[static_cast<std::size_t>(columns_.moment)].text, momentCache_, moment,
                     epoch))
      return false;
    if (!moment.hasDate) {
      if (!day_) return fail(columns_.moment, "has no date");
      moment.day = *day_;
    }
  } else {
    const auto dateText = fields[static_cast<std::size_t>(columns_.date)].text;
    if (!parseColumn(columns_.date, dateFormat_, dateText, dateCache_, moment, epoch)) return false;
    if (!moment.hasDate) return fail(columns_.date, "is not a date");
    const std::int64_t day = moment.day;
    const auto timeText = fields[static_cast<std::size_t>(columns_.time)].text;
    if (!parseColumn(columns_.time, timeFormat_, timeText, timeCache_, moment, epoch)) return false;
    if (!moment.hasTime) return fail(columns_.time, "is not a time");
    moment.day = day;
  }
  if (!addMillis(fields, moment.msOfDay)) return false;

  const std::int64_t localMs = moment.day * kDayMs + moment.msOfDay;
  out.utcMs = moment.hasOffset ? localMs - moment.offsetMs : zone_.toUtc(localMs, notBefore);
  out.twice = !moment.hasOffset && zone_.wasTwice();
  out.dateOnly = !moment.hasTime;
  out.midnight = moment.msOfDay == 0;
  out.day = moment.day;
  const auto field = [&fields](int column) {
    return fields[static_cast<std::size_t>(column)].text;
  };
  return (columns_.tradingDay < 0 || parseTradingDay(field(columns_.tradingDay), out)) &&
         (columns_.until < 0 || parseUntil(field(columns_.until), out));
}

int TimeParser::plainColumn() const {
  const bool isAlone = columns_.millis < 0 && columns_.tradingDay < 0 && columns_.until < 0;
  const bool isText = momentFormat_ == TimeFormat::Text || momentFormat_ == TimeFormat::Auto;
  return isAlone && isText ? columns_.moment : -1;
}

const char* TimeParser::takePlain(const char* at, const char* end, char delimiter,
                                  std::int64_t notBefore, RowTime& out) {
  constexpr std::ptrdiff_t kShort = 5, kLong = 8;
  const Cached& cache = momentCache_;
  const auto prefix = static_cast<std::ptrdiff_t>(cache.prefix.size());
  if (!cache.hasDate || !cache.isPlain || end - at <= prefix + kLong ||
      cache.prefix.size() + kLong > kMostMomentBytes ||
      std::memcmp(at, cache.prefix.data(), cache.prefix.size()) != 0)
    return nullptr;
  at += prefix;
  const auto ends = [delimiter](char c) { return c == delimiter || c == '\n' || c == '\r'; };
  const std::ptrdiff_t length = ends(at[kShort]) ? kShort : ends(at[kLong]) ? kLong : 0;
  std::int64_t msOfDay = 0;
  if (length == 0 || !parsePlainClock({at, static_cast<std::size_t>(length)}, msOfDay))
    return nullptr;
  out.utcMs = zone_.toUtc(cache.day * kDayMs + msOfDay, notBefore);
  out.day = cache.day;
  out.dateOnly = false;
  out.midnight = msOfDay == 0;
  out.twice = zone_.wasTwice();
  out.tradingDay = 0;
  out.untilMs = 0;
  return at + length;
}

bool TimeParser::parseTradingDay(std::string_view text, RowTime& out) {
  if (text.empty()) return true;
  MomentText tradingDay;
  if (!parseText(columns_.tradingDay, text, tradingDayCache_, tradingDay)) return false;
  if (!tradingDay.hasDate) return fail(columns_.tradingDay, "is not a date");
  out.tradingDay = numberOfDay(tradingDay.day);
  return true;
}

bool TimeParser::parseUntil(std::string_view text, RowTime& out) {
  MomentText until;
  if (!parseText(columns_.until, text, untilCache_, until)) return false;
  if (!until.hasDate) return fail(columns_.until, "has no date");
  const std::int64_t localMs = until.day * kDayMs + until.msOfDay;
  out.untilMs = until.hasOffset ? localMs - until.offsetMs : zone_.toUtc(localMs, out.utcMs);
  if (out.untilMs <= out.utcMs) return fail(columns_.until, "is not after the begin of the bar");
  return true;
}

}  // namespace orvane::detail
