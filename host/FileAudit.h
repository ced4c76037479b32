#pragma once

#include <QJsonObject>
#include <map>
#include <string>
#include <vector>

#include "platform/market/files/DataFiles.h"

namespace orvane {

/// Some things of one kind that were found: how many, and the first of them.
struct Findings {
  std::size_t count = 0;
  std::vector<std::string> first;  ///< At most `kMostShown`, UTF-8.

  static constexpr std::size_t kMostShown = 5;
  void add(const std::string& text) {
    if (count++ < kMostShown) first.push_back(text);
  }
};

/// A time without rows between two rows of one trading day, or between two days.
struct Hole {
  int64 from = 0, to = 0;   ///< UTC milliseconds.
  std::size_t missing = 0;  ///< Bars that would fit into it; 0 for ticks.
};

/// What there is to know about one series of a file. Texts are UTF-8.
struct SeriesAudit {
  std::string code, timeZone;
  bool isTicks = false;
  int64 periodMs = 0;  ///< 0 for ticks.
  std::size_t rows = 0;
  int64 first = 0, last = 0;  ///< UTC ms; of bars the begin of the first, end of the last.
  std::size_t tradingDays = 0;
  std::string sessions;       ///< Usual ones of intraday bars, local, as instruments have them.
  bool hasLateRows = false;   ///< In the evening, behind a break, of the trading day of their date.
  std::size_t nightDays = 0;  ///< Trading days whose first row lies on an earlier local date.
  std::size_t missingBars = 0;  ///< In all holes together.
  std::size_t holeCount = 0;
  std::vector<Hole> holes;                     ///< The longest ones, in order of time.
  std::map<std::string, Findings> suspicious;  ///< By what is wrong with them.
  std::vector<double> prices;                  ///< Evenly chosen, for a picture.
  std::vector<std::string> notes;              ///< What was assumed.
};

/// What there is to know about one file. Texts are UTF-8.
struct FileAudit {
  std::string path;
  std::uint64_t bytes = 0;
  bool isCache = false;
  std::vector<FileColumn> columns;
  Findings faults;  ///< Rows that cannot be read, each with file, line, column and value.
  std::size_t duplicates = 0;  ///< Rows that repeat the time, or of ticks all, of the one before.
  std::string unread;          ///< Why nothing could be read; empty if something was.
  std::string cache;           ///< What is known of its cache, as one text.
  std::vector<SeriesAudit> series;
};

/// Reads a file in whole, passing over rows with faults, and looks at all rows. A price that moves
/// more than `jump` times the usual range counts as suspicious. Throws `DataFileError` only where
/// the request itself is wrong.
FileAudit auditFile(DataFileRequest request, bool isKindGiven, double jump);

/// The audit for people, with a picture of the prices; of plain ASCII unless `isUtf8`.
std::string auditText(const FileAudit& audit, bool isUtf8);
/// The same for programs.
QJsonObject auditJson(const FileAudit& audit);

/// Whether what is shown may hold characters beyond ASCII, by the locale of the environment.
bool localeHasUtf8();

}  // namespace orvane
