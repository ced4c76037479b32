#pragma once

#include <QJsonObject>
#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/market/Series.h"
#include "shared/Export.h"

namespace orvane {

/// Bad input: `what()` is a UTF-8 text that names file, line, field and value, as far as they are
/// known, such as "ticks.csv:17: column \"price\": \"abc\" is not a number".
class ORVANE_API DataFileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The file is of the other kind: ticks where bars are asked for, or the other way round.
class ORVANE_API OtherKindError : public DataFileError {
 public:
  using DataFileError::DataFileError;
};

/// Is told a fault of one row of a file, as a `DataFileError` would say it.
using FaultTaker = std::function<void(const std::string& fault)>;

/// In what portions files are read. What comes out does not depend on it.
struct ReadPace {
  int threads = 0;             ///< Most that read at a time; 0: one a core, within reason.
  std::size_t chunkBytes = 0;  ///< Of the text that a thread takes at a time; 0: what is usual.
};

/// One series to read: which files make it, and how they are to be read.
struct DataFileRequest {
  /// What files may hold.
  enum class Kind { Bars, Ticks };
  Kind kind = Kind::Bars;          ///< What the files hold.
  std::vector<std::string> paths;  ///< UTF-8. Several files make one series, in time order.
  /// The code's text (UTF-8), such as "IF2101.CFFEX". Empty: from a column of the file, else from
  /// the file's name.
  std::string code;
  /// How the files are to be read: the keys of docs/formats.md. Empty: what is common is
  /// recognised.
  QJsonObject description;
  /// Price tick as decimal text, for cleaning prices of binary noise; empty: not known. The key
  /// "priceTick" of the description comes first.
  std::string priceTick;
  ReadPace pace = {};  ///< In what portions; nothing that is read depends on it.
  /// Folder of caches that are made and used without a further word; empty: there is none. It does
  /// not change what is read.
  std::string cacheFolder = {};
  /// Compare all bytes of a cache that is named in `paths` with their checksums, also where
  /// nothing tells that it was written to.
  bool checksCaches = false;
  /// If it is set, a row with a fault is told to it and passed over, and no error. It is called on
  /// the thread that loads.
  FaultTaker onFault = {};
};

/// One column of a file, as it is understood. Texts are UTF-8.
struct FileColumn {
  std::string name;     ///< As the file calls it; its number where it does not.
  std::string meaning;  ///< Our name for what it holds, such as "openTime"; empty: passed over.
};

/// A series without a code id: the caller finds or adds the instrument and sets `series.code`.
struct LoadedBars {
  std::string code;                ///< "CODE.MARKET" or "CODE", UTF-8.
  BarSeries series;                ///< Whole, but for the code's id.
  std::vector<std::string> notes;  ///< What was assumed, UTF-8, for the user to see.
};
/// The same for ticks.
struct LoadedTicks {
  std::string code;                ///< "CODE.MARKET" or "CODE", UTF-8.
  TickSeries series;               ///< Whole, but for the code's id.
  std::vector<std::string> notes;  ///< What was assumed, UTF-8, for the user to see.
};

/// Reads a series from its files, or maps those that are caches. Throws `DataFileError`; nothing is
/// returned half-read. A file that holds several codes gives one series for each, in the order of
/// their first rows. `progress`, if set, is given the share of bytes read, 0 to 1.
ORVANE_API std::vector<LoadedBars> loadBars(const DataFileRequest& request,
                                            const std::function<void(double)>& progress = {});
ORVANE_API std::vector<LoadedTicks> loadTicks(const DataFileRequest& request,
                                              const std::function<void(double)>& progress = {});

/// How the columns of the first file of a request are understood; none for a cache. Throws
/// `DataFileError`.
ORVANE_API std::vector<FileColumn> columnsOfFile(const DataFileRequest& request);

/// The code that a file's name gives (UTF-8), for files that name none inside: the name without
/// its ending, up to the first date of 8 digits, period such as "1min" or "day", or word such as
/// "trade" or "quote", without years at its end, in capitals. "spy_20131007_1min_trade.csv" gives
/// "SPY". Never empty.
ORVANE_API std::string codeFromFileName(const std::string& path);

}  // namespace orvane
