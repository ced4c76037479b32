#pragma once

#include <QJsonObject>
#include <vector>

#include "host/RunSession.h"
#include "platform/trade/TradeResults.h"

namespace orvane {

/// What report.html shows, made of the run and of its report: docs/report.md, "The page". Nothing
/// in it differs between two runs of one input.
QJsonObject pageData(const RunOutcome& outcome, const QJsonObject& report);

/// A curve of no more than about `most` points that still touches every peak and every trough: of
/// each stretch the lowest and the highest point, and the first and the last of all.
EquityCurve thinnedCurve(const EquityCurve& curve, std::size_t most);

}  // namespace orvane
