#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <string>
#include <vector>

#include "host/Figures.h"
#include "host/RunSession.h"
#include "platform/fields/OrderView.h"

namespace orvane {

/// The key "trading" of a runner's report; null if it sent no order.
QJsonValue tradingReport(const RunnerOutcome& runner);

/// What happened on an account outside the `trading` of its runners: the orders of grid
/// conditions, and those that a runner sent on an account that is not its own.
struct OtherTrading {
  const AccountResult* account = nullptr;
  const SourceResult* trading = nullptr;
  std::string owner;  ///< The runner's name, or the create source where it is nobody's; UTF-8.
};

/// All of that, in the order of the accounts. It refers to `outcome`.
std::vector<OtherTrading> otherTrading(const RunOutcome& outcome);

/// The key "accounts" of a report.
QJsonArray accountsReport(const RunOutcome& outcome);

/// The key "total" of a report: the sum over all accounts; null where they have several
/// currencies or there is none.
QJsonValue totalReport(const RunOutcome& outcome);

/// The sum of all accounts' curves; empty where `totalReport` is null.
EquityCurve totalCurve(const RunOutcome& outcome);

/// The figures of all runners and of what else was traded as a table of several lines; empty if
/// nobody sent an order.
std::string figuresTable(const RunOutcome& outcome);

/// Words for the numbers in orders and fills.
std::string sideName(order::Direction direction);
std::string offsetName(order::Offset offset);

}  // namespace orvane
