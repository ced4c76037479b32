#include "platform/market/files/BarFile.h"

#include <algorithm>

#include "platform/fields/KLineView.h"
#include "platform/market/MeanPrice.h"
#include "platform/market/files/ChunkedRead.h"
#include "platform/market/files/CodeParts.h"
#include "platform/market/files/DataFiles.h"
#include "platform/market/files/PlainRows.h"

namespace orvane::detail {
namespace {

/// The four prices of a side.
struct Prices {
  double open = 0;
  double high = 0;
  double low = 0;
  double close = 0;
  bool there = false;
};

/// The columns of a side's prices.
struct PriceColumns {
  int open;
  int high;
  int low;
  int close;
};

class BarReader {
 public:
  BarReader(const Table& table, const Description& description, const DecimalStep& tick)
      : table_(table),
        description_(description),
        map_(table.map()),
        price_(description.numbers, description.priceShift, tick),
        volume_(description.numbers, description.volumeShift, {}),
        turnover_(description.numbers, description.turnoverShift, {}) {
    if (!map_.isWhole) {
      if (!map_.quoteBar && map_.open >= 0)
        plain_ = PlainRows(table, {{map_.open, &price_},
                                   {map_.high, &price_},
                                   {map_.low, &price_},
                                   {map_.close, &price_},
                                   {map_.volume, &volume_},
                                   {map_.turnover, &turnover_},
                                   {map_.openInterest, &volume_}});
      return;
    }
    for (NumberParser* const parser : {&price_, &volume_, &turnover_}) *parser = parser->exact();
  }

  /// Room for the rows of a file of one code; with several it is each part's own matter.
  void reserve(std::size_t rows) {
    if (map_.code < 0) room_.reserve(rows);
  }

  BarReader chunkReader(std::size_t row, std::size_t rows) const {
    BarReader chunk = *this;
    chunk.isChunk_ = true;
    if (map_.code < 0) chunk.room_ = room_.roomAt(row, rows);
    return chunk;
  }

  void read(TableRows& rows) {
    rows_ = &rows;
    do {
      while (plain_.canBe() && readPlainRow()) continue;
      if (!rows.next()) return;
      readRow();
    } while (true);
  }

  bool isSure() const { return isSure_; }

  bool takes(const BarReader& chunk) const {
    return std::ranges::all_of(chunk.parts_.parts(), [this](const BarPart& part) {
      const BarPart* const mine = parts_.find(part.code);
      return !mine || part.bars.empty() || mine->bars.empty() ||
             mayFollow(table_, stampOf(mine->bars.back()), stampOf(part.bars.front()), true);
    });
  }

  void join(BarReader& chunk, std::size_t linesBefore) {
    for (const BarPart& part : chunk.parts_.parts()) {
      BarPart& mine = parts_.of(part.code, part.path);
      if (!mine.bars.empty() && !part.bars.empty())
        noteDistance(mine, stampOf(mine.bars.back()), stampOf(part.bars.front()));
      mine.distances.add(part.distances);
      if (map_.code < 0) {
        takeRoom(mine);
        mine.bars.join(part.bars);
      } else {
        mine.bars.append(part.bars);
      }
      mine.datesOnly = mine.datesOnly && part.datesOnly;
      mine.midnights = mine.midnights && part.midnights;
    }
    skipped_ += chunk.skipped_;
    if (doubts_ == 0 && chunk.doubts_ > 0) firstDoubt_ = linesBefore + chunk.firstDoubt_;
    doubts_ += chunk.doubts_;
  }

  /// Notes what was passed over.
  void tell(std::vector<std::string>& notes) const {
    if (skipped_ > 0)
      notes.push_back(table_.path() + ": " + std::to_string(skipped_) +
                      " rows without a price were passed over");
    if (doubts_ > 0)
      notes.push_back(table_.path() + ": " + std::to_string(doubts_) +
                      " doubtful values were kept, the first in line " +
                      std::to_string(firstDoubt_));
    if (description_.side && !map_.quoteBar)
      notes.push_back(table_.path() +
                      ": \"side\" changes nothing here, since no bid and ask have columns");
  }

  std::vector<BarPart> takeParts() {
    std::vector<BarPart> parts;
    for (BarPart& part : parts_.parts()) {
      if (part.bars.empty()) continue;
      if (table_.newestFirst()) std::reverse(part.bars.begin(), part.bars.end());
      part.hintMs = table_.nameFacts().periodMs;
      part.stampIsEnd = map_.stampIsEnd;
      part.timeZone = table_.ownWords().timeZone;
      part.periodMs = table_.ownWords().periodMs;
      parts.push_back(std::move(part));
    }
    return parts;
  }

