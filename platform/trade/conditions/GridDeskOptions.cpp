// The conditions of a grid desk: reading them, and what their owner asks for.

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "platform/core/Periods.h"
#include "platform/trade/conditions/GridDesk.h"
#include "shared/CodeTables.h"
#include "shared/StatusCodes.h"
#include "shared/TextCodec.h"

namespace orvane {

IGridConditions::~IGridConditions() = default;

}  // namespace orvane

namespace orvane::detail {
namespace {

using status::kBadArgument;
using status::kNotThere;

GridState::Mode modeOf(const GridWorker& worker, bool hasBegun) {
  if (worker.mode() == GridWorker::Mode::Stopped) return GridState::Mode::Stopped;
  if (worker.mode() == GridWorker::Mode::Paused) return GridState::Mode::Paused;
  return hasBegun && worker.hasPrice() ? GridState::Mode::Working : GridState::Mode::Waiting;
}

std::string unknown(const char* field, const std::string& value, const char* what) {
  return std::string(field) + ": \"" + value + "\" is not " + what;
}

}  // namespace

GridDesk::GridDesk(Parts parts) : parts_(std::move(parts)), details_([this] { noteWaiting(); }) {
  parts_.state.onLetGo = [this](const std::shared_ptr<TradeEventSpi>& spi) { details_.letGo(spi); };
  const std::lock_guard lock(mutex_);
  addOptions();
}

GridDesk::~GridDesk() = default;

void GridDesk::addOptions() {
  for (std::size_t at = 0; at < parts_.options.grids.size(); ++at) {
    Grid grid;
    const std::string fault = read(parts_.options.grids[at], grid);
    if (!fault.empty())
      throw std::invalid_argument("grids[" + std::to_string(at) + "]." + gbkToUtf8(fault));
    grids_.emplace(++lastId_, std::move(grid));
  }
}

std::string GridDesk::read(const GridOptions& options, Grid& grid) const {
  grid.options = options;
  if (grid.options.name.empty()) grid.options.name = "grid" + std::to_string(lastId_ + 1);
  if (std::string fault = checkName(grid.options.name); !fault.empty()) return fault;
  const TradingAccountID* const account = parts_.state.accounts.named(options.account);
  if (account == nullptr) return unknown("account", options.account, "an account");
  grid.account = *account;
  if (options.code.empty()) return unknown("code", options.code, "a code");
  std::string fault;
  if (const auto terms = readGridTerms(options, fault)) {
    grid.terms = *terms;
    grid.worker.emplace(*terms);
  }
  return fault;
}

std::string GridDesk::checkName(const std::string& name) const {
  const bool isTaken = std::ranges::any_of(grids_, [&](const auto& each) {
    return !each.second.isRemoved && each.second.options.name == name;
  });
  return isTaken ? "name: another grid is named \"" + name + "\"" : std::string();
}

std::string GridDesk::lookUp(Grid& grid) const {
  ICodeID code;
  if (!parts_.findCode(grid.options.code, code))
    return unknown("code", grid.options.code, "a code that is known");
  const std::lock_guard lock(parts_.state.mutex);
  const ContractTerms* const contract = parts_.state.exchange().terms(code.id);
  if (contract == nullptr) return unknown("code", grid.options.code, "a code that is traded");
  std::string fault = faultAgainst(grid.terms, *contract);
  if (fault.empty()) grid.code = code;
  return fault;
}

void GridDesk::prepare() {
  const std::lock_guard lock(mutex_);
  for (auto& [id, grid] : grids_) {
    if (grid.code || grid.isRemoved) continue;
    const std::string fault = lookUp(grid);
    if (!fault.empty())
      throw std::invalid_argument("grids[" + std::to_string(id - 1) + "]." + gbkToUtf8(fault));
  }
}

void GridDesk::noteWaiting() {
  isInUse_ = true;
  if (!isWaiting_.exchange(true)) parts_.onRequest();
}

// IGridConditions

ResultStatus GridDesk::create(const GridOptions& options, int64& id) {
  {
    const std::lock_guard lock(mutex_);
    Grid grid;
    std::string fault = read(options, grid);
    if (fault.empty()) fault = lookUp(grid);
    if (!fault.empty()) return statusWith(kBadArgument, fault);
    if (isRunning_) newCodes_.push_back(grid.code->id);
    id = ++lastId_;
    grids_.emplace(id, std::move(grid));
  }
  noteWaiting();
  return {};
}

template <typename Act>
ResultStatus GridDesk::withGrid(int64 id, Act act) {
  {
    const std::lock_guard lock(mutex_);
    const auto at = grids_.find(id);
    if (at == grids_.end() || at->second.isRemoved)
      return statusWith(kNotThere, "grid " + std::to_string(id));
    const std::string fault = act(at->second);
    if (!fault.empty()) return statusWith(kBadArgument, fault);
  }
  noteWaiting();
  return {};
}

ResultStatus GridDesk::change(int64 id, const GridOptions& options) {
  return withGrid(id, [&](Grid& grid) -> std::string {
    if (grid.worker->mode() == GridWorker::Mode::Stopped)
      return "grid " + std::to_string(id) + " is stopped";
    if (!options.account.empty() && options.account != grid.options.account)
      return "account: \"" + options.account + "\" cannot take the place of " +
             grid.options.account;
    if (!options.code.empty() && options.code != grid.options.code)
      return "code: \"" + options.code + "\" cannot take the place of " + grid.options.code;
    std::string fault;
    const auto terms = readGridTerms(options, fault);
    if (!terms) return fault;
    if (grid.code) {
      const std::lock_guard lock(parts_.state.mutex);
      fault = faultAgainst(*terms, *parts_.state.exchange().terms(grid.code->id));
      if (!fault.empty()) return fault;
    }
    grid.terms = *terms;
    grid.options.lower = options.lower;
    grid.options.upper = options.upper;
    grid.options.step = options.step;
    grid.options.volume = options.volume;
    grid.worker->change(*terms);
    return {};
  });
}

ResultStatus GridDesk::pause(int64 id) {
  return withGrid(id, [](Grid& grid) -> std::string { return grid.worker->pause(), ""; });
}

ResultStatus GridDesk::resume(int64 id) {
  return withGrid(id, [](Grid& grid) -> std::string { return grid.worker->resume(), ""; });
}

ResultStatus GridDesk::stop(int64 id) {
  return withGrid(id, [](Grid& grid) -> std::string { return grid.worker->stop(), ""; });
}

ResultStatus GridDesk::remove(int64 id) {
  return withGrid(id, [](Grid& grid) -> std::string {
    grid.isRemoved = true;
    return grid.worker->stop(), "";
  });
}

namespace {

GridState stateOf(int64 id, const GridOptions& options, const GridWorker& worker, bool hasBegun) {
  GridState state;
  state.id = id;
  state.options = options;
  state.mode = modeOf(worker, hasBegun);
  state.held = text(worker.held());
  state.closedProfit = text(worker.profit());
  state.sales = worker.sales();
  state.openOrders = static_cast<int>(worker.orders().size());
  state.trouble = worker.trouble();
  return state;
}

}  // namespace

ResultStatus GridDesk::find(int64 id, GridState& state) const {
  const std::lock_guard lock(mutex_);
  const auto at = grids_.find(id);
  if (at == grids_.end() || at->second.isRemoved)
    return statusWith(kNotThere, "grid " + std::to_string(id));
  state = stateOf(id, at->second.options, *at->second.worker, at->second.hasBegun);
  return {};
}

std::vector<GridState> GridDesk::all() const {
  const std::lock_guard lock(mutex_);
  std::vector<GridState> states;
  for (const auto& [id, grid] : grids_)
    if (!grid.isRemoved) states.push_back(stateOf(id, grid.options, *grid.worker, grid.hasBegun));
  return states;
}

}  // namespace orvane::detail
