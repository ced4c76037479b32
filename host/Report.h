#pragma once

#include <QJsonObject>
#include <string>

#include "host/RunSession.h"

namespace orvane {

/// The report of a run as docs/report.md has it. Everything that differs between two runs of one
/// input stands under the key "timing".
QJsonObject makeReport(const RunOutcome& outcome);

/// Sees, before anything runs, that a report can be written to a folder, which need not be there
/// yet. Changes nothing. Throws `InputError`.
void checkReportFolder(const std::string& folder);

/// Writes "trades.csv", "equity.csv" and "report.json" into a folder, which is made if need be:
/// each whole or not at all, the report last. Throws `std::runtime_error`.
void writeReport(const std::string& folder, const RunOutcome& outcome);

/// The summary for a person, several lines.
std::string summaryText(const RunOutcome& outcome);

/// The text of a code, "CODE.MARKET" or "CODE"; UTF-8.
std::string reportedCode(const ICodeID& code);

}  // namespace orvane
