#include "host/FileAudit.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <set>

#include "host/TimeArgument.h"
#include "host/ZoneOffsets.h"
#include "platform/fields/KLineView.h"
#include "platform/market/files/CacheFile.h"

namespace orvane {
namespace {

constexpr int64 kMinute = 60'000, kHour = 60 * kMinute, kDay = 24 * kHour;
constexpr std::size_t kPictureColumns = 60;
constexpr std::size_t kMostHoles = 10;
/// Ticks may pause; what is longer is worth a word.
constexpr int64 kLongPause = 10 * kMinute;
/// Weekends and feasts leave days out; what is longer is worth a word.
constexpr int64 kLongDays = 11 * kDay;

/// One row, as far as the audit looks at it.
struct Row {
  int64 begin = 0, end = 0;
  int day = 0;
  double open = 0, high = 0, low = 0, close = 0;
  bool hasPrice = true;
};

Row rowOf(const BarSeries& series, std::size_t at) {
  const KLineView bar(series.bars[at]);
  return {bar.beginTime(), bar.endTime(), bar.tradingDay(), bar.open(),
          bar.high(),      bar.low(),     bar.close()};
}

Row rowOf(const TickSeries& series, std::size_t at) {
  IDepthMarketData quote;
  series.fill(at, quote);
  const QuoteView view(quote);
  const double price = view.hasTrade() ? view.lastPrice()
                       : view.hasBid() ? view.bidPrice()
                       : view.hasAsk() ? view.askPrice()
                                       : 0;
  return {view.time(), view.time(), series.tradingDays[at], price, price, price, price, price != 0};
}

std::size_t rowsOf(const BarSeries& series) { return series.bars.size(); }
std::size_t rowsOf(const TickSeries& series) { return series.rows(); }

double medianOf(std::vector<double> values) {
  if (values.empty()) return 0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

template <typename Key>
Key mostFrequent(const std::map<Key, std::size_t>& counts) {
  Key best{};
  std::size_t most = 0;
  for (const auto& [key, count] : counts)
    if (count > most) {
      best = key;
      most = count;
    }
  return best;
}

/// Walks over the rows of a series and gathers what it finds.
template <typename Series>
class Auditor {
 public:
  Auditor(const Series& series, SeriesAudit& out, double jump)
      : series_(series), out_(out), jump_(jump), zone_(series.timeZone) {}

  void run() {
    out_.rows = rowsOf(series_);
    if (out_.rows == 0) return;
    out_.first = rowOf(series_, 0).begin;
    out_.last = rowOf(series_, out_.rows - 1).end;
    walk();
    findHoles();
    findJumps();
    choosePrices();
  }

 private:
  using Pause = std::pair<int64, int64>;  ///< Times of day, of the last row and the next.

  int64 timeOfDay(int64 utcMs) const { return (zone_.toLocal(utcMs) % kDay + kDay) % kDay; }
  int dateOf(int64 utcMs) const {
    const std::chrono::sys_time<std::chrono::milliseconds> local{
        std::chrono::milliseconds(zone_.toLocal(utcMs))};
    const std::chrono::year_month_day date{std::chrono::floor<std::chrono::days>(local)};
    return static_cast<int>(date.year()) * 10000 +
           static_cast<int>(static_cast<unsigned>(date.month())) * 100 +
           static_cast<int>(static_cast<unsigned>(date.day()));
  }
  bool isIntraday() const { return out_.isTicks || out_.periodMs < kDay; }

  void suspect(const std::string& what, int64 time) { out_.suspicious[what].add(isoTime(time)); }

  void walk() {
    std::set<int> days;
    Row previous;
    for (std::size_t i = 0; i < out_.rows; ++i) {
      const Row row = rowOf(series_, i);
      const bool isNewDay = i == 0 || row.day != previous.day;
      if (isNewDay && days.insert(row.day).second && isIntraday() && dateOf(row.begin) < row.day)
        ++out_.nightDays;
      if (i > 0 && row.day < previous.day) suspect("trading day goes back", row.begin);
      lookAt(row);
      const int64 clock = timeOfDay(row.begin);
      hasEvening_ = hasEvening_ || (clock >= 16 * kHour && clock < 20 * kHour);
      hasLate_ = hasLate_ || clock >= 20 * kHour;
      if (i == 0 || isNewDay) {
        if (i > 0) ++lasts_[timeOfDay(previous.end)];
        ++begins_[timeOfDay(row.begin)];
      } else if (row.begin > previous.end) {
        ++pauses_[{timeOfDay(previous.end), timeOfDay(row.begin)}];
      }
      previous = row;
    }
    ++lasts_[timeOfDay(previous.end)];
    out_.tradingDays = days.size();
    out_.hasLateRows = isIntraday() && hasLate_ && !hasEvening_ && out_.nightDays == 0;
  }

  void lookAt(const Row& row) {
    if (!row.hasPrice) return;
    if (row.low < 0)
      suspect("price below 0", row.begin);
    else if (row.low == 0)
      suspect("price 0", row.begin);
    if (row.high < row.low) suspect("high below low", row.begin);
    if (out_.isTicks) return;
    const double outside = std::max({row.open, row.close}) - row.high;
    if (row.high >= row.low && (outside > 0 || std::min(row.open, row.close) < row.low))
      suspect("open or close outside of high and low", row.begin);
  }

  /// Pauses that most days have are those between sessions.
  bool isBreak(const Pause& pause) const {
    const auto found = pauses_.find(pause);
    return out_.tradingDays >= 3 && found != pauses_.end() && found->second * 2 >= out_.tradingDays;
  }

  void addHole(std::vector<Hole>& all, int64 from, int64 to) {
    const int64 missing = out_.isTicks ? 0 : (to - from + out_.periodMs / 2) / out_.periodMs;
    if (!out_.isTicks && missing == 0) return;
    out_.missingBars += static_cast<std::size_t>(missing);
    all.push_back({from, to, static_cast<std::size_t>(missing)});
  }

  void findHoles() {
    std::vector<Hole> all;
    Row previous = rowOf(series_, 0);
    for (std::size_t i = 1; i < out_.rows; ++i) {
      const Row row = rowOf(series_, i);
      if (!isIntraday()) {
        if (out_.periodMs == kDay && row.begin - previous.end > kLongDays)
          addHole(all, previous.end, row.begin);
      } else if (row.day == previous.day && row.begin > previous.end) {
        const bool isLong = !out_.isTicks || row.begin - previous.end > kLongPause;
        if (isLong && !isBreak({timeOfDay(previous.end), timeOfDay(row.begin)}))
          addHole(all, previous.end, row.begin);
      }
      previous = row;
    }
    out_.holeCount = all.size();
    if (!out_.isTicks && isIntraday()) out_.sessions = usualSessions();
    std::stable_sort(all.begin(), all.end(),
                     [](const Hole& a, const Hole& b) { return a.to - a.from > b.to - b.from; });
    if (all.size() > kMostHoles) all.resize(kMostHoles);
    std::sort(all.begin(), all.end(), [](const Hole& a, const Hole& b) { return a.from < b.from; });
    out_.holes = std::move(all);
  }

  static std::string clock(int64 timeOfDay) {
    return fmt::format("{:02}:{:02}", timeOfDay / (60 * kMinute), timeOfDay / kMinute % 60);
  }

  /// From the usual begin of a day to its usual end, but for the usual breaks.
  std::string usualSessions() const {
    if (out_.tradingDays < 3) return {};
    std::vector<Pause> breaks;
    const int64 begin = mostFrequent(begins_), end = mostFrequent(lasts_);
    for (const auto& [pause, count] : pauses_)
      if (isBreak(pause) && pause.second != pause.first) breaks.push_back(pause);
    // A night session comes first, though its times of day are late.
    std::sort(breaks.begin(), breaks.end(), [begin](const Pause& a, const Pause& b) {
      return (a.first - begin + kDay) % kDay < (b.first - begin + kDay) % kDay;
    });
    if (breaks.size() > 6) return {};
    std::string text = clock(begin) + "-";
    for (const Pause& pause : breaks) text += clock(pause.first) + "," + clock(pause.second) + "-";
    return text + clock(end);
  }

  void findJumps() {
    std::vector<double> ranges;
    double before = 0;
    for (std::size_t i = 0; i < out_.rows; ++i) {
      const Row row = rowOf(series_, i);
      const double range = out_.isTicks ? std::abs(row.close - before) : row.high - row.low;
      if (range > 0 && row.hasPrice && (!out_.isTicks || before != 0)) ranges.push_back(range);
      if (row.hasPrice) before = row.close;
    }
    const double usual = medianOf(std::move(ranges));
    if (usual <= 0) return;
    before = 0;
    for (std::size_t i = 0; i < out_.rows; ++i) {
      const Row row = rowOf(series_, i);
      if (!row.hasPrice) continue;
      const double move = before == 0 ? 0 : std::abs(row.open - before);
      if (std::max(move, row.high - row.low) > jump_ * usual)
        out_.suspicious["price jump"].add(fmt::format(
            "{} from {} to {}", isoTime(row.begin), move > row.high - row.low ? before : row.low,
            move > row.high - row.low ? row.open : row.high));
      before = row.close;
    }
  }

  void choosePrices() {
    const std::size_t count = std::min(out_.rows, kPictureColumns);
    for (std::size_t i = 0; i < count; ++i) {
      const std::size_t at = count == 1 ? 0 : i * (out_.rows - 1) / (count - 1);
      if (const Row row = rowOf(series_, at); row.hasPrice) out_.prices.push_back(row.close);
    }
  }

  const Series& series_;
  SeriesAudit& out_;
  const double jump_;
  const ZoneOffsets zone_;
  bool hasEvening_ = false, hasLate_ = false;
  std::map<int64, std::size_t> begins_, lasts_;  ///< Times of day of the first and last rows.
  std::map<Pause, std::size_t> pauses_;
};

template <typename Loaded>
SeriesAudit auditOf(const Loaded& loaded, double jump) {
  SeriesAudit audit;
  audit.code = loaded.code;
  audit.timeZone = loaded.series.timeZone;
  audit.notes = loaded.notes;
  if constexpr (std::is_same_v<Loaded, LoadedBars>)
    audit.periodMs = loaded.series.periodMs;
  else
    audit.isTicks = true;
  Auditor(loaded.series, audit, jump).run();
  return audit;
}

void countVolumes(const BarSeries& series, SeriesAudit& audit) {
  for (const IKLine& bar : series.bars) {
    const KLineView view(bar);
    if (view.isQuoteBar() || view.volume() > 0) continue;
    audit.suspicious[view.volume() < 0 ? "volume below 0" : "volume 0"].add(
        isoTime(view.beginTime()));
  }
  // An index has none at all.
  if (const auto none = audit.suspicious.find("volume 0");
      none != audit.suspicious.end() && none->second.count == audit.rows)
    audit.suspicious.erase(none);
}

std::size_t repeatedTicks(const TickSeries& series) {
  const std::size_t width = series.columns.size();
  std::size_t count = 0;
  for (std::size_t row = 1; row < series.rows(); ++row) {
    const double* const cells = series.cells.data() + row * width;
    if (series.times[row] == series.times[row - 1] &&
        std::equal(cells, cells + width, cells - width))
      ++count;
  }
  return count;
}

/// A cache beside the file, in the folder of caches, or the file itself.
std::string cacheText(const DataFileRequest& request) {
  const std::string& path = request.paths.front();
  if (isDataCache(path)) return cacheStateOf(path);
  std::error_code error;
  std::filesystem::path plain = path;
  if (plain.extension() == ".gz") plain.replace_extension();
  const std::string beside = plain.replace_extension(".ovb").string();
  std::string text;
  for (const std::string& cache : {cachePathOf(request), beside})
    if (!cache.empty() && std::filesystem::exists(cache, error))
      text += (text.empty() ? "" : "; ") + cache + ": " + cacheStateOf(cache);
  return text.empty() ? "none" : text;
}

}  // namespace

FileAudit auditFile(DataFileRequest request, bool isKindGiven, double jump) {
  FileAudit audit;
  audit.path = request.paths.front();
  audit.isCache = isDataCache(audit.path);
  std::error_code error;
  audit.bytes = std::filesystem::file_size(audit.path, error);
  if (error) audit.bytes = 0;
  request.onFault = [&audit](const std::string& fault) {
    if (fault.find("repeats the time") != std::string::npos) ++audit.duplicates;
    audit.faults.add(fault);
  };
  const std::string cacheFolder = std::exchange(request.cacheFolder, {});
  const auto read = [&] {
    audit.columns = columnsOfFile(request);
    if (request.kind == DataFileRequest::Kind::Bars) {
      for (const LoadedBars& loaded : loadBars(request)) {
        audit.series.push_back(auditOf(loaded, jump));
        countVolumes(loaded.series, audit.series.back());
      }
    } else {
      for (const LoadedTicks& loaded : loadTicks(request)) {
        audit.series.push_back(auditOf(loaded, jump));
        audit.duplicates += repeatedTicks(loaded.series);
      }
    }
  };
  try {
    try {
      read();
    } catch (const OtherKindError&) {
      if (isKindGiven) throw;
      request.kind = DataFileRequest::Kind::Ticks;
      read();
    }
  } catch (const DataFileError& fault) {
    if (std::string_view(fault.what()).starts_with("description: ")) throw;
    audit.unread = fault.what();
  }
  request.cacheFolder = cacheFolder;
  if (audit.bytes > 0) audit.cache = cacheText(request);
  return audit;
}

}  // namespace orvane
