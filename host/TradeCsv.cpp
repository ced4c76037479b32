#include "host/TradeCsv.h"

#include "host/CsvText.h"
#include "host/Report.h"
#include "host/TimeArgument.h"
#include "host/TradeReport.h"
#include "platform/fields/FillView.h"
#include "shared/TextCodec.h"

namespace orvane {
namespace {

/// Calls `add` with the first two columns and each part of the trading of the run: that of the
/// runners, and then the rest.
template <typename Add>
void eachTrading(const RunOutcome& outcome, Add add) {
  for (const RunnerOutcome& runner : outcome.runners)
    if (runner.trading)
      add(csvField(runner.plan.name) + ',' + csvField(runner.plan.account) + ',', *runner.trading);
  for (const OtherTrading& other : otherTrading(outcome))
    add(csvField(other.owner) + ',' + csvField(gbkToUtf8(other.account->account.account)) + ',',
        *other.trading);
}

}  // namespace

std::string tradesCsv(const RunOutcome& outcome) {
  std::string csv = "runner,account,time,code,side,offset,price,volume,fee,profit,order\n";
  eachTrading(outcome, [&csv](const std::string& owner, const SourceResult& trading) {
    for (const OrderFill& fill : trading.fills) {
      const FillView view(fill);
      csv += owner + isoTime(view.time()) + ',' + csvField(reportedCode(fill.code)) + ',' +
             sideName(view.direction()) + ',' + offsetName(view.offset()) + ',' +
             csvNumber(view.price()) + ',' + csvNumber(view.volume()) + ',' +
             csvNumber(view.fee()) + ',' + csvNumber(view.profit()) + ',' +
             std::to_string(view.orderId()) + '\n';
    }
  });
  return csv;
}

std::string equityCsv(const RunOutcome& outcome) {
  std::string csv = "runner,account,time,equity,exposure\n";
  eachTrading(outcome, [&csv](const std::string& owner, const SourceResult& trading) {
    for (const EquityPoint& point : trading.curve)
      csv += owner + isoTime(point.time) + ',' + csvNumber(point.equity) + ',' +
             csvNumber(point.exposure) + '\n';
  });
  return csv;
}

}  // namespace orvane
