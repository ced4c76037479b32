#include "host/sweep/SweepTable.h"

#include <fmt/core.h>

#include <algorithm>
#include <map>
#include <set>

#include "host/CsvText.h"
#include "host/FigureText.h"
#include "host/TimeArgument.h"

namespace orvane {
namespace {

constexpr const char* kFirstColumns[] = {"sample", "window", "from", "to", "rank", "number"};

/// The figures that a table for people has, beside the one that it is ranked by.
constexpr const char* kShown[] = {"profit", "return",  "sharpe",      "maxDrawdown.share",
                                  "fills",  "winRate", "profitFactor"};

/// Calls `visit` with each window, from 0 where there is no walk, and each of its samples.
template <typename Visit>
void eachPart(const SweepPlan& plan, Visit visit) {
  if (plan.windows.empty()) return visit(0, SweepSample::Whole);
  for (std::size_t i = 1; i <= plan.windows.size(); ++i) {
    visit(static_cast<std::int32_t>(i), SweepSample::InSample);
    visit(static_cast<std::int32_t>(i), SweepSample::OutOfSample);
  }
}

/// What a part is played over; nothing where that is all.
std::optional<TimeSpan> spanOf(const SweepPlan& plan, std::int32_t window, SweepSample sample) {
  if (window == 0) return std::nullopt;
  const WalkWindow& its = plan.windows[static_cast<std::size_t>(window) - 1];
  return sample == SweepSample::InSample ? its.inSample : its.outOfSample;
}

std::string columnName(const std::string& parameter) {
  std::set<std::string> taken = {"status", "message", "digest"};
  for (const char* name : kFirstColumns) taken.insert(name);
  for (const FigureColumn& column : figureColumns()) taken.insert(column.name);
  return taken.contains(parameter) ? "param." + parameter : parameter;
}

std::string figureText(std::size_t figure, const std::optional<double>& value) {
  if (!value) return "-";
  const FigureColumn& column = figureColumns()[figure];
  if (column.isShare) return percentText(*value);
  const std::string name = column.name;
  return roundedText(*value, name == "fills" || name == "closings" ? 0 : 2);
}

/// A table whose columns are as wide as their widest cell, numbers to the right.
std::string aligned(const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths(rows.front().size());
  for (const auto& row : rows)
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  std::string text;
  for (const auto& row : rows) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i)
      line += fmt::format("{}{:>{}}", i == 0 ? "" : "  ", row[i], widths[i]);
    text += line + "\n";
  }
  return text;
}

/// The columns of figures in a table for people: the ranking one first.
std::vector<std::size_t> shownFigures(const SweepPlan& plan) {
  std::vector<std::size_t> shown = {plan.rank};
  for (const char* name : kShown)
    if (const std::size_t at = figureNamed(name, "--rank"); at != plan.rank) shown.push_back(at);
  return shown;
}

void addCells(const SweepPlan& plan, const SweepRow& row, std::vector<std::string>& cells) {
  cells.push_back(std::to_string(row.key.number + 1));
  for (std::string& text : plan.space.textsOf(row.key.number)) cells.push_back(std::move(text));
  for (const std::size_t figure : shownFigures(plan))
    cells.push_back(figureText(figure, row.figures[figure]));
}

std::vector<std::string> headOf(const SweepPlan& plan, std::vector<std::string> first) {
  first.emplace_back("number");
  for (const ParameterRange& range : plan.space.ranges()) first.push_back(range.name());
  for (const std::size_t figure : shownFigures(plan))
    first.emplace_back(figureColumns()[figure].name);
  return first;
}

/// Why nothing is ranked, and what to do.
std::string unrankedText(const SweepPlan& plan, const SweepOutcome& outcome, bool hasFiles) {
  if (outcome.rows.empty()) return "No run was done.\n";
  const std::string name = figureColumns()[plan.rank].name;
  if (outcome.errors() == outcome.rows.size())
    return fmt::format(
        "No combination is ranked by {}: none of the {} runs ended as it should.\n"
        "{}orvane run with one combination shows its log.\n",
        name, outcome.rows.size(), hasFiles ? "Each says why in results.csv of --out; " : "");
  return fmt::format(
      "No combination is ranked by {}: no run has this figure, which takes more time or more\n"
      "trades than there were. Choose another by --rank, such as profit or finalEquity.\n",
      name);
}

std::string wholeText(const SweepPlan& plan, const SweepOutcome& outcome, std::size_t top,
                      bool hasFiles) {
  const SweepRanking ranking = rankingOf(outcome.rows, 0, SweepSample::Whole, plan.rank);
  std::vector<std::vector<std::string>> rows = {headOf(plan, {"rank"})};
  for (std::size_t i = 0; i < std::min(top, ranking.ranked); ++i) {
    rows.push_back({std::to_string(i + 1)});
    addCells(plan, *ranking.rows[i], rows.back());
  }
  return ranking.ranked == 0 ? unrankedText(plan, outcome, hasFiles) : aligned(rows);
}

