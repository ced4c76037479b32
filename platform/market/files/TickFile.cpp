#include "platform/market/files/TickFile.h"

#include <algorithm>
#include <cmath>

#include "platform/market/files/CodeParts.h"

namespace orvane::detail {
namespace {

/// Some feeds write the largest double for a price that there is none of.
constexpr double kNoPrice = 1e300;

enum class CellKind : std::uint8_t { Price, Size, Money };

CellKind kindOf(TickColumn column) {
  switch (column) {
    case TickColumn::TotalVolume:
    case TickColumn::Volume:
    case TickColumn::OpenInterest:
    case TickColumn::BidSize:
    case TickColumn::AskSize:
      return CellKind::Size;
    case TickColumn::TotalTurnover:
    case TickColumn::Turnover:
      return CellKind::Money;
    default:
      return CellKind::Price;
  }
}

class TickReader {
 public:
  TickReader(Table& table, const Description& description, const DecimalStep& tick)
      : table_(table),
        price_(description.numbers, description.priceShift, tick),
        size_(description.numbers, description.volumeShift, {}),
        money_(description.numbers, description.turnoverShift, {}) {
    for (const auto& [column, id] : table.map().ticks) {
      columns_.push_back(id);
      cells_.push_back({column, kindOf(id.column)});
    }
  }

  std::vector<TickPart> run(const std::function<void(double)>& progress) {
    std::size_t count = 0;
    while (table_.next()) {
      readRow();
      if (progress && (++count & 0x3FFF) == 0) progress(table_.share());
    }
    std::vector<TickPart> parts;
    for (TickPart& part : parts_.parts()) {
      part.columns = columns_;
      if (table_.newestFirst()) reverse(part);
      parts.push_back(std::move(part));
    }
    return parts;
  }

 private:
  struct Cell {
    int column;
    CellKind kind;
  };

  void readRow() {
    TickPart& part = parts_.of(table_);
    const bool hasPrevious = !part.times.empty();
    if (!hasPrevious && table_.map().code < 0) {
      const std::size_t rows = table_.rowsLeft();
      part.times.reserve(rows);
      part.tradingDays.reserve(rows);
      part.cells.reserve(rows * columns_.size());
    }
    const int64 previous = hasPrevious ? part.times.back() : 0;
    const bool ascending = hasPrevious && !table_.newestFirst();
    const RowTime time = table_.time(ascending ? previous : INT64_MIN);
    checkOrder(table_, hasPrevious, previous, time.utcMs, false);
    for (const Cell& cell : cells_) part.cells.push_back(read(cell));
    part.times.push_back(time.utcMs);
    part.tradingDays.push_back(time.tradingDay != 0 ? time.tradingDay : localDay(time.utcMs));
  }

  double read(const Cell& cell) {
    if (cell.kind == CellKind::Price) {
      const double price = table_.number(price_, cell.column);
      return std::abs(price) >= kNoPrice ? 0 : price;
    }
    const double value = table_.number(cell.kind == CellKind::Size ? size_ : money_, cell.column);
    if (value < 0) table_.fail(cell.column, "is negative");
    return value;
  }

  std::int32_t localDay(int64 utcMs) {
    const int64 local = table_.zone().toLocal(utcMs);
    const int64 day = local >= 0 ? local / kDayMs : (local - kDayMs + 1) / kDayMs;
    if (day != lastDay_) {
      lastDay_ = day;
      lastNumber_ = numberOfDay(day);
    }
    return lastNumber_;
  }

  void reverse(TickPart& part) const {
    std::reverse(part.times.begin(), part.times.end());
    std::reverse(part.tradingDays.begin(), part.tradingDays.end());
    // All cells turned round, then those of each row turned back.
    std::reverse(part.cells.begin(), part.cells.end());
    const auto width = static_cast<std::ptrdiff_t>(columns_.size());
    for (auto row = part.cells.begin(); row != part.cells.end(); row += width)
      std::reverse(row, row + width);
  }

  Table& table_;
  NumberParser price_;
  NumberParser size_;
  NumberParser money_;
  std::vector<TickColumnId> columns_;
  std::vector<Cell> cells_;
  CodeParts<TickPart> parts_;
  int64 lastDay_ = INT64_MIN;
  std::int32_t lastNumber_ = 0;
};

/// Brings a part's or a series' rows to a wider set of columns that begins with its own.
void widen(std::vector<double>& cells, const std::vector<TickColumnId>& from,
           const std::vector<TickColumnId>& to) {
  if (from == to) return;
  std::vector<std::size_t> places;
  places.reserve(from.size());
  for (const TickColumnId& id : from)
    places.push_back(static_cast<std::size_t>(std::find(to.begin(), to.end(), id) - to.begin()));
  const std::size_t rows = cells.size() / from.size();
  std::vector<double> wide(rows * to.size(), 0.0);
  for (std::size_t row = 0; row < rows; ++row)
    for (std::size_t i = 0; i < from.size(); ++i)
      wide[row * to.size() + places[i]] = cells[row * from.size() + i];
  cells = std::move(wide);
}

}  // namespace

std::vector<TickPart> readTicks(Table& table, const Description& description,
                                const DecimalStep& priceTick,
                                const std::function<void(double)>& progress) {
  return TickReader(table, description, priceTick).run(progress);
}

void appendTicks(TickSeries& series, TickPart part) {
  if (series.times.empty()) {
    series.columns = std::move(part.columns);
    series.times = std::move(part.times);
    series.tradingDays = std::move(part.tradingDays);
    series.cells = std::move(part.cells);
    return;
  }
  std::vector<TickColumnId> all = series.columns;
  for (const TickColumnId& id : part.columns)
    if (std::find(all.begin(), all.end(), id) == all.end()) all.push_back(id);
  widen(series.cells, series.columns, all);
  widen(part.cells, part.columns, all);
  series.columns = std::move(all);
  series.times.insert(series.times.end(), part.times.begin(), part.times.end());
  series.tradingDays.insert(series.tradingDays.end(), part.tradingDays.begin(),
                            part.tradingDays.end());
  series.cells.insert(series.cells.end(), part.cells.begin(), part.cells.end());
}

}  // namespace orvane::detail
