#include "host/sweep/SweepPage.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <algorithm>
#include <map>

#include "host/PageTemplate.h"
#include "host/ReportJson.h"
#include "host/Version.h"

namespace orvane {
namespace {

/// A page of more rows takes a browser too long; the best of them are in it then.
constexpr std::size_t kMostRows = 50'000;

/// The values that combinations of the sweep have, by range: of a large range a sample meets few.
class UsedValues {
 public:
  explicit UsedValues(const SweepPlan& plan) : plan_(plan), used_(plan.space.ranges().size()) {
    for (const std::uint64_t number : plan.numbers) {
      const std::vector<std::uint64_t> places = plan.space.placesOf(number);
      for (std::size_t i = 0; i < places.size(); ++i) used_[i].emplace(places[i], 0);
    }
    for (auto& range : used_)
      for (std::uint64_t at = 0; auto& [place, mine] : range) mine = at++;
  }

  QJsonArray ranges() const {
    QJsonArray result;
    for (std::size_t i = 0; i < used_.size(); ++i) {
      const ParameterRange& range = plan_.space.ranges()[i];
      QJsonArray values;
      bool hasTexts = false;
      for (const auto& [place, mine] : used_[i]) {
        values.append(qt(range.text(place)));
        hasTexts = hasTexts || range.value(place).isString();
      }
      QJsonObject its{{"name", qt(range.name())}, {"values", values}};
      // Where texts are among them, which values are: for the parameters of a run by hand.
      if (hasTexts) {
        QJsonArray texts;
        for (const auto& [place, mine] : used_[i]) texts.append(range.value(place).isString());
        its["texts"] = texts;
      }
      result.append(its);
    }
    return result;
  }

  QJsonArray placesOf(std::uint64_t number) const {
    QJsonArray result;
    const std::vector<std::uint64_t> places = plan_.space.placesOf(number);
    for (std::size_t i = 0; i < places.size(); ++i) result.append(count(used_[i].at(places[i])));
    return result;
  }

 private:
  const SweepPlan& plan_;
  std::vector<std::map<std::uint64_t, std::uint64_t>> used_;  ///< Where it stands among them.
};

QJsonArray figuresList() {
  QJsonArray result;
  for (const FigureColumn& column : figureColumns())
    result.append(QJsonObject{{"name", column.name},
                              {"title", column.title},
                              {"isBestLow", column.isBestLow},
                              {"isShare", column.isShare}});
  return result;
}

QJsonObject spanObject(const TimeSpan& span) {
  return {{"begin", timeOrNull(span.begin)}, {"end", timeOrNull(span.end)}};
}

QJsonArray windowsOf(const SweepPlan& plan) {
  QJsonArray result;
  for (const WalkWindow& window : plan.windows)
    result.append(QJsonObject{{"inSample", spanObject(window.inSample)},
                              {"outOfSample", spanObject(window.outOfSample)}});
  return result;
}

/// A row as an array: window, number, rank or null, places of its values, status, message, figures.
QJsonArray rowArray(const UsedValues& values, const SweepRow& row, const QJsonValue& rank) {
  QJsonArray figures;
  for (const std::optional<double>& value : row.figures)
    figures.append(value ? QJsonValue(*value) : QJsonValue());
  return {row.key.window, count(row.key.number + 1), rank,   values.placesOf(row.key.number),
          qt(row.status), qt(row.message),           figures};
}

QJsonArray rowsOf(const SweepPlan& plan, const UsedValues& values, const SweepOutcome& outcome,
                  std::int32_t window, SweepSample sample, std::size_t most) {
  QJsonArray result;
  const SweepRanking ranking = rankingOf(outcome.rows, window, sample, plan.rank);
  for (std::size_t i = 0; i < std::min(most, ranking.rows.size()); ++i)
    result.append(rowArray(values, *ranking.rows[i],
                           i < ranking.ranked ? QJsonValue(count(i + 1)) : QJsonValue()));
  return result;
}

void append(QJsonArray& to, const QJsonArray& rows) {
  for (const auto& row : rows) to.append(row);
}

}  // namespace

QJsonObject sweepPageData(const SweepPlan& plan, const SweepOutcome& outcome, const DataSet& data) {
  const UsedValues values(plan);
  QJsonArray series, rows, chosen;
  for (const SeriesSummary& one : data.summaries())
    series.append(QJsonObject{{"code", qt(one.code)},
                              {"frequency", qt(one.isTicks ? "ticks" : one.frequency)},
                              {"records", count(one.records)},
                              {"begin", timeOrNull(one.firstTime)},
                              {"end", timeOrNull(one.lastTime)},
                              {"files", qt(one.origin)}});
  const std::size_t windows = plan.windows.size();
  if (windows == 0) rows = rowsOf(plan, values, outcome, 0, SweepSample::Whole, kMostRows);
  for (std::size_t i = 1; i <= windows; ++i) {
    const auto window = static_cast<std::int32_t>(i);
    append(rows, rowsOf(plan, values, outcome, window, SweepSample::InSample,
                        std::max<std::size_t>(kMostRows / windows, 1)));
    append(chosen, rowsOf(plan, values, outcome, window, SweepSample::OutOfSample, 1));
  }
  const RunnerPlan& runner = plan.run.runners.front();
  return {{"version", kVersion},
          {"strategy", qt(runner.name)},
          {"params", runner.params},
          {"ranges", values.ranges()},
          {"gridSize", static_cast<double>(plan.space.size())},
          {"combinations", count(plan.numbers.size())},
          {"figures", figuresList()},
          {"rank", static_cast<int>(plan.rank)},
          {"windows", windowsOf(plan)},
          {"rows", rows},
          {"outOfSample", chosen},
          {"done", count(outcome.rows.size())},
          {"expected", count(outcome.expected)},
          {"isInterrupted", outcome.isInterrupted},
          {"errors", count(outcome.errors())},
          {"crashes", count(outcome.crashes())},
          {"data", series}};
}

QByteArray sweepPage(const SweepPlan& plan, const SweepOutcome& outcome, const DataSet& data) {
  QByteArray page(kSweepPageHead);
  // No text can end the element in which it stands, nor begin another.
  page += QJsonDocument(sweepPageData(plan, outcome, data))
              .toJson(QJsonDocument::Compact)
              .replace('<', "\\u003c");
  page += kSweepPageTail;
  return page;
}

}  // namespace orvane
