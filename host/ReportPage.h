#pragma once

#include <QByteArray>

#include "host/RunSession.h"

namespace orvane {

/// "report.html": the run as one page that needs nothing but a browser. `report` is that of the
/// run. What differs between two runs of one input stands in the element "timing" alone.
QByteArray reportPage(const RunOutcome& outcome, const QJsonObject& report);

}  // namespace orvane
