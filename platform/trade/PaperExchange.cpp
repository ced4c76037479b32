#include "platform/trade/PaperExchange.h"

#include <algorithm>
#include <list>
#include <stdexcept>
#include <unordered_map>

#include "platform/core/MadeInPlace.h"
#include "platform/fields/FillView.h"
#include "platform/fields/KLineView.h"
#include "platform/fields/QuoteView.h"
#include "platform/trade/BarMatcher.h"
#include "platform/trade/ContractBook.h"
#include "platform/trade/FillRecord.h"
#include "platform/trade/PerAccount.h"
#include "platform/trade/RiskGuard.h"
#include "platform/trade/TickMarket.h"
#include "shared/StatusCodes.h"

namespace orvane::detail {
namespace {

constexpr char kDefaultStart[] = "1000000";
using status::kClosedSession;
using status::kNotThere;
constexpr Rate kWhole{10'000'000'000};

}  // namespace

/// Everything behind the exchange's border; its one user is the class around it.
class PaperExchange::Impl {
 public:
  explicit Impl(TradeOptions chosen)
      : options(std::move(chosen)),
        contracts(options),
        guard(options.limits),
        barMatcher(options.limitFill) {
    if (options.barVolumeShare.empty()) return;
    volumeShare = rateOf(options.barVolumeShare);
    if (!volumeShare || !volumeShare->isPositive() || *volumeShare > kWhole)
      throw std::invalid_argument("barVolumeShare: \"" + options.barVolumeShare +
                                  "\" is not a decimal number above 0 and up to 1");
  }

  struct Account {
    TradingAccountID id;
    Money start;
    Ledger ledger;
  };

  void place(std::unique_ptr<Order> record, int64 now);
  void cancel(int64 orderId, const SourceId& by, int64 now);
  void onBar(Contract& contract, const ExactBar& bar);
  void onTick(Contract& contract, const IDepthMarketData& tick, int64 now);

  std::optional<Refusal> check(WorkingOrder& order, Contract* contract, int64 now);
  std::optional<Refusal> checkRisk(const WorkingOrder& order, const Contract& contract, int64 now);
  void beginDay(Contract& contract, int day, int64 time);
  void meet(Contract& contract, WorkingOrder& order) const;
  void matchBar(Contract& contract, const ExactBar& bar, WorkingOrder& order,
                std::optional<Volume>& capacity);
  void endImmediate(WorkingOrder& order, int64 time);
  void markAll(Contract& contract, Price price);
  bool fill(WorkingOrder& order, Price price, Volume volume, bool hadRested, int64 time, int day);
  void matchTick(Contract& contract, TickMarket& market, WorkingOrder& order, int64 now);
  void giveUp(WorkingOrder& order, const Refusal& why, int64 time);
  void finish(WorkingOrder& order, order::Status status, int64 time);
  void tell(const WorkingOrder& order, int64 time);
  void tellPosition(std::int32_t accountKey, int64 codeId, const std::string& source, int64 time);
  void tellCapital(std::int32_t accountKey, int64 time);
  void sweep(Contract& contract);
  template <typename What>
  void add(int64 time, What&& what) {
    events.emplace_back(time, std::forward<What>(what));
  }

  /// Where an order at work is.
  struct Place {
    Contract* contract = nullptr;
    std::list<WorkingOrder>::iterator order;
  };

