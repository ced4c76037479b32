// Random schedules of all that can happen between a strategy, its trade source and the trade
// service, against a model of what the source promises.

#include <algorithm>
#include <cstdio>

#include "EventStrategy/TradeSrc.h"
#include "tests/EventStrategy/LibraryTest.h"
#include "tests/EventStrategy/model/DeliveryKeeper.h"
#include "tests/EventStrategy/model/HeldSubscriptions.h"
#include "tests/EventStrategy/model/ScheduleTest.h"
#include "tests/EventStrategy/model/TradeDice.h"
#include "tests/EventStrategy/model/TradeLedger.h"
#include "tests/EventStrategy/model/TradeModel.h"

namespace orvane::support {
namespace {

using Lines = TradeModel::Lines;
using Account = TradeWorld::Account;

/// How often something happened that the test would be worth little without.
struct Seen {
  int snapshots = 0, reconnects = 0, failures = 0, codeChanges = 0, runs = 0;
  int withheld = 0;  ///< Records that were over before a quick account's first picture.
  int skipped = 0;   ///< Accounts read again with an order that was over.
  int missed = 0;    ///< Live records that an outage kept back.
  int dropped = 0;   ///< Live records while nobody listened.
};

/// One schedule: the world behind the service, the source, the model and the ledger.
class Schedule : private TradeDice {
 public:
  Schedule(FakePlatform& platform, std::uint64_t seed, Seen& seen)
      : TradeDice(seed), platform_(platform), seen_(seen) {
    for (int key = 1; key <= kAccounts; ++key) {
      Account& account = world_.accounts[key];
      account.id.accountKey = key;
      account.id.account = "a" + std::to_string(key);
    }
    platform_.trade().onAccountQuery = [this](const TradingAccountID& of) {
      const Account& account = world_.accounts.at(of.accountKey);
      platform_.trade().orders = account.orders;
      platform_.trade().fills = account.fills;
      platform_.trade().positions = account.positions;
      platform_.trade().sourcePositionRecords = account.parts;
      return account.connected ? ResultStatus() : ResultStatus(-6, "down");
    };
    source_->setNotify(&strategy_);
    newRun();
  }
  ~Schedule() {
    source_->setNotify(nullptr);
    platform_.forgetSpis();
    platform_.trade().onAccountQuery = {};
  }
  Schedule(const Schedule&) = delete;
  Schedule& operator=(const Schedule&) = delete;

  /// Takes one step; false after a failure, which is told with the whole story.
  bool step() {
    using Step = void (Schedule::*)();
    static constexpr std::pair<int, Step> kSteps[] = {
        {8, &Schedule::subscribe},   {2, &Schedule::unsubscribe},    {2, &Schedule::setQuick},
        {5, &Schedule::changeCodes}, {3, &Schedule::addSource},      {3, &Schedule::addIds},
        {8, &Schedule::placeOrder},  {6, &Schedule::strangerOrders}, {22, &Schedule::moveOrder},
        {12, &Schedule::fillOrder},  {4, &Schedule::movePosition},   {4, &Schedule::movePart},
        {2, &Schedule::moveCapital}, {8, &Schedule::disconnect},     {14, &Schedule::connect},
        {2, &Schedule::otherStatus}, {1, &Schedule::callLate},       {8, &Schedule::listenOrNot},
        {1, &Schedule::newRun}};
    static constexpr int kTotal = [] {
      int total = 0;
      for (const auto& [weight, step] : kSteps) total += weight;
      return total;
    }();
    int draw = below(kTotal);
    for (const auto& [weight, step] : kSteps) {
      if (draw < weight) {
        (this->*step)();
        break;
      }
      draw -= weight;
    }
    return agrees();
  }

 private:
  Account& anAccount() { return world_.accounts.at(1 + below(kAccounts)); }

  // What the strategy and its host do.

  void newRun() {
    for (auto& [key, account] : world_.accounts) source_->unsubscribeTrade(account.id);
    source_->setRelatedCodeId({});
    source_->resetCache();
    TradeModel::Infos infos;
    infos["own"] = anInfo();
    infos["own"].override |= oneIn(2) ? TradeEventTypeMask : 0;
    if (oneIn(2)) infos["alt"] = anInfo();
    const std::vector<ICodeID> codes = someCodes();
    source_->setCreateSourceTradeInfo(infos);
    source_->setRelatedCodeId(codes);
    model_.begin(infos, idsOf(codes));
    ledger_ = TradeLedger();
    ++seen_.runs;
    tell("new run");
  }