std::string walkText(const SweepPlan& plan, const SweepOutcome& outcome, bool hasFiles) {
  std::vector<std::vector<std::string>> rows = {
      headOf(plan, {"window", "sample", "from (UTC)", "to (UTC)"})};
  double profit = 0;
  std::size_t tried = 0, gains = 0, failed = 0;
  eachPart(plan, [&](std::int32_t window, SweepSample sample) {
    const SweepRanking ranking = rankingOf(outcome.rows, window, sample, plan.rank);
    const TimeSpan span = *spanOf(plan, window, sample);
    const bool isChoice = sample == SweepSample::InSample;
    if (ranking.rows.empty() || (isChoice && ranking.ranked == 0)) return;
    const SweepRow& best = *ranking.rows.front();
    rows.push_back({std::to_string(window), sampleName(sample), isoTime(span.begin).substr(0, 16),
                    isoTime(span.end).substr(0, 16)});
    addCells(plan, best, rows.back());
    if (isChoice) return;
    ++tried;
    const std::optional<double>& gained = best.figures[figureNamed("profit", "--rank")];
    if (!best.isGood() || !gained) {
      ++failed;
      return;
    }
    gains += *gained > 0 ? 1 : 0;
    profit += *gained;
  });
  if (rows.size() == 1) return unrankedText(plan, outcome, hasFiles);
  return aligned(rows) +
         fmt::format(
             "\nout-of-sample: {} windows, {} with a profit{}; the sum of their profits is "
             "{}\n",
             tried, gains, failed == 0 ? "" : fmt::format(", {} that ended as an error", failed),
             roundedText(profit, 2));
}

}  // namespace

std::string sweepCsv(const SweepPlan& plan, const SweepOutcome& outcome) {
  std::string csv;
  for (const char* name : kFirstColumns) csv += std::string(name) + ",";
  for (const ParameterRange& range : plan.space.ranges())
    csv += csvField(columnName(range.name())) + ",";
  csv += "status,message";
  for (const FigureColumn& column : figureColumns()) csv += std::string(",") + column.name;
  csv += ",digest\n";
  eachPart(plan, [&](std::int32_t window, SweepSample sample) {
    const SweepRanking ranking = rankingOf(outcome.rows, window, sample, plan.rank);
    const std::optional<TimeSpan> span = spanOf(plan, window, sample);
    const std::string part =
        std::string(sampleName(sample)) + "," + (window == 0 ? "" : std::to_string(window)) + "," +
        (span ? isoTime(span->begin) : "") + "," + (span ? isoTime(span->end) : "") + ",";
    for (std::size_t i = 0; i < ranking.rows.size(); ++i) {
      const SweepRow& row = *ranking.rows[i];
      csv += part + (i < ranking.ranked ? std::to_string(i + 1) : "") + "," +
             std::to_string(row.key.number + 1) + ",";
      for (const std::string& text : plan.space.textsOf(row.key.number))
        csv += csvField(text) + ",";
      csv += row.status + "," + csvField(row.message);
      for (const std::optional<double>& value : row.figures)
        csv += "," + (value ? csvNumber(*value) : "");
      csv += "," + row.digest + "\n";
    }
  });
  return csv;
}

std::vector<std::string> unusedParameters(const SweepPlan& plan, const SweepOutcome& outcome) {
  std::vector<std::string> unused;
  const std::size_t fills = figureNamed("fills", "--rank");
  // Where nobody trades, nothing can be told.
  if (std::ranges::none_of(outcome.rows, [fills](const SweepRow& row) {
        return row.figures[fills].value_or(0) > 0;
      }))
    return unused;
  for (std::size_t i = 0; i < plan.space.ranges().size(); ++i) {
    // The rows that differ in this one alone, by the first of them.
    std::map<SweepKey, const SweepRow*> firsts;
    bool isCompared = false, hasDifference = false;
    for (const SweepRow& row : outcome.rows) {
      if (!row.isGood() || row.key.sample == SweepSample::OutOfSample) continue;
      std::vector<std::uint64_t> places = plan.space.placesOf(row.key.number);
      places[i] = 0;
      const auto [at, isFirst] = firsts.emplace(
          SweepKey{row.key.window, row.key.sample, plan.space.numberOf(places)}, &row);
      if (isFirst) continue;
      isCompared = true;
      hasDifference = at->second->figures != row.figures;
      if (hasDifference) break;
    }
    if (isCompared && !hasDifference) unused.push_back(plan.space.ranges()[i].name());
  }
  return unused;
}

std::string sweepText(const SweepPlan& plan, const SweepOutcome& outcome, std::size_t top,
                      bool hasFiles) {
  return plan.windows.empty() ? wholeText(plan, outcome, top, hasFiles)
                              : walkText(plan, outcome, hasFiles);
}

}  // namespace orvane