  const TradeOptions options;
  std::map<std::int32_t, Account> accounts;
  ContractBook contracts;
  RiskGuard guard;
  BarMatcher barMatcher;
  std::optional<Rate> volumeShare;
  std::unordered_map<int64, Place> working;  ///< By order id.
  std::vector<TradeEvent> events;
};

// Orders that come and go.

void PaperExchange::Impl::place(std::unique_ptr<Order> record, int64 now) {
  std::list<WorkingOrder> entry;
  WorkingOrder& order = entry.emplace_back(std::move(record));
  order.arrival = now;
  order.record.values[order::ArrivalTime] = now;
  Contract* const contract = contracts.find(order.record.code.id);
  if (const auto refusal = check(order, contract, now)) {
    order.record.text5 = refusal->text;
    order.record.ints[order::ReasonAt] = refusal->code;
    order.record.status() = static_cast<std::int32_t>(order::Status::Rejected);
    tell(order, now);
    return;
  }
  order.record.status() = static_cast<std::int32_t>(order::Status::Working);
  contract->ledgers.insert(order.ledger);
  const int64 id = order.record.id;
  working[id] = {contract, entry.begin()};
  contract->orders.splice(contract->orders.end(), entry);
  tell(order, now);
  if (!order.ledger->frozenOf(id).isZero()) tellCapital(order.record.account.accountKey, now);
}

std::optional<Refusal> PaperExchange::Impl::check(WorkingOrder& order, Contract* contract,
                                                  int64 now) {
  if (contract == nullptr) return Refusal{kNotThere, "unknown code: " + order.record.code.code};
  order.terms = &contract->terms;
  if (auto refusal = readOrder(order)) return refusal;
  if (auto refusal = checkNumbers(order, contract->limits)) return refusal;
  if (options.rejectsOutsideSessions && !contract->sessions->contains(now))
    return Refusal{kClosedSession, "the session of " + contract->terms.code.code + " is closed"};
  const auto account = accounts.find(order.record.account.accountKey);
  if (account == accounts.end())
    return Refusal{kNotThere, "unknown account: " + order.record.account.account};
  order.ledger = &account->second.ledger;
  if (auto refusal = checkRisk(order, *contract, now)) return refusal;

  Claim claim;
  claim.orderId = order.record.id;
  claim.source = order.record.source;
  claim.terms = order.terms;
  claim.direction = order.direction;
  claim.offset = order.offset;
  claim.volume = order.volume;
  claim.price = order.type == order::Type::Limit  ? order.limit
                : order.type == order::Type::Stop ? order.stop
                                                  : contract->mark.value_or(Price{});
  return order.ledger->freeze(claim);
}

std::optional<Refusal> PaperExchange::Impl::checkRisk(const WorkingOrder& order,
                                                      const Contract& contract, int64 now) {
  const std::string& source = order.record.source.createSource;
  if (!guard.hasLimits(source)) return std::nullopt;
  const bool opens = order.offset == order::Offset::Open;
  RiskGuard::Standing standing;
  for (const auto& [key, account] : accounts) {
    standing.held = cappedSum(
        standing.held, account.ledger.volumeOf(source, contract.terms.code.id, order.isBuy()));
    standing.result = cappedSum(standing.result, account.ledger.resultOf(source));
  }
  for (const WorkingOrder& other : contract.orders)
    if (!other.isOver && other.record.source.createSource == source &&
        other.offset == order::Offset::Open && other.direction == order.direction)
      standing.opening = cappedSum(standing.opening, other.left());
  return guard.check(source, opens, order.volume, standing, now);
}

void PaperExchange::Impl::cancel(int64 orderId, const SourceId& by, int64 now) {
  const auto at = working.find(orderId);
  if (at == working.end()) return;
  const auto [contract, order] = at->second;
  order->record.cancelSource = by;
  finish(*order, order::Status::Cancelled, now);
  contract->orders.erase(order);
}

// Market data.

void PaperExchange::Impl::beginDay(Contract& contract, int day, int64 time) {
  if (day <= contract.day) return;
  const bool isFirst = contract.day == 0;
  contract.day = day;
  if (isFirst) return;
  for (WorkingOrder& order : contract.orders) {
    const bool isDayOver =
        order.timeInForce == order::TimeInForce::Day && order.day != 0 && order.day < day;
    if (isDayOver || order.offset == order::Offset::CloseToday)
      finish(order, order::Status::Expired, time);
  }
  sweep(contract);
  for (Ledger* ledger : contract.ledgers) {
    if (!ledger->beginDay(contract.terms.code.id, options.settlesDaily)) continue;
    const std::int32_t key = ledger->account().accountKey;
    for (const std::string& source : ledger->sources(contract.terms.code.id))
      tellPosition(key, contract.terms.code.id, source, time);
    if (options.settlesDaily) tellCapital(key, time);
  }
}

void PaperExchange::Impl::meet(Contract& contract, WorkingOrder& order) const {
  if (order.day != 0) return;
  order.day = contract.day;
  order.record.values[order::TradingDay] = contract.day;
}

void PaperExchange::Impl::onBar(Contract& contract, const ExactBar& bar) {
  std::optional<Volume> capacity;
  if (volumeShare && bar.volume) {
    const Int128 share = Int128{bar.volume->units} * volumeShare->units / kWhole.units;
    capacity = Volume{static_cast<int64>(share)};
  }
  // What is sure at the open comes first, then what the range allows: stops before limits.
  struct Candidate {
    int64 time;
    int rank;
    WorkingOrder* order;
  };
  std::vector<Candidate> candidates;
  for (WorkingOrder& order : contract.orders) {
    if (!BarMatcher::meets(order, bar)) continue;
    meet(contract, order);
    const auto match = barMatcher.match(order, bar, contract.slippage);
    const int rank = order.type == order::Type::Limit ? 1 : 0;
    candidates.push_back({match ? match->time : bar.end, rank, &order});
  }
  PerAccount capacities(capacity, options.accountsShareMarket);
  if (candidates.size() > 1)
    std::ranges::stable_sort(candidates, [](const Candidate& a, const Candidate& b) {
      return a.time != b.time ? a.time < b.time : a.rank < b.rank;
    });
  for (const Candidate& candidate : candidates) {
    matchBar(contract, bar, *candidate.order, capacities.of(candidate.order->ledger));
    endImmediate(*candidate.order, bar.end);
  }
  sweep(contract);
}

void PaperExchange::Impl::matchBar(Contract& contract, const ExactBar& bar, WorkingOrder& order,
                                   std::optional<Volume>& capacity) {
  const auto match = barMatcher.match(order, bar, contract.slippage);
  if (!match) return;
  if (order.type == order::Type::Stop) order.isTriggered = true;
  Volume volume = order.left();
  if (capacity) {
    const int64 lot = std::max<int64>(1, order.terms->lot.units);
    const Volume whole{capacity->units / lot * lot};
    if (order.timeInForce == order::TimeInForce::FillOrKill && whole < volume) return;
    volume = std::min(volume, whole);
  }
  if (!volume.isPositive()) return;
  const bool hadRested =
      order.type == order::Type::Limit && match->time != bar.begin && order.arrival <= bar.begin;
  if (fill(order, match->price, volume, hadRested, match->time, contract.day) && capacity)
    *capacity -= volume;
}

void PaperExchange::Impl::onTick(Contract& contract, const IDepthMarketData& tick, int64 now) {
  const QuoteView view(tick);
  beginDay(contract, view.tradingDay(), now);
  contract.limits.upper = priceOf(view.upperLimit()).value_or(Price{});
  contract.limits.lower = priceOf(view.lowerLimit()).value_or(Price{});
  PerAccount markets(TickMarket(tick, options.queue, !contract.orders.empty()),
                     options.accountsShareMarket);
  for (WorkingOrder& order : contract.orders) {
    meet(contract, order);
    TickMarket& market = markets.of(order.ledger);
    if (order.type == order::Type::Stop && !order.isTriggered)
      order.isTriggered = market.triggers(order);
    if (order.type == order::Type::Stop && !order.isTriggered) {
      endImmediate(order, now);
      continue;
    }
    matchTick(contract, market, order, now);
    endImmediate(order, now);
  }
  sweep(contract);
  if (const auto price = markets.whole().mark()) markAll(contract, *price);
}

void PaperExchange::Impl::matchTick(Contract& contract, TickMarket& market, WorkingOrder& order,
                                    int64 now) {
  const bool wholeOnly = order.timeInForce == order::TimeInForce::FillOrKill;
  const std::vector<TickMatch> matches = market.match(order, contract.slippage, wholeOnly);
  if (wholeOnly) {
    std::vector<FillPiece> pieces;
    pieces.reserve(matches.size());
    for (const TickMatch& match : matches) pieces.push_back({match.price, match.volume});
    if (const auto refusal = order.ledger->checkFills(order.record.id, pieces))
      giveUp(order, *refusal, now);
  }
  for (const TickMatch& match : matches)
    if (order.isOver || !fill(order, match.price, match.volume, match.hadRested, now, contract.day))
      market.giveBack(order, match);
}

void PaperExchange::Impl::endImmediate(WorkingOrder& order, int64 time) {
  const bool isImmediate = order.timeInForce == order::TimeInForce::ImmediateOrCancel ||
                           order.timeInForce == order::TimeInForce::FillOrKill;
  if (isImmediate && !order.isOver) finish(order, order::Status::Expired, time);
}

void PaperExchange::Impl::markAll(Contract& contract, Price price) {
  contract.mark = price;
  for (Ledger* ledger : contract.ledgers) ledger->mark(contract.terms.code.id, price);
}

// What happens to an order at work.

bool PaperExchange::Impl::fill(WorkingOrder& order, Price price, Volume volume, bool hadRested,
                               int64 time, int day) {
  const FillPiece piece{price, volume};
  if (const auto refusal = order.ledger->checkFills(order.record.id, {&piece, 1})) {
    giveUp(order, *refusal, time);
    return false;
  }
  const Booking booking = order.ledger->fill(order.record.id, price, volume);
  order.filled += volume;
  order.turnover += booking.turnover;
  order.fee += booking.fee;
  ++order.fills;
  Order& record = order.record;
  record.values[order::FilledVolume] = wordOf(toDouble(order.filled));
  record.values[order::Turnover] = wordOf(toDouble(order.turnover));
  record.values[order::Fee] = wordOf(toDouble(order.fee));
  const double units = toDouble(order.filled) * toDouble(order.terms->multiplier);
  record.value5 = order.fills == 1 ? toDouble(price) : toDouble(order.turnover) / units;
  const bool isWhole = !order.left().isPositive();
  if (isWhole) {
    order.isOver = true;
    working.erase(record.id);
  }
  record.status() =
      static_cast<std::int32_t>(isWhole ? order::Status::Filled : order::Status::PartlyFilled);
  tell(order, time);

  auto told = std::make_unique<OrderFill>(
      MadeInPlace([&] { return fillRecord(order, booking, price, volume); }));
  told->ints[fill::LiquidityAt] = hadRested ? 1 : 0;
  told->fillTime() = time;
  told->numbers[fill::TradingDay] = day;
  add(time, std::move(told));
  tellPosition(record.account.accountKey, record.code.id, record.source.createSource, time);
  tellCapital(record.account.accountKey, time);
  return true;
}

void PaperExchange::Impl::giveUp(WorkingOrder& order, const Refusal& why, int64 time) {
  order.record.text5 = why.text;
  order.record.ints[order::ReasonAt] = why.code;
  finish(order, order.fills == 0 ? order::Status::Rejected : order::Status::Cancelled, time);
}

void PaperExchange::Impl::finish(WorkingOrder& order, order::Status status, int64 time) {
  const bool heldMoney = !order.ledger->frozenOf(order.record.id).isZero();
  order.ledger->release(order.record.id);
  order.isOver = true;
  working.erase(order.record.id);
  order.record.status() = static_cast<std::int32_t>(status);
  tell(order, time);
  if (heldMoney) tellCapital(order.record.account.accountKey, time);
}

void PaperExchange::Impl::tell(const WorkingOrder& order, int64 time) {
  auto told = std::make_unique<Order>(order.record);
  told->updateTime() = time;
  told->values[order::FrozenMoney] =
      order.ledger == nullptr ? 0 : wordOf(toDouble(order.ledger->frozenOf(told->id)));
  add(time, std::move(told));
}

void PaperExchange::Impl::tellPosition(std::int32_t accountKey, int64 codeId,
                                       const std::string& source, int64 time) {
  add(time, TradeEvent::PositionChanged{accountKey, codeId, source});
}

void PaperExchange::Impl::tellCapital(std::int32_t accountKey, int64 time) {
  add(time, TradeEvent::CapitalChanged{accountKey});
}

void PaperExchange::Impl::sweep(Contract& contract) {
  std::erase_if(contract.orders, [](const WorkingOrder& order) { return order.isOver; });
}

// The public side.

PaperExchange::PaperExchange(TradeOptions options)
    : impl_(std::make_unique<Impl>(std::move(options))) {}

PaperExchange::~PaperExchange() = default;

void PaperExchange::addAccount(const TradingAccountID& account, const std::string& startBalance) {
  const auto start = moneyOf(std::string_view(startBalance.empty() ? kDefaultStart : startBalance));
  if (!start || *start > Ledger::kMostStart || *start < -Ledger::kMostStart)
    throw std::invalid_argument("startBalance: \"" + startBalance +
                                "\" is not a decimal number of at most " +
                                text(Ledger::kMostStart));
  impl_->accounts.try_emplace(account.accountKey,
                              Impl::Account{account, *start, Ledger(account, *start)});
}

void PaperExchange::addContract(const ICodeID& code, const Instrument& instrument) {
  impl_->contracts.add(code, instrument);
}

void PaperExchange::place(std::unique_ptr<Order> order, int64 now) {
  impl_->place(std::move(order), now);
}

void PaperExchange::cancel(int64 orderId, const SourceId& by, int64 now) {
  impl_->cancel(orderId, by, now);
}

void PaperExchange::onBar(int64 codeId, const IKLine& bar, int64 previousEnd, int64 now) {
  Contract* const contract = impl_->contracts.find(codeId);
  if (contract == nullptr) return;
  const int day = KLineView(bar).tradingDay();
  const auto close = closeOf(bar);
  if (!close) return impl_->beginDay(*contract, day, now);
  impl_->beginDay(*contract, day, std::min(dealingBegin(bar, previousEnd), now));
  // Most bars meet no order; then nothing but their close is needed as an exact number.
  if (!contract->orders.empty())
    if (const auto exact = exactBarOf(bar, previousEnd)) impl_->onBar(*contract, *exact);
  impl_->markAll(*contract, *close);
}

Contract* PaperExchange::contract(int64 codeId) { return impl_->contracts.find(codeId); }

void PaperExchange::onQuietBar(Contract& contract, const IKLine& bar) {
  if (const auto close = closeOf(bar)) impl_->markAll(contract, *close);
}

void PaperExchange::onTick(int64 codeId, const IDepthMarketData& tick, int64 now) {
  if (Contract* const contract = impl_->contracts.find(codeId)) impl_->onTick(*contract, tick, now);
}

bool PaperExchange::isBusy(int64 codeId) const {
  const Contract* const contract = std::as_const(impl_->contracts).find(codeId);
  return contract != nullptr && !contract->orders.empty();
}

std::optional<LastPrice> PaperExchange::lastPrice(int64 codeId) const {
  const Contract* const contract = std::as_const(impl_->contracts).find(codeId);
  if (contract == nullptr || !contract->mark) return std::nullopt;
  return LastPrice{*contract->mark, contract->day};
}

const ContractTerms* PaperExchange::terms(int64 codeId) const {
  const Contract* const contract = std::as_const(impl_->contracts).find(codeId);
  return contract == nullptr ? nullptr : &contract->terms;
}

std::vector<TradeEvent> PaperExchange::takeEvents() {
  std::vector<TradeEvent> taken;
  takeEvents(taken);
  return taken;
}

void PaperExchange::takeEvents(std::vector<TradeEvent>& taken) {
  taken.clear();
  taken.swap(impl_->events);
}

bool PaperExchange::hasEvents() const { return !impl_->events.empty(); }

Ledger* PaperExchange::ledger(std::int32_t accountKey) {
  const auto at = impl_->accounts.find(accountKey);
  return at == impl_->accounts.end() ? nullptr : &at->second.ledger;
}

const Ledger* PaperExchange::ledger(std::int32_t accountKey) const {
  const auto at = impl_->accounts.find(accountKey);
  return at == impl_->accounts.end() ? nullptr : &at->second.ledger;
}

void PaperExchange::reset() {
  for (auto& [key, account] : impl_->accounts) account.ledger = Ledger(account.id, account.start);
  impl_->contracts.reset();
  impl_->guard.reset();
  impl_->working.clear();
  impl_->events.clear();
}

}  // namespace orvane::detail
