#pragma once

#include <string>
#include <vector>

#include "platform/fields/KLineView.h"
#include "platform/fields/QuoteView.h"
#include "platform/market/Rows.h"
#include "shared/Export.h"
#include "shared/MarketRecords.h"

namespace orvane {

/// The bars of one code and one period, as files or the generator give them. Immutable once it is
/// given to a platform.
///
/// Ascending by end time, strictly. Every word is filled as `KLineView` names it.
struct BarSeries {
  ICodeID code;
  int64 periodMs = 0;    ///< Above 0; a day is 86,400,000.
  std::string timeZone;  ///< IANA name of the zone that days and sessions are cut in.
  std::string origin;    ///< The file or files, for messages.
  Rows<IKLine> bars;
  /// Whoever made the bars vouches for their order: nobody checks it. Files that were loaded have
  /// it; whoever changes rows of theirs takes it back.
  bool isOrdered = false;
};

/// What a column of a `TickSeries` holds.
enum class TickColumn : std::uint8_t {
  LastPrice,
  Open,
  High,
  Low,
  PreClose,
  PreSettle,
  Settle,
  UpperLimit,
  LowerLimit,
  TotalVolume,
  Volume,
  TotalTurnover,
  Turnover,
  OpenInterest,
  BidPrice,  ///< Level `TickColumnId::level`; so are the three below.
  BidSize,
  AskPrice,
  AskSize,
};

/// One column of a `TickSeries`.
struct TickColumnId {
  TickColumn column;
  std::uint8_t level = 0;  ///< 0 to 9 for the four ladder columns, else 0.
  friend bool operator==(const TickColumnId&, const TickColumnId&) = default;
};

/// The ticks of one code. Only the columns that the source has are kept, since a full quote
/// record is some 560 bytes. Immutable once it is given to a platform.
struct ORVANE_API TickSeries {
  ICodeID code;
  std::string timeZone;
  std::string origin;
  std::vector<TickColumnId> columns;
  Rows<int64> times;  ///< UTC milliseconds, ascending; equal ones keep the file's order.
  Rows<std::int32_t> tradingDays;  ///< YYYYMMDD, one a row.
  Rows<double> cells;              ///< Row by row, `columns.size()` a row.
  bool isOrdered = false;  ///< Whoever made the rows vouches for their order: nobody checks it.

  std::size_t rows() const { return times.size(); }

  /// Makes `quote` the record of a row: every carried field is set, those without a column to 0
  /// (the eighth of `block3` to 1.0). A bid or ask of price 0 counts as not there.
  void fill(std::size_t row, IDepthMarketData& quote) const;
};

}  // namespace orvane