  void subscribe() {
    const Account& account = anAccount();
    tell("subscribe " + account.id.account);
    const int key = account.id.accountKey;
    const bool isNew = !model_.isSubscribed(key);
    const int64 failing = breakAQuery();
    source_->subscribeTrade(account.id);
    expected_ = model_.subscribe(account, failing);
    mendQueries();
    if (isNew && model_.hadSnapshot(key)) firstPicture(account);
  }

  void unsubscribe() {
    const Account& account = anAccount();
    tell("unsubscribe " + account.id.account);
    source_->unsubscribeTrade(account.id);
    model_.unsubscribe(account.id.accountKey);
  }

  void setQuick() {
    const bool quick = oneIn(2);
    tell(quick ? "quick" : "not quick");
    source_->setNotifyQuick(quick);
    model_.setQuick(quick);
  }

  void changeCodes() {
    const std::vector<ICodeID> codes = someCodes();
    tell("change to " + std::to_string(codes.size()) + " codes");
    source_->onRelatedCodeIdChange(codes);
    model_.setCodes(idsOf(codes));
    ++seen_.codeChanges;
  }

  void addSource() {
    const std::string& to = oneOf(kCreateSources);
    const std::string& name = oneOf(kAllSources);
    tell("add source " + name + " to " + to);
    source_->addSubscribeTradeByCreateSource(to, name);
    model_.addSource(to, name);
  }

  void addIds() {
    const std::string& to = oneOf(kCreateSources);
    const int64 ids = oneIn(8) ? 255 : int64{1} << below(9);
    tell("add ids " + std::to_string(ids) + " to " + to);
    source_->addSubscribeTradeByCreateId(to, ids);
    model_.addIds(to, ids);
  }

  void placeOrder() {
    Account& account = anAccount();
    OrderRequest request;
    request.account = account.id;
    request.code = aCode();
    request.source = aSource(oneOf(kCreateSources));
    tell("order in " + std::to_string(request.code.id) + " of " + account.id.account);
    std::list<Order> sent;
    source_->sendOrder(request, sent);
    model_.orderPlaced(account.id.accountKey, request.code.id, request.source.createSource);
    // What it subscribed stands before the order is at the service.
    held_.take(platform_.calls.entries("trade."));
    platform_.calls.clear();
    newOrder(account, request.code, request.source);
  }

  void listenOrNot() {
    const bool listens = model_.listens() ? !oneIn(3) : true;
    tell(listens ? "listen" : "do not listen");
    source_->setNotify(listens ? &strategy_ : nullptr);
    model_.setListens(listens);
  }

  // What happens at the service.

  void strangerOrders() { newOrder(anAccount(), aCode(), aSource(oneOf(kAllSources))); }

  void newOrder(Account& account, const ICodeID& code, const SourceId& source) {
    Order order;
    order.id = ++lastId_;
    order.account = account.id;
    order.code = code;
    order.source = source;
    order.orderRef = std::string(1 + order.id % 3, 'r') + std::to_string(order.id);
    change(order, below(3) == 0 ? below(9) : 0);
    account.orders.push_back(order);
    send(account, order);
  }

  void change(Order& order, int status) {
    order.status() = status;
    order.updateTime() = clock_ += below(2);
    order.values[10] = aMark();
    order.text6 = std::to_string(order.values[10]);
  }

  void moveOrder() {
    Account& account = anAccount();
    std::vector<Order*> open;
    for (Order& order : account.orders)
      if (!isLast(order)) open.push_back(&order);
    if (open.empty()) return;
    Order& order = *open[static_cast<std::size_t>(below(static_cast<int>(open.size())))];
    change(order, below(9));
    send(account, order);
  }

  void fillOrder() {
    Account& account = anAccount();
    if (account.orders.empty()) return;
    const Order& order =
        *std::next(account.orders.begin(), below(static_cast<int>(account.orders.size())));
    OrderFill fill;
    fill.account = account.id;
    fill.code = order.code;
    fill.source = order.source;
    fill.orderRef = order.orderRef;
    fill.direction() = below(2);
    fill.fillText = std::to_string(++lastFill_);
    fill.fillTime() = clock_ += below(2);
    fill.values[3] = aMark();
    fill.text3 = std::to_string(fill.values[3]);
    account.fills.push_back(fill);
    send(account, fill);
  }

