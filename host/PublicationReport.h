#pragma once

#include <QJsonArray>
#include <QJsonValue>
#include <string>

#include "host/RunRecord.h"

namespace orvane {

/// The key "published" of a runner's report; null if it published nothing.
QJsonValue publishedReport(const RunRecord& record);

/// The key "records" of a runner's report: what came of each target of each dictionary.
QJsonArray recordsReport(const RunRecord& record);

/// Both as lines of the summary; empty if there is nothing to tell.
std::string publicationText(const RunRecord& record);

}  // namespace orvane
