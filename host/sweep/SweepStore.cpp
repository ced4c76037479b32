#include "host/sweep/SweepStore.h"

#include <fmt/core.h>
#include <sqlite3.h>

#include <QJsonDocument>
#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>

#include "host/InputError.h"
#include "host/JsonInput.h"
#include "host/WriteError.h"
#include "platform/core/FileLock.h"
#include "platform/core/SqliteFile.h"

namespace orvane {
namespace {

constexpr int kApplicationId = 0x4F56'5357;
constexpr int kVersion = 1;

std::string figureNames(const char* ending) {
  std::string names;
  for (const FigureColumn& column : figureColumns())
    names += fmt::format(", \"{}\"{}", column.name, ending);
  return names;
}

const std::string& tables() {
  static const std::string kTables =
      "CREATE TABLE plan(key TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;"
      "CREATE TABLE result(window INTEGER NOT NULL, sample TEXT NOT NULL, number INTEGER NOT NULL,"
      " params TEXT NOT NULL, status TEXT NOT NULL, message TEXT NOT NULL, digest TEXT NOT NULL" +
      figureNames(" REAL") + ", PRIMARY KEY(window, sample, number)) WITHOUT ROWID";
  return kTables;
}

std::string valueText(const QJsonValue& value) {
  return value.isUndefined() ? std::string("not given") : jsonText(value);
}

std::string differenceText(const std::string& key, const QJsonValue& stored,
                           const QJsonValue& wanted) {
  constexpr std::string_view kFile = "file ";
  if (!key.starts_with(kFile))
    return fmt::format("{} was {} there and is {}", key, valueText(stored), valueText(wanted));
  const std::string file = key.substr(kFile.size());
  if (stored.isUndefined()) return fmt::format("\"{}\" was not read there", file);
  if (wanted.isUndefined()) return fmt::format("\"{}\" was read there", file);
  return fmt::format("\"{}\" has changed since", file);
}

/// What is not the same in two sweeps.
std::string differenceOf(const QJsonObject& stored, const QJsonObject& wanted) {
  QStringList keys = stored.keys() + wanted.keys();
  keys.sort();
  keys.removeDuplicates();
  std::string result;
  const auto differs = [&](const QString& key) { return stored[key] != wanted[key]; };
  // What options made of what they were given says it a second time.
  const bool isReadingTold = std::ranges::any_of(
      std::array{"--format", "--columns", "--delimiter", "--timezone", "--stamp", "--period",
                 "--date", "--price-scale", "--price-tick", "--side", "--set"},
      differs);
  for (const QString& key : keys)
    if (differs(key) && !(key == "reading" && isReadingTold) &&
        !(key == "params" && differs("--params")))
      result += (result.empty() ? "" : "; ") +
                differenceText(key.toStdString(), stored[key], wanted[key]);
  return result.empty() ? "its description was another" : result;
}

SweepSample sampleNamed(const std::string& name) {
  for (const SweepSample sample : {SweepSample::InSample, SweepSample::OutOfSample})
    if (name == sampleName(sample)) return sample;
  return SweepSample::Whole;
}

/// What a database says, in words that tell what to do.
std::string faultOf(const std::exception& error) {
  const auto* const fault = dynamic_cast<const SQLite::Exception*>(&error);
  const bool isOfDisk = fault != nullptr && fault->getErrorCode() == SQLITE_IOERR;
  return std::string(error.what()) + (isOfDisk ? " (is the disk full?)" : "");
}

/// Tells a disk that is at fault from a path that is.
[[noreturn]] void failToOpen(const std::string& place, const std::exception& error) {
  const auto* const fault = dynamic_cast<const SQLite::Exception*>(&error);
  const int code = fault == nullptr ? SQLITE_OK : fault->getErrorCode();
  const std::string message = fmt::format("{}: {}", place, faultOf(error));
  if (code == SQLITE_IOERR || code == SQLITE_FULL) throw WriteError(message);
  throw InputError(message);
}

}  // namespace

/// The lock comes before anything opens the file, and goes after everything has closed it.
class SweepStore::Database {
 public:
  explicit Database(const std::string& path)
      : lock_(path), file(detail::openSqlite(path, {kApplicationId, kVersion, tables().c_str()})) {}
  void leaveToParent() { lock_.leaveToParent(); }