 private:
  static std::int64_t stampOf(const IKLine& bar) { return bar.words[kline::BeginTime]; }

  /// In time, whichever of them comes first in the file.
  static void noteDistance(BarPart& part, std::int64_t previous, std::int64_t stamp) {
    part.distances.note(stamp > previous ? stamp - previous : previous - stamp);
  }

  void takeRoom(BarPart& part) {
    if (part.bars.capacity() == 0) part.bars = std::move(room_);
  }

  /// Whether the next row was read. One is not that is the first of its part, not plain, or wrong
  /// in any way.
  bool readPlainRow() {
    if (parts_.parts().empty()) return false;
    BarPart& part = parts_.parts().front();
    if (part.bars.empty() || part.bars.size() == part.bars.capacity()) return false;
    const std::int64_t previous = stampOf(part.bars.back());
    RowTime time;
    const std::size_t length =
        rows_->lookPlain(plain_, table_.newestFirst() ? INT64_MIN : previous + 1, time);
    if (length == 0 || !mayFollow(table_, previous, time.utcMs, true)) return false;
    const Prices prices{plain_.number(map_.open), plain_.number(map_.high), plain_.number(map_.low),
                        plain_.number(map_.close), true};
    const double volume = plain_.number(map_.volume);
    const double turnover = plain_.number(map_.turnover);
    const double openInterest = plain_.number(map_.openInterest);
    if (!isRange(prices) || volume < 0 || turnover < 0 || openInterest < 0) return false;
    rows_->pass(length);
    noteDistance(part, previous, time.utcMs);
    // Written where it stays.
    part.bars.resizeForWriting(part.bars.size() + 1);
    part.bars.back() = {};
    KLineWriter writer(part.bars.back());
    write(writer, prices, volume, turnover, openInterest);
    setTime(part, writer, time, 0);
    return true;
  }

  void readRow() {
    IKLine bar;
    KLineWriter writer(bar);
    const int flags = map_.quoteBar ? readQuote(writer) : readTrade(writer);
    if (flags < 0) {
      if (!description_.skipEmpty)
        throw DataFileError(rows_->place() +
                            (map_.quoteBar ? ": neither a bid nor an ask" : ": no price") +
                            "; \"skipEmpty\": true in a description passes over such rows");
      ++skipped_;
      return;
    }
    rows_->checkOwnWords();
    BarPart& part = parts_.of(*rows_);
    if (map_.code < 0) takeRoom(part);
    const bool hasPrevious = !part.bars.empty();
    const std::int64_t previous = hasPrevious ? stampOf(part.bars.back()) : 0;
    const bool ascending = hasPrevious && !table_.newestFirst();
    const RowTime time = rows_->time(ascending ? previous + 1 : INT64_MIN);
    if (!hasPrevious && isChunk_ && time.twice) isSure_ = false;
    if (hasPrevious && !mayFollow(table_, previous, time.utcMs, true))
      failOrder(*rows_, previous, time.utcMs);
    if (hasPrevious) noteDistance(part, previous, time.utcMs);
    setTime(part, writer, time, flags);
    part.bars.push_back(bar);
  }

  void setTime(BarPart& part, KLineWriter& writer, const RowTime& time, int flags) const {
    part.datesOnly = part.datesOnly && time.dateOnly;
    part.midnights = part.midnights && time.midnight;
    writer.setTimes(time.utcMs, map_.isWhole ? time.untilMs : time.day);
    writer.setDayAndFlags(time.tradingDay, flags);
  }

  double price(int column) {
    double value = 0;
    if (rows_->isShortNumber(price_, column, value)) return value;
    if (rows_->field(column).empty()) rows_->fail(column, "is empty");
    return rows_->number(price_, column);
  }

  double amount(const NumberParser& parser, int column) {
    if (column < 0) return 0;
    const double value = rows_->number(parser, column);
    if (value < 0) doubt(column, "is negative");
    return value;
  }

  /// A value that no true bar has: an error, or with "tolerant" a count.
  void doubt(int column, const std::string& what) {
    if (!description_.tolerant) rows_->fail(column, what);
    if (doubts_ == 0) firstDoubt_ = rows_->line();
    ++doubts_;
  }