  void movePosition() {
    Account& account = anAccount();
    Position position;
    position.account = account.id;
    position.code = aCode();
    position.block4[39] = aMark();
    std::erase_if(account.positions,
                  [&](const Position& each) { return each.code == position.code; });
    account.positions.push_back(position);
    if (account.connected && held_.all().contains(held("Position", account, position.code)))
      deliver(position,
              oneIn(2) ? &TradeEventSpi::onRtnPosition : &TradeEventSpi::onRtnPositionChange);
  }

  void movePart() {
    Account& account = anAccount();
    SourcePosition part;
    part.account = account.id;
    part.code = aCode();
    part.createSource = oneOf(kAllSources);
    part.block4[39] = aMark();
    std::erase_if(account.parts, [&](const SourcePosition& each) {
      return each.code == part.code && each.createSource == part.createSource;
    });
    account.parts.push_back(part);
    if (account.connected &&
        held_.all().contains(held("SourcePosition " + part.createSource, account, part.code)))
      deliver(part, &TradeEventSpi::onRtnSourcePosition);
  }

  void moveCapital() {
    const Account& account = anAccount();
    TradingAccount capital;
    capital.account = account.id;
    capital.block2[17] = aMark();
    if (account.connected &&
        held_.all().contains("Capital " + std::to_string(account.id.accountKey)))
      deliver(capital, &TradeEventSpi::onRtnCapital);
  }

  void disconnect() {
    Account& account = anAccount();
    tell("disconnect " + account.id.account);
    account.connected = false;
    tellStatus(17, {account.id});
  }

  void connect() {
    std::vector<TradingAccountID> ids;
    for (auto& [key, account] : world_.accounts) {
      if (!ids.empty() && !oneIn(4)) continue;
      if (oneIn(3)) continue;
      account.connected = true;
      ids.push_back(account.id);
    }
    if (oneIn(2)) std::reverse(ids.begin(), ids.end());
    tell("connect " + std::to_string(ids.size()));
    tellStatus(16, ids);
  }

  void otherStatus() { tellStatus(below(16), {anAccount().id}); }

  /// A call-back of something that is not subscribed, as a late one is.
  void callLate() {
    const Account& account = anAccount();
    if (account.orders.empty() || account.fills.empty()) return;
    tell("call late");
    deliver(account.orders.back(), &TradeEventSpi::onRtnOrder);
    deliver(account.fills.back(), &TradeEventSpi::onRtnTrade);
  }

  void tellStatus(int code, const std::vector<TradingAccountID>& ids) {
    AccountStatusInfo info;
    info.statusCode = code;
    info.accounts = ids;
    info.value = below(1000);
    const int64 failing = breakAQuery();
    std::set<int> fresh;
    for (const TradingAccountID& id : ids)
      if (model_.isSubscribed(id.accountKey))
        (model_.hadSnapshot(id.accountKey) ? reconnected_ : fresh).insert(id.accountKey);
    expected_ = model_.status(info, world_, failing);
    source_->onRspStatus({}, info);
    mendQueries();
    if (code != 16 || !model_.listens()) return;
    for (const int key : fresh)
      if (model_.hadSnapshot(key)) firstPicture(world_.accounts.at(key));
    if (failing == 0)
      for (const int key : reconnected_) readWhole_.insert(key);
    seen_.reconnects += static_cast<int>(readWhole_.size());
    for (const int key : readWhole_) countSkipped(world_.accounts.at(key));
  }

  // Sending.

  template <typename Record>
  void send(const Account& account, const Record& record) {
    constexpr bool isOrder = std::is_same_v<Record, Order>;
    tell(lineOf(record));
    const bool wanted =
        held_.wants(isOrder ? "Order" : "Fill", account.id, record.code, record.source);
    EXPECT_EQ(wanted, model_.wants(record)) << "live and replayed differ in what is wanted";
    if (!wanted) return;
    if (!account.connected) {
      ++seen_.missed;
      return;
    }
    for (int times = oneIn(12) ? 2 : 1; times > 0; --times) {
      if constexpr (isOrder)
        deliver(record, &TradeEventSpi::onRtnOrder);
      else
        deliver(record, &TradeEventSpi::onRtnTrade);
    }
  }

  template <typename Record, typename Base, typename Argument>
  void deliver(const Record& record, void (Base::*call)(const Argument&)) {
    if (!model_.listens()) ++seen_.dropped;
    (static_cast<TradeEventSpi&>(*source_).*call)(record);
    for (const std::string& line : model_.live(record)) expected_.push_back(line);
  }

  static std::string held(const std::string& kind, const Account& account, const ICodeID& code) {
    return kind + " " + std::to_string(account.id.accountKey) + " " + std::to_string(code.id);
  }

