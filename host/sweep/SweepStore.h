#pragma once

#include <QJsonObject>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/sweep/SweepPlan.h"
#include "host/sweep/SweepRow.h"

namespace orvane {

/// The results of a sweep in a SQLite database: what was run once need not be run again. One
/// process at a time has it open. Not thread-safe.
class SweepStore {
 public:
  /// Opens the database, or makes it for the sweep that `identity` describes: everything that its
  /// results depend on. Throws `InputError`, which begins with `option` and names the path, if it
  /// holds those of another sweep, which it names, or cannot be written; it is then as it was.
  SweepStore(const std::string& path, const QJsonObject& identity, const std::string& option);
  ~SweepStore();
  SweepStore(const SweepStore&) = delete;
  SweepStore& operator=(const SweepStore&) = delete;

  /// In a process that was forked from this one: it has nothing to do with the database any more.
  void leaveToParent();

  /// All rows that are there, by their keys.
  std::vector<SweepRow> rows();

  /// Adds rows, all or none; they are on the disk when it returns. `space` gives their parameters
  /// as text. Throws `std::runtime_error` that names the path.
  void add(std::span<const SweepRow> rows, const ParameterSpace& space);

  /// Removes the rows of a window and sample but the one of `number`, or all of them if there is
  /// none. Throws `std::runtime_error` that names the path.
  void keepOnly(std::int32_t window, SweepSample sample,
                const std::optional<std::uint64_t>& number);

 private:
  class Database;
  std::string path_;
  std::unique_ptr<Database> database_;
};

}  // namespace orvane
