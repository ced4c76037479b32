#pragma once

#include <QJsonObject>
#include <array>
#include <string>

#include "host/RunSession.h"

namespace orvane {

/// The report of a run as docs/report.md has it. Everything that differs between two runs of one
/// input stands under the key "timing".
QJsonObject makeReport(const RunOutcome& outcome);

/// Sees, before anything runs, that a report can be written to a folder, which need not be there
/// yet. Changes nothing. Throws `InputError`.
void checkReportFolder(const std::string& folder);

/// The files of a report, in the order in which they are written.
inline constexpr std::array<const char*, 4> kReportFiles = {"trades.csv", "equity.csv",
                                                            "report.html", "report.json"};

/// Writes them into a folder that is there: each whole or not at all. One that cannot be written
/// becomes a failure of the run. The others are written all the same, but not over an older report,
/// which is replaced as a whole or stays.
void writeReport(const std::string& folder, RunOutcome& outcome);

/// The summary for a person, several lines.
std::string summaryText(const RunOutcome& outcome);

/// The text of a code, "CODE.MARKET" or "CODE"; UTF-8.
std::string reportedCode(const ICodeID& code);

}  // namespace orvane
