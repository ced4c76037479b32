#include "host/SeriesMerge.h"

#include <fmt/core.h>

#include <algorithm>
#include <iterator>

#include "host/InputError.h"
#include "host/TimeArgument.h"
#include "platform/fields/KLineView.h"

namespace orvane {
namespace {

int64 firstOf(const LoadedBars& part) { return KLineView(part.series.bars.front()).endTime(); }
int64 lastOf(const LoadedBars& part) { return KLineView(part.series.bars.back()).endTime(); }
int64 firstOf(const LoadedTicks& part) { return part.series.times.front(); }
int64 lastOf(const LoadedTicks& part) { return part.series.times.back(); }

bool isEmpty(const LoadedBars& part) { return part.series.bars.empty(); }
bool isEmpty(const LoadedTicks& part) { return part.series.times.empty(); }

bool isOneSeries(const LoadedBars& a, const LoadedBars& b) {
  return a.code == b.code && a.series.periodMs == b.series.periodMs;
}
bool isOneSeries(const LoadedTicks& a, const LoadedTicks& b) { return a.code == b.code; }

/// Ticks of one millisecond may stand on both sides of a file's end; bars may not share a time.
bool follows(const LoadedBars& before, const LoadedBars& after) {
  return firstOf(after) > lastOf(before);
}
bool follows(const LoadedTicks& before, const LoadedTicks& after) {
  return firstOf(after) >= lastOf(before);
}

void append(LoadedBars& to, LoadedBars& part) {
  to.series.bars.append(part.series.bars);
  to.series.isOrdered = to.series.isOrdered && part.series.isOrdered;
}

/// Makes the columns of `series` those of `columns`, which hold all of its own; a cell that it
/// does not have is 0.
void widen(TickSeries& series, const std::vector<TickColumnId>& columns) {
  if (series.columns == columns) return;
  std::vector<std::size_t> to;
  for (const TickColumnId& column : series.columns)
    to.push_back(static_cast<std::size_t>(std::find(columns.begin(), columns.end(), column) -
                                          columns.begin()));
  Rows<double> cells(series.rows() * columns.size());
  for (std::size_t row = 0; row < series.rows(); ++row)
    for (std::size_t i = 0; i < to.size(); ++i)
      cells[row * columns.size() + to[i]] = series.cells[row * to.size() + i];
  series.columns = columns;
  series.cells = std::move(cells);
}

void append(LoadedTicks& to, LoadedTicks& part) {
  std::vector<TickColumnId> columns = to.series.columns;
  for (const TickColumnId& column : part.series.columns)
    if (std::find(columns.begin(), columns.end(), column) == columns.end())
      columns.push_back(column);
  widen(to.series, columns);
  widen(part.series, columns);
  to.series.times.append(part.series.times);
  to.series.tradingDays.append(part.series.tradingDays);
  to.series.cells.append(part.series.cells);
  to.series.isOrdered = to.series.isOrdered && part.series.isOrdered;
}

template <typename Loaded>
std::vector<Loaded> merge(std::vector<Loaded> parts) {
  std::erase_if(parts, [](const Loaded& part) { return isEmpty(part); });
  // In time order within a series; the series stand in the order of their first files.
  std::vector<std::vector<Loaded>> groups;
  for (Loaded& part : parts) {
    const auto group = std::find_if(groups.begin(), groups.end(), [&](const auto& candidate) {
      return isOneSeries(candidate.front(), part);
    });
    if (group == groups.end())
      groups.emplace_back().push_back(std::move(part));
    else
      group->push_back(std::move(part));
  }
  std::vector<Loaded> result;
  for (auto& group : groups) {
    std::stable_sort(group.begin(), group.end(),
                     [](const Loaded& a, const Loaded& b) { return firstOf(a) < firstOf(b); });
    Loaded all = std::move(group.front());
    for (std::size_t i = 1; i < group.size(); ++i) {
      if (!follows(all, group[i]))
        throw InputError(fmt::format(
            "{}: its first row ({}) does not come after the last one ({}) of {}, and both are of "
            "the code \"{}\": name different codes apart with CODE=FILE",
            group[i].series.origin, isoTime(firstOf(group[i])), isoTime(lastOf(all)),
            all.series.origin, all.code));
      append(all, group[i]);
      all.series.origin += ", " + group[i].series.origin;
      for (std::string& note : group[i].notes)
        if (std::find(all.notes.begin(), all.notes.end(), note) == all.notes.end())
          all.notes.push_back(std::move(note));
    }
    result.push_back(std::move(all));
  }
  return result;
}

}  // namespace

std::vector<LoadedBars> mergeBars(std::vector<LoadedBars> parts) { return merge(std::move(parts)); }
std::vector<LoadedTicks> mergeTicks(std::vector<LoadedTicks> parts) {
  return merge(std::move(parts));
}

}  // namespace orvane
