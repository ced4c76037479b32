#include "host/DataSet.h"

#include <fmt/core.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <set>
#include <string_view>

#include "host/InputError.h"
#include "host/InstrumentInputs.h"
#include "host/SeriesMerge.h"
#include "platform/fields/KLineView.h"
#include "platform/market/PeriodText.h"
#include "shared/TextCodec.h"

namespace orvane {
namespace {

/// The instrument that a code text names, if the plan has it.
const Instrument* instrumentOfCode(const RunPlan& plan, const std::string& code) {
  for (const InstrumentInput& input : plan.instruments)
    if (instrumentText(input.instrument) == code || gbkToUtf8(input.instrument.code) == code)
      return &input.instrument;
  return nullptr;
}

/// A fault of a description with the place where the user gave it.
std::string placed(const std::string& fault, const DescriptionPlaces& places) {
  constexpr std::string_view kBegin = "description: ";
  if (!fault.starts_with(kBegin)) return fault;
  const std::string rest = fault.substr(kBegin.size());
  for (const auto& [key, option] : places.options)
    if (rest.starts_with("\"" + key + "\": "))
      return fmt::format("{}{}", option, rest.substr(key.size() + 2));
  return fmt::format("{}: {}", places.place, rest);
}

/// Adds what the instrument knows about its files: the price tick, and the zone of the times.
void completeRequest(const RunPlan& plan, DataFileRequest& request) {
  const std::string code =
      request.code.empty() ? codeFromFileName(request.paths.front()) : request.code;
  const Instrument* instrument = instrumentOfCode(plan, code);
  if (instrument == nullptr) return;
  request.priceTick = instrument->priceTick;
  const QLatin1String zone("timeZone");
  if (!instrument->timeZone.empty() && !request.description.contains(zone))
    request.description[zone] = QString::fromStdString(gbkToUtf8(instrument->timeZone));
}

void checkCacheFolder(const RunPlan& plan) {
  std::error_code error;
  if (plan.cacheFolder.empty() || !std::filesystem::exists(plan.cacheFolder, error) ||
      std::filesystem::is_directory(plan.cacheFolder, error))
    return;
  const auto place = plan.places.find("cacheFolder");
  throw InputError(fmt::format("{}: \"{}\" is not a folder",
                               place == plan.places.end() ? "--cache" : place->second,
                               plan.cacheFolder));
}

/// The requests of one input: one for all its files if their code is given, else one for each, so
/// that each file tells its own code and period.
std::vector<DataFileRequest> requestsOf(const RunPlan& plan, const DataInput& input) {
  std::vector<DataFileRequest> result;
  DataFileRequest request;
  request.kind = input.kind;
  request.code = input.code;
  request.description = input.description;
  request.cacheFolder = plan.cacheFolder;
  if (!input.code.empty()) {
    request.paths = input.paths;
    result.push_back(request);
  } else {
    for (const std::string& path : input.paths) {
      request.paths = {path};
      result.push_back(request);
    }
  }
  for (DataFileRequest& one : result) completeRequest(plan, one);
  return result;
}

}  // namespace

void withPlaces(const DescriptionPlaces& places, const std::function<void()>& read) {
  try {
    read();
  } catch (const OtherKindError&) {
    throw;  // Who knows what to do about it looks for the type.
  } catch (const DataFileError& error) {
    throw DataFileError(placed(error.what(), places));
  }
}

bool hasPriceTick(const RunPlan& plan, const std::string& code) {
  const Instrument* const instrument = instrumentOfCode(plan, code);
  return instrument != nullptr && !instrument->priceTick.empty();
}

DataSet loadDataSet(const RunPlan& plan,
                    const std::function<void(const std::string&, double)>& progress) {
  checkCacheFolder(plan);
  DataSet result;
  for (const DataInput& input : plan.data) {
    for (const DataFileRequest& request : requestsOf(plan, input)) {
      const std::string& shown = request.paths.front();
      const auto onShare = [&](double share) {
        if (progress) progress(shown, share);
      };
      withPlaces(input.places, [&] {
        if (request.kind == DataFileRequest::Kind::Bars)
          std::ranges::move(loadBars(request, onShare), std::back_inserter(result.bars));
        else
          std::ranges::move(loadTicks(request, onShare), std::back_inserter(result.ticks));
      });
    }
  }
  result.bars = mergeBars(std::move(result.bars));
  result.ticks = mergeTicks(std::move(result.ticks));
  if (result.bars.empty() && result.ticks.empty())
    throw InputError("there is no market data: the files hold no rows");
  return result;
}

std::vector<SeriesSummary> DataSet::summaries() const {
  std::vector<SeriesSummary> result;
  for (const LoadedBars& loaded : bars) {
    const auto& all = loaded.series.bars;
    result.push_back({loaded.code, false, loaded.series.periodMs,
                      frequencyText(loaded.series.periodMs), all.size(),
                      KLineView(all.front()).beginTime(), KLineView(all.back()).endTime(),
                      loaded.series.timeZone, loaded.series.origin, loaded.notes});
  }
  for (const LoadedTicks& loaded : ticks)
    result.push_back({loaded.code,
                      true,
                      0,
                      {},
                      loaded.series.rows(),
                      loaded.series.times.front(),
                      loaded.series.times.back(),
                      loaded.series.timeZone,
                      loaded.series.origin,
                      loaded.notes});
  return result;
}

std::string DataSet::timeZone() const {
  std::set<std::string> zones;
  for (const LoadedBars& loaded : bars) zones.insert(loaded.series.timeZone);
  for (const LoadedTicks& loaded : ticks) zones.insert(loaded.series.timeZone);
  const bool isOne = zones.size() == 1 && !zones.begin()->empty();
  return isOne ? *zones.begin() : "UTC";
}

std::uint64_t DataSet::records() const {
  std::uint64_t sum = 0;
  for (const LoadedBars& loaded : bars) sum += loaded.series.bars.size();
  for (const LoadedTicks& loaded : ticks) sum += loaded.series.rows();
  return sum;
}

DataSet DataSet::shared() const {
  DataSet result;
  for (const LoadedBars& loaded : bars) {
    const BarSeries& series = loaded.series;
    result.bars.push_back({loaded.code,
                           {series.code, series.periodMs, series.timeZone, series.origin,
                            series.bars.shared(), series.isOrdered},
                           loaded.notes});
  }
  for (const LoadedTicks& loaded : ticks) {
    const TickSeries& series = loaded.series;
    result.ticks.push_back(
        {loaded.code,
         {series.code, series.timeZone, series.origin, series.columns, series.times.shared(),
          series.tradingDays.shared(), series.cells.shared(), series.isOrdered},
         loaded.notes});
  }
  return result;
}

}  // namespace orvane
