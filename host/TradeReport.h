#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <string>

#include "host/Figures.h"
#include "host/RunSession.h"
#include "platform/fields/OrderView.h"

namespace orvane {

/// The key "trading" of a runner's report; null if it sent no order.
QJsonValue tradingReport(const RunnerOutcome& runner);

/// The key "accounts" of a report.
QJsonArray accountsReport(const RunOutcome& outcome);

/// The key "total" of a report: the sum over all accounts; null where they have several
/// currencies or there is none.
QJsonValue totalReport(const RunOutcome& outcome);

/// The figures of all runners as a table of several lines; empty if nobody sent an order.
std::string figuresTable(const RunOutcome& outcome);

/// Words for the numbers in orders and fills.
std::string sideName(order::Direction direction);
std::string offsetName(order::Offset offset);

}  // namespace orvane