 private:
  detail::FileLock lock_;

 public:
  SQLite::Database file;
};

SweepStore::SweepStore(const std::string& path, const QJsonObject& identity,
                       const std::string& option)
    : path_(path) {
  const auto place = [&] { return fmt::format("{}: \"{}\"", option, path); };
  const std::string wanted = QJsonDocument(identity).toJson(QJsonDocument::Compact).toStdString();
  std::string stored;
  try {
    database_ = std::make_unique<Database>(path);
    SQLite::Database& file = database_->file;
    SQLite::Statement found(file, "SELECT value FROM plan WHERE key = 'identity'");
    if (found.executeStep()) {
      stored = found.getColumn(0).getString();
    } else {
      SQLite::Statement added(file, "INSERT INTO plan VALUES('identity', ?)");
      detail::SqliteRow(added).add(wanted).run();
      stored = wanted;
    }
  } catch (const std::exception& error) {
    failToOpen(place(), error);
  }
  if (stored == wanted) return;
  const QJsonObject there = QJsonDocument::fromJson(QByteArray::fromStdString(stored)).object();
  throw InputError(fmt::format("{} holds the results of another sweep: {}. Give another folder",
                               place(), differenceOf(there, identity)));
}

SweepStore::~SweepStore() = default;

void SweepStore::leaveToParent() { database_->leaveToParent(); }

std::vector<SweepRow> SweepStore::rows() {
  std::vector<SweepRow> result;
  try {
    SQLite::Statement read(database_->file,
                           "SELECT window, sample, number, status, message, digest" +
                               figureNames("") + " FROM result");
    while (read.executeStep()) {
      SweepRow& row = result.emplace_back();
      row.key.window = read.getColumn(0).getInt();
      row.key.sample = sampleNamed(read.getColumn(1).getString());
      row.key.number = static_cast<std::uint64_t>(read.getColumn(2).getInt64()) - 1;
      row.status = read.getColumn(3).getString();
      row.message = read.getColumn(4).getString();
      row.digest = read.getColumn(5).getString();
      for (std::size_t i = 0; i < kFigureColumns; ++i)
        if (const SQLite::Column value = read.getColumn(static_cast<int>(6 + i)); !value.isNull())
          row.figures[i] = value.getDouble();
    }
  } catch (const std::exception& error) {
    throw std::runtime_error(fmt::format("{}: {}", path_, faultOf(error)));
  }
  return result;
}

void SweepStore::add(std::span<const SweepRow> rows, const ParameterSpace& space) {
  SQLite::Database& file = database_->file;
  try {
    SQLite::Transaction transaction(file);
    std::string places;
    for (std::size_t i = 0; i < 7 + kFigureColumns; ++i) places += i == 0 ? "?" : ", ?";
    SQLite::Statement added(file, "INSERT OR REPLACE INTO result VALUES(" + places + ")");
    for (const SweepRow& row : rows) {
      const QJsonObject params = space.paramsOf({}, row.key.number);
      detail::SqliteRow stored(added);
      stored.add(row.key.window)
          .add(std::string(sampleName(row.key.sample)))
          .add(static_cast<int64>(row.key.number + 1))
          .add(QJsonDocument(params).toJson(QJsonDocument::Compact).toStdString())
          .add(row.status)
          .add(row.message)
          .add(row.digest);
      for (const std::optional<double>& value : row.figures)
        stored.numberOrNull(value.value_or(0), value.has_value());
      stored.run();
    }
    transaction.commit();
  } catch (const std::exception& error) {
    throw std::runtime_error(fmt::format("{}: {}", path_, faultOf(error)));
  }
}

void SweepStore::keepOnly(std::int32_t window, SweepSample sample,
                          const std::optional<std::uint64_t>& number) {
  try {
    SQLite::Statement removed(database_->file,
                              "DELETE FROM result WHERE window = ? AND sample = ? AND number != ?");
    // Outputs count from 1, so no row has 0.
    detail::SqliteRow(removed)
        .add(window)
        .add(std::string(sampleName(sample)))
        .add(number ? static_cast<int64>(*number + 1) : int64{0})
        .run();
  } catch (const std::exception& error) {
    throw std::runtime_error(fmt::format("{}: {}", path_, faultOf(error)));
  }
}

}  // namespace orvane
