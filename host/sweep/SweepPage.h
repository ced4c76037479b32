#pragma once

#include <QByteArray>
#include <QJsonObject>

#include "host/sweep/Sweep.h"

namespace orvane {

/// What sweep.html shows. The same sweep gives the same.
QJsonObject sweepPageData(const SweepPlan& plan, const SweepOutcome& outcome, const DataSet& data);

/// "sweep.html": the sweep as one page that needs nothing but a browser.
QByteArray sweepPage(const SweepPlan& plan, const SweepOutcome& outcome, const DataSet& data);

}  // namespace orvane