  int64 breakAQuery() {
    static const std::pair<const char*, int64> kQueries[] = {
        {"trade.getPositions", EventTypePosition},
        {"trade.sourcePositions", EventTypeStrategyPosition},
        {"trade.ordersOfAccount", EventTypeOrder},
        {"trade.fillsOfAccount", EventTypeFill}};
    if (!oneIn(6)) return 0;
    const auto& [query, type] = kQueries[below(4)];
    broken_ = query;
    platform_.calls.answer(broken_, {-6, "broken"});
    ++seen_.failures;
    tell("broken: " + broken_);
    return type;
  }
  void mendQueries() {
    if (!broken_.empty()) platform_.calls.answer(std::exchange(broken_, {}), {});
  }

  // Watching.

  void firstPicture(const Account& account) {
    ++seen_.snapshots;
    readWhole_.insert(account.id.accountKey);
    if (!model_.isQuick(account.id.accountKey)) return;
    for (const Order& order : account.orders)
      if (isLast(order) && model_.wants(order)) withhold(order);
    for (const OrderFill& fill : account.fills)
      if (model_.wants(fill)) withhold(fill);
  }
  template <typename Record>
  void withhold(const Record& record) {
    ledger_.withhold(record);
    ++seen_.withheld;
  }
  void countSkipped(const Account& account) {
    seen_.skipped += std::ranges::any_of(account.orders, [this](const Order& order) {
      return isLast(order) && model_.wants(order);
    });
  }

  void tell(const std::string& text) { story_ += text + "\n"; }

  bool agrees() {
    held_.take(platform_.calls.entries("trade."));
    platform_.calls.clear();
    const std::vector<Delivery> deliveries = strategy_.take();
    Lines lines;
    for (const Delivery& each : deliveries) lines.push_back(each.line);
    ledger_.note(deliveries, reconnected_);
    for (const int key : readWhole_) expectWhole(world_.accounts.at(key));
    EXPECT_EQ(lines, expected_);
    EXPECT_EQ(held_.all(), model_.standing());
    EXPECT_THAT(held_.twice(), IsEmpty());
    EXPECT_THAT(ledger_.faults(), IsEmpty());
    expected_.clear();
    reconnected_.clear();
    readWhole_.clear();
    if (::testing::Test::HasFailure()) ADD_FAILURE() << story_;
    return !::testing::Test::HasFailure();
  }
  void expectWhole(const Account& account) {
    for (const Order& order : account.orders)
      if (model_.wants(order)) ledger_.expect(order);
    for (const OrderFill& fill : account.fills)
      if (model_.wants(fill)) ledger_.expect(fill);
  }

  FakePlatform& platform_;
  Seen& seen_;
  TradeWorld world_;
  DeliveryKeeper strategy_;
  std::shared_ptr<TradeSrc> source_ = std::make_shared<TradeSrc>();
  TradeModel model_;
  HeldSubscriptions held_;
  TradeLedger ledger_;
  Lines expected_;             ///< What this step delivers.
  std::set<int> reconnected_;  ///< Accounts that this step reads again.
  std::set<int> readWhole_;    ///< Accounts that this step read without a failure.
  std::string broken_;         ///< The query that fails in this step.
  std::string story_;
  int64 lastId_ = 0, lastFill_ = 0, clock_ = 0;
};

class TradeSrcSchedule : public ScheduleTest {};

TEST_F(TradeSrcSchedule, shouldKeepEveryPromiseInRandomSchedules) {
  constexpr int kSteps = 120;
  constexpr int kFewest = 60;  // Fewer could miss something rare.
  Seen happened;
  const auto work = [&](std::uint64_t seed) {
    Schedule schedule(platform, seed, happened);
    for (int step = 0; step < kSteps && schedule.step(); ++step) {
    }
  };
  forEachSeed(600, work, kFewest);
  if (HasFailure()) return;
  std::printf(
      "%d runs, %d snapshots, %d reconnects, %d withheld, %d skipped, %d missed in outages, "
      "%d failed queries, %d dropped, %d changes of codes\n",
      happened.runs, happened.snapshots, happened.reconnects, happened.withheld, happened.skipped,
      happened.missed, happened.failures, happened.dropped, happened.codeChanges);
  for (const int count :
       {happened.snapshots, happened.reconnects, happened.withheld, happened.skipped,
        happened.missed, happened.failures, happened.dropped, happened.codeChanges})
    EXPECT_GT(count, schedules / 10);
}

}  // namespace
}  // namespace orvane::support
