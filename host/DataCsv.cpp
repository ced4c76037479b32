#include "host/DataCsv.h"

#include <fmt/format.h>

#include <iterator>
#include <type_traits>

#include "host/InputError.h"
#include "host/OutputFile.h"
#include "host/TimeArgument.h"
#include "platform/fields/KLineView.h"
#include "platform/market/PeriodText.h"
#include "platform/market/files/CacheFile.h"

namespace orvane {
namespace {

/// A file of lines.
class CsvFile {
 public:
  explicit CsvFile(const std::string& path) : file_(path) {}

  template <typename... Fields>
  void add(fmt::format_string<Fields...> format, Fields&&... fields) {
    line_.clear();
    fmt::format_to(std::back_inserter(line_), format, std::forward<Fields>(fields)...);
    file_.write({line_.data(), line_.size()});
  }

  /// All lines are in the file behind the name.
  const std::string& finish() { return file_.finish(); }
  void keep() { file_.keep(); }

 private:
  OutputFile file_;
  fmt::memory_buffer line_;
};

/// A text as one field.
std::string quoted(const std::string& text) {
  if (text.find_first_of("\", ;\t|#'") == std::string::npos) return text;
  std::string field = "\"";
  for (const char c : text) field += c == '"' ? "\"\"" : std::string(1, c);
  return field + "\"";
}

/// A number with as many digits as it needs.
std::string numeral(double value) { return fmt::format("{}", value == 0 ? 0.0 : value); }

void writeBars(CsvFile& file, const LoadedBars& loaded) {
  const BarSeries& series = loaded.series;
  file.add(
      "openTime,until,open,high,low,close,volume,turnover,openInterest,tradingDay,code,period,"
      "timeZone\n");
  const std::string same = fmt::format("{},{},{}", quoted(loaded.code),
                                       frequencyText(series.periodMs), quoted(series.timeZone));
  for (const IKLine& bar : series.bars) {
    const KLineView view(bar);
    if (view.isQuoteBar())
      throw InputError(fmt::format(
          "\"{}\" has bars of bid and ask, which no row of a CSV holds; convert them to a cache",
          loaded.code));
    file.add("{},{},{},{},{},{},{},{},{},{},{}\n", isoTime(view.beginTime()),
             isoTime(view.endTime()), numeral(view.open()), numeral(view.high()),
             numeral(view.low()), numeral(view.close()), numeral(view.volume()),
             numeral(view.turnover()), numeral(view.openInterest()), view.tradingDay(), same);
  }
}

void writeTicks(CsvFile& file, const LoadedTicks& loaded) {
  const TickSeries& series = loaded.series;
  file.add("datetime,tradingDay,code,timeZone");
  for (const TickColumnId& id : series.columns) file.add(",{}", nameOfTickColumn(id));
  file.add("\n");
  const std::string same = fmt::format("{},{}", quoted(loaded.code), quoted(series.timeZone));
  const std::size_t width = series.columns.size();
  for (std::size_t row = 0; row < series.rows(); ++row) {
    file.add("{},{},{}", isoTime(series.times[row]), series.tradingDays[row], same);
    for (std::size_t i = 0; i < width; ++i) file.add(",{}", numeral(series.cells[row * width + i]));
    file.add("\n");
  }
}

std::string barText(const IKLine& bar) {
  const KLineView view(bar);
  return fmt::format("{} .. {} of {}: {}, {}, {}, {}, {}, {}, {}", isoTime(view.beginTime()),
                     isoTime(view.endTime()), view.tradingDay(), view.open(), view.high(),
                     view.low(), view.close(), view.volume(), view.turnover(), view.openInterest());
}

bool areSame(const IKLine& one, const IKLine& other) {
  const KLineView a(one), b(other);
  return a.beginTime() == b.beginTime() && a.endTime() == b.endTime() && a.open() == b.open() &&
         a.high() == b.high() && a.low() == b.low() && a.close() == b.close() &&
         a.volume() == b.volume() && a.turnover() == b.turnover() &&
         a.openInterest() == b.openInterest() && a.tradingDay() == b.tradingDay() &&
         a.flags() == b.flags() && a.askClose() == b.askClose();
}

/// What two texts about a series say differently; empty if they are the same.
std::string differenceOf(const char* what, const std::string& given, const std::string& read) {
  return given == read ? std::string()
                       : fmt::format("the {} \"{}\" is read as \"{}\"", what, given, read);
}

std::string differenceOf(const LoadedBars& given, const LoadedBars& read) {
  const BarSeries &a = given.series, &b = read.series;
  for (const std::string& text :
       {differenceOf("code", given.code, read.code), differenceOf("zone", a.timeZone, b.timeZone),
        differenceOf("period", frequencyText(a.periodMs), frequencyText(b.periodMs)),
        differenceOf("number of bars", std::to_string(a.bars.size()),
                     std::to_string(b.bars.size()))})
    if (!text.empty()) return text;
  for (std::size_t i = 0; i < a.bars.size(); ++i)
    if (!areSame(a.bars[i], b.bars[i]))
      return differenceOf("bar", barText(a.bars[i]), barText(b.bars[i]));
  return {};
}

std::string differenceOf(const LoadedTicks& given, const LoadedTicks& read) {
  const TickSeries &a = given.series, &b = read.series;
  for (const std::string& text :
       {differenceOf("code", given.code, read.code), differenceOf("zone", a.timeZone, b.timeZone),
        differenceOf("number of ticks", std::to_string(a.rows()), std::to_string(b.rows()))})
    if (!text.empty()) return text;
  if (a.columns != b.columns) return "its columns are read as others";
  const std::size_t width = a.columns.size();
  for (std::size_t row = 0; row < a.rows(); ++row) {
    const std::string place = "tick of " + isoTime(a.times[row]);
    if (a.times[row] != b.times[row])
      return differenceOf("tick", isoTime(a.times[row]), isoTime(b.times[row]));
    if (a.tradingDays[row] != b.tradingDays[row])
      return differenceOf((place + "'s trading day").c_str(), std::to_string(a.tradingDays[row]),
                          std::to_string(b.tradingDays[row]));
    for (std::size_t i = row * width; i < (row + 1) * width; ++i)
      if (a.cells[i] != b.cells[i])
        return differenceOf(
            fmt::format("{}'s {}", place, nameOfTickColumn(a.columns[i % width])).c_str(),
            numeral(a.cells[i]), numeral(b.cells[i]));
  }
  return {};
}

/// Reads what was written, and tells what is not the same; empty if all is.
template <typename Loaded>
std::string differenceIn(const std::string& path, const Loaded& given,
                         std::vector<Loaded> (*load)(const DataFileRequest&,
                                                     const std::function<void(double)>&)) {
  DataFileRequest request;
  request.kind = std::is_same_v<Loaded, LoadedBars> ? DataFileRequest::Kind::Bars
                                                    : DataFileRequest::Kind::Ticks;
  request.paths = {path};
  try {
    const std::vector<Loaded> read = load(request, {});
    return read.size() == 1 ? differenceOf(given, read.front()) : "it is read as several series";
  } catch (const DataFileError& error) {
    // The file has another name than it was to have.
    const std::string text = error.what();
    return text.starts_with(path) ? "line " + text.substr(path.size() + 1) : text;
  }
}

}  // namespace

void writeCsv(const std::string& path, const DataSet& data) {
  if (data.bars.size() + data.ticks.size() != 1) {
    std::string codes;
    for (const LoadedBars& loaded : data.bars) codes += (codes.empty() ? "" : ", ") + loaded.code;
    for (const LoadedTicks& loaded : data.ticks) codes += (codes.empty() ? "" : ", ") + loaded.code;
    throw InputError(fmt::format(
        "a CSV file holds one series, and there are several: {}; choose with --code", codes));
  }
  if (path.ends_with(".ovb"))
    throw InputError(fmt::format(
        "{}: a file named .ovb is taken for a cache, also if it is CSV; name it otherwise", path));
  CsvFile file(path);
  std::string difference;
  if (!data.bars.empty()) {
    writeBars(file, data.bars.front());
    difference = differenceIn(file.finish(), data.bars.front(), &loadBars);
  } else {
    writeTicks(file, data.ticks.front());
    difference = differenceIn(file.finish(), data.ticks.front(), &loadTicks);
  }
  if (!difference.empty())
    throw InputError(fmt::format(
        "{}: was not written, since CSV does not hold these data: {}; convert them to a cache",
        path, difference));
  file.keep();
}

}  // namespace orvane
