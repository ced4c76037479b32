#include "host/PlatformSetup.h"

#include <fmt/core.h>

#include <algorithm>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

#include "host/EventConfig.h"
#include "host/InputError.h"
#include "host/InstrumentInputs.h"
#include "host/TimeArgument.h"
#include "host/TradeConfig.h"
#include "host/WriteError.h"
#include "platform/dictionary/RecordFile.h"
#include "platform/events/IndexFile.h"
#include "shared/TextCodec.h"

namespace orvane {
namespace {

void addInstruments(EmbeddedPlatform& platform, const RunPlan& plan) {
  for (const InstrumentInput& input : plan.instruments) {
    try {
      platform.addInstrument(input.instrument);
    } catch (const std::invalid_argument& error) {
      throw InputError(fmt::format("{}: {}", input.origin, error.what()));
    }
  }
}

/// The code of a series: a known instrument, or a new one of which nothing else is known.
ICodeID codeOf(EmbeddedPlatform& platform, const RunPlan& plan, const std::string& codeText,
               const std::string& timeZone, const std::string& origin) {
  ICodeID code;
  if (platform.findCode(utf8ToGbk(codeText), code)) return code;
  Instrument instrument;
  setCodeText(instrument, codeText);
  if (platform.findCode(instrument.code, code)) return code;
  if (plan.instrumentsAreComplete)
    throw InputError(fmt::format("{}: unknown code \"{}\": the instruments file does not have it",
                                 origin, codeText));
  instrument.timeZone = timeZone;
  try {
    return platform.addInstrument(instrument);
  } catch (const std::invalid_argument& error) {
    throw InputError(fmt::format("{}: {}", origin, error.what()));
  }
}

void addSeries(EmbeddedPlatform& platform, const RunPlan& plan, DataSet data) {
  try {
    for (LoadedBars& loaded : data.bars) {
      auto& series = loaded.series;
      series.code = codeOf(platform, plan, loaded.code, series.timeZone, series.origin);
      platform.addBars(std::move(series));
    }
    for (LoadedTicks& loaded : data.ticks) {
      auto& series = loaded.series;
      series.code = codeOf(platform, plan, loaded.code, series.timeZone, series.origin);
      platform.addTicks(std::move(series));
    }
  } catch (const std::invalid_argument& error) {
    throw InputError(error.what());
  }
}

void addPublished(EmbeddedPlatform& platform, const RunPlan& plan, const std::string& timeZone) {
  for (const PublishedPlan& series : plan.published) {
    const ICodeID code = codeOf(platform, plan, series.code, timeZone, series.place);
    try {
      platform.addPublished(code, utf8ToGbk(series.frequency));
    } catch (const std::invalid_argument& error) {
      throw InputError(fmt::format("{}: {}", series.place, error.what()));
    }
  }
}

/// Dictionary records and compositions of indexes.
void addServiceFiles(EmbeddedPlatform& platform, const RunPlan& plan, const std::string& timeZone) {
  for (const std::string& path : plan.recordFiles) {
    const std::vector<RecordPublication> records = loadRecords(path);
    try {
      platform.addRecords(records);
    } catch (const std::invalid_argument& error) {
      throw InputError(fmt::format("{}: {}", path, error.what()));
    } catch (const std::runtime_error& error) {
      throw InputError(error.what());
    }
  }
  for (const std::string& path : plan.indexFiles) {
    const std::vector<IndexComposition> compositions = loadIndexes(path, timeZone);
    try {
      platform.addIndexes(compositions);
    } catch (const std::invalid_argument& error) {
      throw InputError(error.what());
    }
  }
}

/// Where the user gave what the platform calls `field`.
std::string placeOf(const RunPlan& plan, const std::string& field) {
  const std::size_t entry = std::min(field.find('['), field.size());
  const auto at = plan.places.find(field.substr(0, entry));
  return at == plan.places.end() ? field : at->second + field.substr(entry);
}

/// A message of the platform, which begins with what it calls the field.
std::string placed(const RunPlan& plan, const std::string& text) {
  const std::size_t colon = std::min(text.find(": "), text.size());
  return placeOf(plan, text.substr(0, colon)) + text.substr(colon);
}

/// Slippage in ticks that no instrument has would pass for a run without slippage.
void checkSlippageTicks(const RunPlan& plan) {
  const auto tells = [](const InstrumentInput& input) {
    return !input.instrument.priceTick.empty();
  };
  if (plan.trade.slippageTicks == 0 || std::ranges::any_of(plan.instruments, tells)) return;
  throw InputError(
      fmt::format("{}: {} ticks of what? No instrument tells its price tick; describe it, as in "
                  "--instrument CODE,priceTick=0.2, or give the slippage as a price",
                  placeOf(plan, "slippageTicks"), plan.trade.slippageTicks));
}

/// A platform whose options may be wrong.
std::unique_ptr<EmbeddedPlatform> platformOf(const RunPlan& plan, const PlatformOptions& options) {
  try {
    return std::make_unique<EmbeddedPlatform>(options);
  } catch (const std::invalid_argument& error) {
    throw InputError(placed(plan, error.what()));
  } catch (const std::system_error& error) {
    throw WriteError(error.what());
  } catch (const std::runtime_error& error) {
    throw InputError(error.what());
  }
}

}  // namespace

PlatformOptions platformOptions(const RunPlan& plan, const DataSet& data) {
  PlatformOptions options;
  options.mode = plan.isLive ? PlatformOptions::Mode::Live : PlatformOptions::Mode::Playback;
  options.poolThreads = plan.threads;
  options.timeZone = plan.timeZone.empty() ? data.timeZone() : plan.timeZone;
  options.speed = plan.speed;
  if (!plan.from.empty())
    options.from = parseTimeArgument(plan.from, options.timeZone, placeOf(plan, "from"));
  if (!plan.to.empty())
    options.to = parseTimeArgument(plan.to, options.timeZone, placeOf(plan, "to"));
  if (options.from != kUnsetTime && options.to != kUnsetTime && options.from >= options.to)
    throw InputError(fmt::format("{}: \"{}\" does not lie before {} \"{}\"", placeOf(plan, "from"),
                                 plan.from, placeOf(plan, "to"), plan.to));
  options.trade = tradeOptions(plan, options.timeZone);
  options.dictionary.file = plan.dictionaryFile;
  options.events = eventOptions(plan, options.timeZone);
  return options;
}

std::unique_ptr<EmbeddedPlatform> makePlatform(const RunPlan& plan, const PlatformOptions& options,
                                               DataSet data) {
  checkSlippageTicks(plan);
  auto platform = platformOf(plan, options);
  addInstruments(*platform, plan);
  addSeries(*platform, plan, std::move(data));
  addPublished(*platform, plan, options.timeZone);
  addServiceFiles(*platform, plan, options.timeZone);
  try {
    platform->gridConditions().prepare();
  } catch (const std::invalid_argument& error) {
    throw InputError(placed(plan, error.what()));
  }
  return platform;
}

}  // namespace orvane
