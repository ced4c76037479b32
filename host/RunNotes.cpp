#include "host/RunNotes.h"

#include <fmt/core.h>

#include <QString>
#include <algorithm>
#include <filesystem>
#include <numeric>

#include "host/InstrumentInputs.h"
#include "host/RunSession.h"
#include "host/TimeArgument.h"
#include "platform/dictionary/RecordFile.h"
#include "platform/fields/KLineView.h"
#include "shared/TextCodec.h"

namespace orvane {
namespace {

/// The instants that a run plays, from the first to the last market record; none if `count` is 0.
struct PlayedRange {
  std::uint64_t count = 0;
  int64 first = kUnsetTime, last = -kUnsetTime;

  void add(int64 from, int64 to, std::uint64_t records) {
    if (records == 0) return;
    count += records;
    first = std::min(first, from);
    last = std::max(last, to);
  }
  bool has(int64 time) const { return time >= first && time <= last; }
};

/// Adds the rows of a series between the bounds; `timeOf` tells when a row is known.
template <typename TimeOf>
void addRows(PlayedRange& range, const PlatformOptions& options, std::size_t rows,
             const TimeOf& timeOf) {
  const auto below = [&](int64 bound) {
    std::size_t low = 0;
    for (std::size_t high = rows; low < high;) {
      const std::size_t middle = low + (high - low) / 2;
      if (timeOf(middle) < bound)
        low = middle + 1;
      else
        high = middle;
    }
    return low;
  };
  const std::size_t from = options.from == kUnsetTime ? 0 : below(options.from);
  const std::size_t to = options.to == kUnsetTime ? rows : below(options.to);
  if (from < to) range.add(timeOf(from), timeOf(to - 1), to - from);
}

PlayedRange rangeOf(const PlatformOptions& options, const DataSet& data) {
  PlayedRange range;
  for (const LoadedBars& loaded : data.bars)
    addRows(range, options, loaded.series.bars.size(),
            [&](std::size_t row) { return KLineView(loaded.series.bars[row]).endTime(); });
  for (const LoadedTicks& loaded : data.ticks)
    addRows(range, options, loaded.series.rows(),
            [&](std::size_t row) { return loaded.series.times[row]; });
  return range;
}

std::string noteOnNothing(const RunPlan& plan, const DataSet& data) {
  int64 first = kUnsetTime, last = -kUnsetTime;
  for (const SeriesSummary& series : data.summaries()) {
    first = std::min(first, series.firstTime);
    last = std::max(last, series.lastTime);
  }
  std::string bounds;
  if (!plan.from.empty()) bounds += fmt::format(" from \"{}\"", plan.from);
  if (!plan.to.empty()) bounds += fmt::format(" to \"{}\"", plan.to);
  return fmt::format(
      "nothing is played{}: the data go from {} to {}; choose --from and --to "
      "within them",
      bounds, isoTime(first), isoTime(last));
}

/// The terms of an instrument that has no data are of no use to data of another code.
std::vector<std::string> notesOnInstruments(const RunPlan& plan, const DataSet& data) {
  if (plan.instrumentsAreComplete) return {};
  std::vector<std::string> codes;
  for (const SeriesSummary& series : data.summaries()) codes.push_back(series.code);
  const auto isOfData = [&](const std::string& code) {
    return std::ranges::find(codes, code) != codes.end() ||
           std::ranges::find(plan.published, code, &PublishedPlan::code) != plan.published.end();
  };
  std::vector<std::string> notes;
  for (const auto& [instrument, origin] : plan.instruments) {
    const std::string text = instrumentText(instrument), code = gbkToUtf8(instrument.code);
    if (isOfData(text) || isOfData(code)) continue;
    notes.push_back(
        fmt::format("{}: no data are of \"{}\"; they are of {}, for which its price tick, "
                    "multiplier and limits do "
                    "not count",
                    origin, text, codes.front()));
  }
  return notes;
}

}  // namespace

std::vector<std::string> notesOnRange(const RunPlan& plan, const PlatformOptions& options,
                                      const DataSet& data) {
  if (plan.isLive) return {};
  std::vector<std::string> notes = notesOnInstruments(plan, data);
  const PlayedRange range = rangeOf(options, data);
  if (range.count == 0) {
    notes.push_back(noteOnNothing(plan, data));
    return notes;
  }
  const std::string played = isoTime(range.first) + " to " + isoTime(range.last);
  for (const std::string& path : plan.recordFiles) {
    // A pipe can be read but once, and that is for the run.
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) continue;
    std::size_t late = 0, all = 0;
    for (const RecordPublication& publication : loadRecords(path))
      for (const Record& record : publication.records) {
        const int64 seen =
            publication.time == kUnsetTime ? record.key : std::max(record.key, publication.time);
        ++all;
        late += seen > range.last ? 1 : 0;
      }
    if (late > 0)
      notes.push_back(
          fmt::format("{}: {} of {} records are never seen, since they come after what is played, "
                      "{}; is their time zone right?",
                      path, late, all, played));
  }
  const auto& script = options.events.script;
  const auto outside = std::ranges::count_if(
      script, [&](const ScriptedEvent& event) { return !range.has(event.time); });
  if (outside > 0)
    notes.push_back(
        fmt::format("{} of {} general events are never told, since they lie outside "
                    "what is played, {}; is their time zone right?",
                    outside, script.size(), played));
  return notes;
}

