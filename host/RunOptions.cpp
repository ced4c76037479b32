#include "host/RunOptions.h"

#include <fmt/core.h>

#include <filesystem>
#include <limits>

#include "host/InputError.h"
#include "host/InstrumentInputs.h"
#include "host/JsonInput.h"
#include "host/OptionChecks.h"

namespace orvane {
namespace {

constexpr std::uint64_t kLargest = std::numeric_limits<int>::max();

/// Splits "CODE=FILE"; a name that has "=" in it and is a file stays whole.
std::pair<std::string, std::string> splitCode(const std::string& argument) {
  const auto equals = argument.find('=');
  const bool hasCode = equals != std::string::npos && equals != 0 && argument.find('/') > equals &&
                       !std::filesystem::exists(argument);
  if (!hasCode) return {{}, argument};
  return {argument.substr(0, equals), argument.substr(equals + 1)};
}

}  // namespace

void RunOptions::addTo(CLI::App& command) {
  addWhatToRun(command);
  addMarketDataOptions(command);
  reading_.addTo(command);
  addHowToPlay(command);
  addHowToTrade(command);
  addLogLines(command);
}

void RunOptions::addWhatToRun(CLI::App& command) {
  const std::string what = "What to run";
  command
      .add_option("-s,--strategy", strategy_,
                  "Strategy module: a file, or a bare name such as sma_cross")
      ->type_name("MODULE")
      ->group(what);
  command.add_option("-p,--params", params_, "Parameters of the strategy: {...} or a file")
      ->type_name("JSON")
      ->group(what);
}

void RunOptions::addMarketDataOptions(CLI::App& command) {
  const std::string data = "Market data";
  command.add_option("-b,--bars", bars_, "Bar files; those of one code make one series")
      ->type_name("[CODE=]FILE")
      ->group(data);
  command.add_option("-t,--ticks", ticks_, "Tick files; those of one code make one series")
      ->type_name("[CODE=]FILE")
      ->group(data);
  command
      .add_option("-i,--instrument", instruments_,
                  "Instrument as CODE[.MARKET],priceTick=0.2,..., or instruments.json")
      ->type_name("INSTRUMENT")
      ->group(data);
  command
      .add_option("--cache", cache_,
                  "Folder of caches: the first run makes them, later ones begin at once")
      ->type_name("DIR")
      ->group(data);
}

void RunOptions::addHowToPlay(CLI::App& command) {
  const std::string how = "How to play";
  command.add_option("--from", from_, "Begin here; what lies before is history")
      ->type_name("TIME")
      ->group(how);
  command.add_option("--to", to_, "End before this time")->type_name("TIME")->group(how);
  command
      .add_option("--threads", threads_, "Threads that run strategies (default: by the machine)")
      ->check(wholeNumber(1, 1024))
      ->group(how);
}

void RunOptions::addHowToTrade(CLI::App& command) {
  const std::string trade = "How to trade";
  command.add_option("--capital", capital_, "Start balance of each runner's account")
      ->type_name("MONEY")
      ->default_str("1000000")
      ->group(trade);
  command.add_option("--fee-per-lot", feePerLot_, "Fee for each unit of volume")
      ->type_name("MONEY")
      ->group(trade);
  command.add_option("--fee-rate", feeRate_, "Fee as a share of the turnover, such as 0.0001")
      ->type_name("RATE")
      ->group(trade);
  command.add_option("--margin-rate", marginRate_, "Margin as a share of the turnover")
      ->type_name("RATE")
      ->group(trade);
  command.add_option("--slippage", slippage_, "Price amount against market and stop orders")
      ->type_name("PRICE")
      ->group(trade);
  command.add_option("--slippage-ticks", slippageTicks_, "The same in price ticks")
      ->check(wholeNumber(0, kLargest))
      ->group(trade);
  command.add_option("--entry-latency", entryLatencyMs_, "From an order to the exchange, in ms")
      ->check(wholeNumber(0, kLargest))
      ->type_name("MS")
      ->group(trade);
  command
      .add_option("--report-latency", reportLatencyMs_, "From the exchange to the strategy, in ms")
      ->check(wholeNumber(0, kLargest))
      ->type_name("MS")
      ->group(trade);
}

void RunOptions::addLogLines(CLI::App& command) {
  const std::string log = "Log lines";
  command.add_option("--log", log_.file, "Write log lines to a file and not to standard error")
      ->type_name("FILE")
      ->group(log);
  const CLI::Validator levels = oneOf({"trace", "debug", "info", "warn", "error", "off"});
  command.add_option("--log-level", log_.level, "Level of the system's lines")
      ->check(levels)
      ->capture_default_str()
      ->group(log);
  command.add_option("--strategy-log-level", log_.strategyLevel, "Level of the strategies' lines")
      ->check(levels)
      ->capture_default_str()
      ->group(log);
}

std::vector<std::pair<bool, const char*>> RunOptions::inputs() const {
  return {{!strategy_.empty(), "--strategy"},
          {!params_.empty(), "--params"},
          {!bars_.empty(), "--bars"},
          {!ticks_.empty(), "--ticks"},
          {!instruments_.empty(), "--instrument"}};
}

RunnerPlan RunOptions::runner(RunPlan& plan) const {
  RunnerPlan runner;
  runner.strategy = strategy_;
  if (!params_.empty()) {
    runner.params = jsonObjectArgument(params_, "--params");
    plan.otherFiles.push_back({"--params", params_});
  }
  return runner;
}

void RunOptions::addInputs(RunPlan& plan) const {
  for (const std::string& given : instruments_) {
    if (given.ends_with(".json")) {
      const auto list = instrumentsOfFile(given);
      plan.instruments.insert(plan.instruments.end(), list.begin(), list.end());
      plan.instrumentsAreComplete = true;
      plan.otherFiles.push_back({"--instrument", given});
    } else {
      plan.instruments.push_back(instrumentOf(given, "--instrument"));
    }
  }
  addMarketData(plan, bars_, DataFileRequest::Kind::Bars);
  addMarketData(plan, ticks_, DataFileRequest::Kind::Ticks);
}

void RunOptions::addMarketData(RunPlan& plan, const std::vector<std::string>& files,
                               DataFileRequest::Kind kind) const {
  const QJsonObject description = reading_.description();
  // One instrument and nothing said about codes: the files are of it.
  const bool isOnlyOne = plan.instruments.size() == 1 && !plan.instrumentsAreComplete;
  for (const std::string& argument : files) {
    const char* const option = kind == DataFileRequest::Kind::Bars ? "--bars" : "--ticks";
    const auto [code, path] = splitCode(argument);
    if (path.empty()) throw InputError(fmt::format("{}: \"{}\" names no file", option, argument));
    if (path.starts_with('=') && !std::filesystem::exists(path))
      throw InputError(fmt::format("{}: \"{}\" has no code before \"=\"", option, argument));
    DataInput input;
    input.kind = kind;
    input.code = !code.empty() ? code
                 : isOnlyOne   ? instrumentText(plan.instruments.front().instrument)
                               : std::string();
    input.description = description;
    input.places = reading_.places();
    DataInput* same = nullptr;
    for (DataInput& other : plan.data)
      if (other.kind == kind && other.code == input.code) same = &other;
    if (same == nullptr) same = &plan.data.emplace_back(std::move(input));
    same->paths.push_back(path);
  }
}

void RunOptions::addSettings(RunPlan& plan) const {
  const auto take = [&plan](const std::string& given, std::string& target, const char* field,
                            const char* option) {
    if (given.empty()) return;
    target = given;
    plan.places[field] = option;
  };
  take(from_, plan.from, "from", "--from");
  take(to_, plan.to, "to", "--to");
  if (threads_ > 0) plan.threads = threads_;
  take(capital_, plan.startBalance, "startBalance", "--capital");
  take(cache_, plan.cacheFolder, "cacheFolder", "--cache");
  TradeOptions& trade = plan.trade;
  take(feePerLot_, trade.feePerLot, "feePerLot", "--fee-per-lot");
  take(feeRate_, trade.feeRate, "feeRate", "--fee-rate");
  take(marginRate_, trade.marginRate, "marginRate", "--margin-rate");
  take(slippage_, trade.slippage, "slippage", "--slippage");
  if (slippageTicks_ > 0) {
    trade.slippageTicks = slippageTicks_;
    plan.places["slippageTicks"] = "--slippage-ticks";
  }
  if (entryLatencyMs_ > 0) trade.entryLatencyMs = entryLatencyMs_;
  if (reportLatencyMs_ > 0) trade.reportLatencyMs = reportLatencyMs_;
}

}  // namespace orvane
