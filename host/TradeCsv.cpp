#include "host/TradeCsv.h"

#include <charconv>

#include "host/Report.h"
#include "host/TimeArgument.h"
#include "host/TradeReport.h"
#include "platform/fields/FillView.h"
#include "shared/TextCodec.h"

namespace orvane {
namespace {

/// The shortest decimal text that reads back as the same double.
std::string numberText(double value) {
  char text[400];
  const auto end = std::to_chars(text, text + sizeof(text), value, std::chars_format::fixed).ptr;
  return {text, end};
}

/// A field, in quotes where it has to be.
std::string field(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted + '"';
}

}  // namespace

namespace {

/// Calls `add` with the first two columns and each part of the trading of the run: that of the
/// runners, and then the rest.
template <typename Add>
void eachTrading(const RunOutcome& outcome, Add add) {
  for (const RunnerOutcome& runner : outcome.runners)
    if (runner.trading)
      add(field(runner.plan.name) + ',' + field(runner.plan.account) + ',', *runner.trading);
  for (const OtherTrading& other : otherTrading(outcome))
    add(field(other.owner) + ',' + field(gbkToUtf8(other.account->account.account)) + ',',
        *other.trading);
}

}  // namespace

std::string tradesCsv(const RunOutcome& outcome) {
  std::string csv = "runner,account,time,code,side,offset,price,volume,fee,profit,order\n";
  eachTrading(outcome, [&csv](const std::string& owner, const SourceResult& trading) {
    for (const OrderFill& fill : trading.fills) {
      const FillView view(fill);
      csv += owner + isoTime(view.time()) + ',' + field(reportedCode(fill.code)) + ',' +
             sideName(view.direction()) + ',' + offsetName(view.offset()) + ',' +
             numberText(view.price()) + ',' + numberText(view.volume()) + ',' +
             numberText(view.fee()) + ',' + numberText(view.profit()) + ',' +
             std::to_string(view.orderId()) + '\n';
    }
  });
  return csv;
}

std::string equityCsv(const RunOutcome& outcome) {
  std::string csv = "runner,account,time,equity,exposure\n";
  eachTrading(outcome, [&csv](const std::string& owner, const SourceResult& trading) {
    for (const EquityPoint& point : trading.curve)
      csv += owner + isoTime(point.time) + ',' + numberText(point.equity) + ',' +
             numberText(point.exposure) + '\n';
  });
  return csv;
}

}  // namespace orvane
