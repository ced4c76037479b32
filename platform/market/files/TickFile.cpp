#include "platform/market/files/TickFile.h"

#include <algorithm>
#include <cmath>

#include "platform/market/files/ChunkedRead.h"
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
  TickReader(const Table& table, const Description& description, const DecimalStep& tick)
      : table_(table),
        price_(description.numbers, description.priceShift, tick),
        size_(description.numbers, description.volumeShift, {}),
        money_(description.numbers, description.turnoverShift, {}) {
    if (table.map().isWhole)
      for (NumberParser* const parser : {&price_, &size_, &money_}) *parser = parser->exact();
    for (const auto& [column, id] : table.map().ticks) {
      columns_.push_back(id);
      cells_.push_back({column, kindOf(id.column)});
    }
  }

  /// Room for the rows of a file of one code; with several it is each part's own matter.
  void reserve(std::size_t rows) {
    if (table_.map().code >= 0) return;
    room_.times.reserve(rows);
    room_.tradingDays.reserve(rows);
    room_.cells.reserve(rows * cells_.size());
  }

  TickReader chunkReader(std::size_t row, std::size_t rows) const {
    TickReader chunk = *this;
    chunk.isChunk_ = true;
    if (table_.map().code >= 0) return chunk;
    chunk.room_.times = room_.times.roomAt(row, rows);
    chunk.room_.tradingDays = room_.tradingDays.roomAt(row, rows);
    chunk.room_.cells = room_.cells.roomAt(row * cells_.size(), rows * cells_.size());
    return chunk;
  }

  void read(TableRows& rows) {
    rows_ = &rows;
    while (rows.next()) readRow();
  }

  bool isSure() const { return isSure_; }

  bool takes(const TickReader& chunk) const {
    return std::ranges::all_of(chunk.parts_.parts(), [this](const TickPart& part) {
      const TickPart* const mine = parts_.find(part.code);
      return !mine || part.times.empty() || mine->times.empty() ||
             mayFollow(table_, mine->times.back(), part.times.front(), false);
    });
  }

  void join(TickReader& chunk, std::size_t /*linesBefore*/) {
    for (const TickPart& part : chunk.parts_.parts()) {
      TickPart& mine = parts_.of(part.code, part.path);
      if (table_.map().code < 0) {
        takeRoom(mine);
        mine.times.join(part.times);
        mine.tradingDays.join(part.tradingDays);
        mine.cells.join(part.cells);
      } else {
        mine.times.append(part.times);
        mine.tradingDays.append(part.tradingDays);
        mine.cells.append(part.cells);
      }
    }
  }

  std::vector<TickPart> takeParts() {
    std::vector<TickPart> parts;
    for (TickPart& part : parts_.parts()) {
      if (part.times.empty()) continue;
      dropHalf(part);
      part.columns = columns_;
      part.timeZone = table_.ownWords().timeZone;
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

  /// The three arrays of a part.
  struct Room {
    Rows<int64> times;
    Rows<std::int32_t> tradingDays;
    Rows<double> cells;
  };

  void takeRoom(TickPart& part) {
    if (part.times.capacity() != 0) return;
    part.times = std::move(room_.times);
    part.tradingDays = std::move(room_.tradingDays);
    part.cells = std::move(room_.cells);
  }

  /// Takes back what a row with a fault left.
  void dropHalf(TickPart& part) const {
    const std::size_t cells = part.times.size() * cells_.size();
    if (part.cells.size() != cells) part.cells.resize(cells);
  }

  void readRow() {
    rows_->checkOwnWords();
    TickPart& part = parts_.of(*rows_);
    if (table_.map().code < 0) takeRoom(part);
    dropHalf(part);
    const bool hasPrevious = !part.times.empty();
    const int64 previous = hasPrevious ? part.times.back() : 0;
    const bool ascending = hasPrevious && !table_.newestFirst();
    const RowTime time = rows_->time(ascending ? previous : INT64_MIN);
    if (!hasPrevious && isChunk_ && time.twice) isSure_ = false;
    if (hasPrevious && !mayFollow(table_, previous, time.utcMs, false))
      failOrder(*rows_, previous, time.utcMs);
    for (const Cell& cell : cells_) part.cells.push_back(read(cell));
    part.times.push_back(time.utcMs);
    part.tradingDays.push_back(time.tradingDay != 0 ? time.tradingDay : localDay(time.utcMs));
  }

  double read(const Cell& cell) {
    if (cell.kind == CellKind::Price) {
      const double price = rows_->number(price_, cell.column);
      return std::abs(price) >= kNoPrice ? 0 : price;
    }
    const double value = rows_->number(cell.kind == CellKind::Size ? size_ : money_, cell.column);
    if (value < 0) rows_->fail(cell.column, "is negative");
    return value;
  }

  std::int32_t localDay(int64 utcMs) {
    const int64 local = rows_->zone().toLocal(utcMs);
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

  const Table& table_;
  TableRows* rows_ = nullptr;  ///< Those that are being read.
  NumberParser price_;
  NumberParser size_;
  NumberParser money_;
  std::vector<TickColumnId> columns_;
  std::vector<Cell> cells_;
  CodeParts<TickPart> parts_;
  Room room_;             ///< What is reserved, until there is a part.
  bool isChunk_ = false;  ///< There may be rows before the first.
  bool isSure_ = true;
  int64 lastDay_ = INT64_MIN;
  std::int32_t lastNumber_ = 0;
};

/// Brings a part's or a series' rows to a wider set of columns that begins with its own.
void widen(Rows<double>& cells, const std::vector<TickColumnId>& from,
           const std::vector<TickColumnId>& to) {
  if (from == to) return;
  std::vector<std::size_t> places;
  places.reserve(from.size());
  for (const TickColumnId& id : from)
    places.push_back(static_cast<std::size_t>(std::find(to.begin(), to.end(), id) - to.begin()));
  const std::size_t rows = cells.size() / from.size();
  Rows<double> wide(rows * to.size());
  for (std::size_t row = 0; row < rows; ++row)
    for (std::size_t i = 0; i < from.size(); ++i)
      wide[row * to.size() + places[i]] = cells[row * from.size() + i];
  cells = std::move(wide);
}

}  // namespace

std::vector<TickPart> readTicks(Table& table, const Description& description,
                                const DecimalStep& priceTick, const ReadPace& pace,
                                const std::function<void(double)>& progress,
                                const FaultTaker& onFault) {
  TickReader reader(table, description, priceTick);
  readAllRows(table, pace, reader, progress, onFault);
  return reader.takeParts();
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
  series.times.append(part.times);
  series.tradingDays.append(part.tradingDays);
  series.cells.append(part.cells);
}

}  // namespace orvane::detail