  /// An empty price; where rows without one may be passed over, also one that says so in words.
  bool isNothing(int column) const {
    const std::string_view text = rows_->field(column);
    if (text.empty()) return true;
    return description_.skipEmpty &&
           (text == "nan" || text == "NaN" || text == "null" || text == "NULL" || text == "-");
  }

  Prices readPrices(const PriceColumns& columns) {
    Prices prices;
    if (columns.open < 0) return prices;
    if (isNothing(columns.open) && isNothing(columns.high) && isNothing(columns.low) &&
        isNothing(columns.close))
      return prices;
    prices = {price(columns.open), price(columns.high), price(columns.low), price(columns.close),
              true};
    if (isRange(prices)) return prices;
    const double low = prices.low;
    const double high = prices.high;
    const std::string lowText(rows_->field(columns.low));
    const std::string highText(rows_->field(columns.high));
    if (high < low)
      doubt(columns.high, "is below the low, " + lowText);
    else if (prices.open < low)
      doubt(columns.open, "is below the low, " + lowText);
    else if (prices.open > high)
      doubt(columns.open, "is above the high, " + highText);
    else if (prices.close < low)
      doubt(columns.close, "is below the low, " + lowText);
    else
      doubt(columns.close, "is above the high, " + highText);
    return prices;
  }

  /// Whether the high and the low are that.
  static bool isRange(const Prices& prices) {
    return prices.open >= prices.low && prices.open <= prices.high && prices.close >= prices.low &&
           prices.close <= prices.high;
  }

  static void write(KLineWriter& writer, const Prices& prices) {
    writer.set(kline::Open, prices.open);
    writer.set(kline::High, prices.high);
    writer.set(kline::Low, prices.low);
    writer.set(kline::Close, prices.close);
  }

  static void write(KLineWriter& writer, const Prices& prices, double volume, double turnover,
                    double openInterest) {
    write(writer, prices);
    writer.set(kline::Volume, volume);
    writer.set(kline::Turnover, turnover);
    writer.set(kline::OpenInterest, openInterest);
  }

  /// The flags, or -1 if the row has no price.
  int readTrade(KLineWriter& writer) {
    const Prices prices = readPrices({map_.open, map_.high, map_.low, map_.close});
    if (!prices.there) return -1;
    const double volume = amount(volume_, map_.volume);
    const double turnover = amount(turnover_, map_.turnover);
    write(writer, prices, volume, turnover, amount(volume_, map_.openInterest));
    return 0;
  }

  int readQuote(KLineWriter& writer) {
    const Prices bid = readPrices({map_.open, map_.high, map_.low, map_.close});
    const Prices ask = readPrices({map_.askOpen, map_.askHigh, map_.askLow, map_.askClose});
    if (!bid.there && !ask.there) return -1;
    const bool wantsAsk = description_.side == QuoteSide::Ask;
    Prices shown = (wantsAsk ? ask.there : !bid.there) ? ask : bid;
    if (description_.side == QuoteSide::Mid && bid.there && ask.there)
      shown = {meanPrice(bid.open, ask.open), meanPrice(bid.high, ask.high),
               meanPrice(bid.low, ask.low), meanPrice(bid.close, ask.close), true};
    write(writer, shown);
    writer.set(kline::Volume, amount(volume_, map_.volume));
    writer.set(kline::Turnover, amount(volume_, map_.turnover));
    writer.set(kline::AskClose, ask.close);
    return kline::kQuoteBar | (bid.there ? 0 : kline::kBidMissing) |
           (ask.there ? 0 : kline::kAskMissing);
  }

  const Table& table_;
  TableRows* rows_ = nullptr;  ///< Those that are being read.
  const Description& description_;
  const ColumnMap& map_;
  NumberParser price_;
  NumberParser volume_;
  NumberParser turnover_;
  PlainRows plain_;
  CodeParts<BarPart> parts_;
  Rows<IKLine> room_;     ///< What is reserved, until there is a part.
  bool isChunk_ = false;  ///< There may be rows before the first.
  bool isSure_ = true;
  std::size_t skipped_ = 0;
  std::size_t doubts_ = 0;
  std::size_t firstDoubt_ = 0;
};

}  // namespace

std::vector<BarPart> readBars(Table& table, const Description& description,
                              const DecimalStep& priceTick, const ReadPace& pace,
                              const std::function<void(double)>& progress,
                              const FaultTaker& onFault) {
  BarReader reader(table, description, priceTick);
  readAllRows(table, pace, reader, progress, onFault);
  reader.tell(table.notes());
  return reader.takeParts();
}

}  // namespace orvane::detail
