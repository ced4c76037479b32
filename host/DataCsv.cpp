#include "host/DataCsv.h"

#include <fmt/format.h>

#include <QSaveFile>
#include <iterator>

#include "host/InputError.h"
#include "host/TimeArgument.h"
#include "platform/fields/KLineView.h"
#include "platform/market/files/CacheFile.h"

namespace orvane {
namespace {

/// Gathers lines and writes them in large portions.
class CsvFile {
 public:
  explicit CsvFile(const std::string& path) : path_(path), file_(QString::fromStdString(path)) {
    if (!file_.open(QIODevice::WriteOnly)) fail();
  }

  template <typename... Fields>
  void add(fmt::format_string<Fields...> format, Fields&&... fields) {
    fmt::format_to(std::back_inserter(lines_), format, std::forward<Fields>(fields)...);
    if (lines_.size() > (std::size_t{1} << 20)) flush();
  }

  void commit() {
    flush();
    if (!file_.flush() || !file_.commit()) fail();
  }

 private:
  void flush() {
    const auto size = static_cast<qint64>(lines_.size());
    if (file_.write(lines_.data(), size) != size) fail();
    lines_.clear();
  }
  [[noreturn]] void fail() const {
    throw InputError(
        fmt::format("{}: cannot be written: {}", path_, file_.errorString().toStdString()));
  }

  const std::string path_;
  QSaveFile file_;
  std::string lines_;
};

void writeBars(CsvFile& file, const LoadedBars& loaded) {
  file.add("openTime,open,high,low,close,volume,turnover,openInterest,tradingDay\n");
  for (const IKLine& bar : loaded.series.bars) {
    const KLineView view(bar);
    if (view.isQuoteBar())
      throw InputError(fmt::format(
          "\"{}\" has bars of bid and ask, which no row of a CSV holds; convert them to a cache",
          loaded.code));
    file.add("{},{},{},{},{},{},{},{},{}\n", isoTime(view.beginTime()), view.open(), view.high(),
             view.low(), view.close(), view.volume(), view.turnover(), view.openInterest(),
             view.tradingDay());
  }
}

void writeTicks(CsvFile& file, const TickSeries& series) {
  file.add("datetime,tradingDay");
  for (const TickColumnId& id : series.columns) file.add(",{}", nameOfTickColumn(id));
  file.add("\n");
  const std::size_t width = series.columns.size();
  for (std::size_t row = 0; row < series.rows(); ++row) {
    file.add("{},{}", isoTime(series.times[row]), series.tradingDays[row]);
    for (std::size_t i = 0; i < width; ++i) file.add(",{}", series.cells[row * width + i]);
    file.add("\n");
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
  CsvFile file(path);
  if (!data.bars.empty())
    writeBars(file, data.bars.front());
  else
    writeTicks(file, data.ticks.front().series);
  file.commit();
}

}  // namespace orvane
