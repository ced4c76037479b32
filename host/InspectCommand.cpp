#include "host/InspectCommand.h"

#include <fmt/core.h>

#include "host/Console.h"
#include "host/DataSet.h"
#include "host/InputError.h"
#include "host/OptionChecks.h"
#include "host/OptionHints.h"
#include "host/PeriodText.h"
#include "host/TimeArgument.h"
#include "platform/fields/KLineView.h"
#include "platform/fields/QuoteView.h"
#include "platform/market/PeriodText.h"
#include "platform/market/files/DataFiles.h"

namespace orvane {
namespace {

std::string barText(const IKLine& bar) {
  const KLineView view(bar);
  std::string text =
      fmt::format("{} .. {}  open {} high {} low {} close {}", isoTime(view.beginTime()),
                  isoTime(view.endTime()), view.open(), view.high(), view.low(), view.close());
  if (view.isQuoteBar())
    return text + fmt::format(" bid size {} ask close {} ask size {}", view.bidSize(),
                              view.askClose(), view.askSize());
  return text + fmt::format(" volume {} turnover {} open interest {}", view.volume(),
                            view.turnover(), view.openInterest());
}

std::string tickText(const TickSeries& series, std::size_t row) {
  IDepthMarketData quote;
  series.fill(row, quote);
  const QuoteView view(quote);
  std::string text = isoTime(view.time());
  if (view.hasTrade()) text += fmt::format("  last {} volume {}", view.lastPrice(), view.volume());
  if (view.hasBid()) text += fmt::format("  bid {} x {}", view.bidPrice(), view.bidSize());
  if (view.hasAsk()) text += fmt::format("  ask {} x {}", view.askPrice(), view.askSize());
  return text;
}

const char* columnName(TickColumn column) {
  constexpr const char* kNames[] = {
      "last price", "open",          "high",      "low",          "pre-close", "pre-settle",
      "settle",     "upper",         "lower",     "total volume", "volume",    "total turnover",
      "turnover",   "open interest", "bid price", "bid size",     "ask price", "ask size"};
  return kNames[static_cast<std::size_t>(column)];
}

void print(const LoadedBars& loaded) {
  const BarSeries& series = loaded.series;
  fmt::print("{}\n  bars of {}, period {}, zone {}, {} rows\n", series.origin, loaded.code,
             shownPeriod(frequencyText(series.periodMs)), series.timeZone, series.bars.size());
  if (!series.bars.empty())
    fmt::print("  first  {}\n  last   {}\n", barText(series.bars.front()),
               barText(series.bars.back()));
  for (const std::string& note : loaded.notes) fmt::print("  note   {}\n", withOptions(note));
}

void print(const LoadedTicks& loaded) {
  const TickSeries& series = loaded.series;
  int depth = 0;
  std::string columns;
  for (const TickColumnId& column : series.columns) {
    const bool isLadder = column.column >= TickColumn::BidPrice;
    if (isLadder) depth = std::max(depth, column.level + 1);
    if (!isLadder || column.level == 0)
      columns += (columns.empty() ? "" : ", ") + std::string(columnName(column.column));
  }
  fmt::print("{}\n  ticks of {}, zone {}, {} rows, depth {}\n  holds  {}\n", series.origin,
             loaded.code, series.timeZone, series.rows(), depth, columns);
  if (series.rows() != 0)
    fmt::print("  first  {}\n  last   {}\n", tickText(series, 0),
               tickText(series, series.rows() - 1));
  for (const std::string& note : loaded.notes) fmt::print("  note   {}\n", withOptions(note));
}

}  // namespace

InspectCommand::InspectCommand(CLI::App& parent) {
  command_ = parent.add_subcommand("inspect", "Show how data files are read");
  command_->footer(
      "Reads each file as \"orvane run\" would, as bars, or as ticks if its columns are those of\n"
      "ticks, and shows what was recognised and assumed. If it is wrong, say how the file is to "
      "be\n"
      "read, and use the same options with \"orvane run\".");
  command_->add_option("files", files_, "Data files")->required()->type_name("FILE");
  auto* bars = command_->add_flag("--bars", onlyBars_, "They are bars")->disable_flag_override();
  command_->add_flag("--ticks", onlyTicks_, "They are ticks")
      ->disable_flag_override()
      ->excludes(bars);
  reading_.addTo(*command_);
}

int InspectCommand::execute() {
  refuseEmptyTexts(*command_);
  DataFileRequest request;
  request.description = reading_.description();
  request.checksCaches = true;
  int code = kExitSuccess;
  std::string fault;
  for (const std::string& file : files_) {
    request.paths = {file};
    try {
      withPlaces(reading_.places(), [&] { show(request); });
    } catch (const DataFileError& error) {
      // The other files are looked at all the same; what they showed stands before the fault.
      std::fflush(stdout);
      // An option may be at fault in all.
      if (error.what() != fault) complain(withOptions(error.what()));
      fault = error.what();
      code = kExitBadInput;
    }
  }
  return code;
}

void InspectCommand::show(DataFileRequest request) const {
  if (!onlyTicks_) {
    request.kind = DataFileRequest::Kind::Bars;
    try {
      for (const LoadedBars& loaded : loadBars(request)) print(loaded);
      return;
    } catch (const OtherKindError&) {
      if (onlyBars_) throw;
    }
  }
  request.kind = DataFileRequest::Kind::Ticks;
  for (const LoadedTicks& loaded : loadTicks(request)) print(loaded);
}

}  // namespace orvane