std::vector<std::string> notesOnDictionary(const RunPlan& plan, EmbeddedPlatform& platform) {
  const int64 earlier = plan.dictionaryFile.empty() ? 0 : platform.earlierRecords();
  if (earlier == 0) return {};
  return {
      fmt::format("{} holds {} records that earlier runs published, which this one finds and "
                  "adds to; give another --dictionary for a run of its own",
                  plan.dictionaryFile, earlier)};
}

std::vector<std::string> notesOnTrade(const RunPlan& plan) {
  const double rate = QString::fromStdString(plan.trade.marginRate).toDouble();
  if (rate <= 1) return {};
  return {fmt::format(
      "the margin rate {} is {:.6g} % of the turnover, more than all of it; 10 % is written 0.1",
      plan.trade.marginRate, rate * 100)};
}

namespace {

/// Whether it was called for nothing but to start, to stop and to see its account.
bool wasGivenNothing(const RunnerOutcome& runner) {
  if (!runner.record || runner.state.status != RunnerStopped) return false;
  const RunRecord& record = *runner.record;
  constexpr CallKind kOfNobody[] = {
      CallKind::Start,    CallKind::AccountStatus,    CallKind::Capital,
      CallKind::Position, CallKind::StrategyPosition, CallKind::Stop};
  std::uint64_t rest = std::accumulate(record.calls.begin(), record.calls.end(), std::uint64_t{0});
  for (const CallKind kind : kOfNobody) rest -= record.calls[static_cast<std::size_t>(kind)];
  return rest == 0 && record.exceptions == 0 && !record.hasPublished && !runner.trading;
}

}  // namespace

std::vector<std::string> notesOnRunners(const RunOutcome& outcome) {
  const bool onlyTicks = std::ranges::all_of(outcome.data, &SeriesSummary::isTicks);
  std::vector<std::string> notes;
  for (const RunnerOutcome& runner : outcome.runners) {
    if (!onlyTicks || !runner.record) continue;
    const RunRecord& record = *runner.record;
    const bool isIdle = record.ticks > 0 && record.bars == 0 && !runner.trading &&
                        !record.spokeOnTicks && record.exceptions == 0;
    if (isIdle)
      notes.push_back(fmt::format(
          "\"{}\" was given {} ticks and no bar, and did nothing with them; if it takes bars, make "
          "some: orvane data convert FILE --to-period 1m --to csv -o BARS.csv",
          runner.plan.name, record.ticks));
  }
  if (!outcome.isLive && !outcome.isInterrupted && outcome.notes.empty() &&
      std::ranges::all_of(outcome.runners, wasGivenNothing))
    notes.emplace_back(
        "nobody subscribed the data, so they were played to no one; does the strategy ask for "
        "them, or need other input?");
  return notes;
}

}  // namespace orvane
