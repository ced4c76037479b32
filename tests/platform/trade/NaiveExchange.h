#pragma once

#include <deque>
#include <list>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/fields/OrderView.h"
#include "platform/trade/Amounts.h"

namespace orvane::testing {

using detail::Int128;

/// What a second, naive exchange knows of a code. Prices, volumes, rates and money are integers of
/// the units that the true one reckons in.
struct NaiveTerms {
  int64 tick = 0, lot = 0, multiplier = 10'000, marginRate = 0, feeRate = 0, slippage = 0;
  Int128 feePerLot = 0;
  int openHour = 0, closeHour = 24;  ///< The session, UTC.
};

struct NaiveLimits {
  std::optional<int64> maxOrder, maxPosition;
  std::optional<Int128> maxLoss;
  int maxOrdersPerSecond = 0;
};

struct NaiveOptions {
  bool fillsAtTouch = false, standsInFront = false, settles = false, rejectsOutside = false;
  int64 volumeShare = 0;  ///< 0: a bar's volume does not matter.
  std::map<std::string, NaiveLimits> limits;
  std::vector<Int128> starts;  ///< By account.
};

struct NaiveBar {
  bool isDealtIn = true;  ///< All prices can be.
  int64 open = 0, high = 0, low = 0, close = 0;
  std::optional<int64> volume;  ///< Empty: not told.
  int64 begin = 0, end = 0;
  int day = 0;
};

struct NaiveLevel {
  int64 price = 0;
  std::optional<int64> size;  ///< Empty: not told.
};

struct NaiveTick {
  std::vector<NaiveLevel> bids, asks;  ///< Best first.
  std::optional<int64> last;
  int64 traded = 0;
  int64 upper = 0, lower = 0;
  int day = 0;
};

struct NaiveOrder {
  int64 id = 0;
  std::size_t account = 0, code = 0;
  std::string source;
  int type = 0, timeInForce = 0, direction = 0, offset = 0;  ///< As the record has them.
  std::optional<int64> volume, limit, stop;                  ///< Empty: no number that can be.

  // At work.
  int64 left = 0, claimPrice = 0, arrival = 0;
  int day = 0, fills = 0;
  bool isTriggered = false, hasRested = false, isOver = false;
  std::optional<int64> ahead;
  Int128 turnover = 0, fee = 0;
  double meanPrice = 0;

  bool isBuy() const { return direction == 0; }
  bool opens() const { return offset == 0; }
  bool isOfToday() const { return offset == 2; }
  bool isLong() const { return isBuy() == opens(); }
  bool isLimit() const { return type == 0; }
  bool takesAny() const { return type == 1 || isTriggered; }
  bool isImmediate() const { return timeInForce == 1 || timeInForce == 2; }
};

/// What is told of an order: a status, or a fill.
struct Told {
  static constexpr int kFill = 100;
  int64 orderId = 0;
  int what = 0;  ///< `order::Status`, or `kFill`.
  int64 time = 0;
  int day = 0;
  double price = 0;   ///< Of a fill; of an order the mean.
  double volume = 0;  ///< Of a fill; of an order what is filled.
  double turnover = 0, fee = 0;
  double money = 0;  ///< Of a fill the profit, of an order what it holds back.
  bool hadRested = false;
  std::string reason;  ///< Of a model: how it begins.
};

/// A second exchange that adds everything up anew at each step and looks for no speed.
class NaiveExchange {
 public:
  NaiveExchange(NaiveOptions options, std::vector<NaiveTerms> terms);

  void place(NaiveOrder order, int64 now);
  void cancel(int64 orderId, int64 now);
  void bar(std::size_t code, const NaiveBar& bar, int64 now);
  void tick(std::size_t code, NaiveTick tick, int64 now);

  std::vector<Told> take() { return std::exchange(told_, {}); }

  Int128 closed(std::size_t account) const { return accounts_[account].closed; }
  Int128 fees(std::size_t account) const { return accounts_[account].fees; }
  Int128 margin(std::size_t account) const;
  Int128 frozen(std::size_t account) const;
  Int128 floating(std::size_t account) const;
  Int128 resultOf(std::size_t account, const std::string& source) const;
  /// Held on one side by one source.
  int64 held(std::size_t account, const std::string& source, std::size_t code, bool isLong,
             bool ofToday) const;
  const std::list<NaiveOrder>& atWork() const { return orders_; }
  std::optional<int64> mark(std::size_t code) const { return codes_[code].mark; }

 private:
  struct Lot {
    int64 price, volume;
    bool isToday;
  };
  using Side = std::deque<Lot>;
  using SideKey = std::tuple<std::string, std::size_t, bool>;  ///< Source, code, whether long.
  struct Account {
    Int128 start = 0, closed = 0, fees = 0, traded = 0;
    std::map<SideKey, Side> sides;
    std::map<std::size_t, int64> marks;    ///< Of codes that were dealt in.
    std::map<std::string, Int128> booked;  ///< Closed profit minus fees, by source.
  };
  struct Code {
    std::optional<int64> mark;
    int day = 0;
    int64 upper = 0, lower = 0;
  };

  // NaiveAccounts.cpp
  std::optional<Int128> turnover(std::size_t code, int64 price, int64 volume) const;
  Int128 marginFor(std::size_t code, int64 price, int64 volume) const;
  Int128 feeFor(std::size_t code, int64 price, int64 volume) const;
  Int128 available(std::size_t account) const;
  Int128 gain(std::size_t code, const Lot& lot, int64 price, bool isLong) const;
  std::optional<Int128> value(const Account& account, std::size_t markedCode, int64 price) const;
  Int128 frozenBy(const NaiveOrder& order) const;
  int64 wanted(const NaiveOrder& like, bool ofToday) const;
  std::string whyNot(const NaiveOrder& order, int64 now);
  std::string badNumbers(const NaiveOrder& order) const;
  std::string riskBroken(const NaiveOrder& order, int64 now);
  std::string notEnough(const NaiveOrder& order) const;
  bool fillFits(const NaiveOrder& order, int64 price, int64 volume) const;
  Int128 takeOldest(const NaiveOrder& order, int64 volume);
  void markAccounts(std::size_t code, int64 price);
  void settle(Account& account, std::size_t code);
  void newDay(std::size_t code, int day, int64 time);

  // NaiveMatching.cpp
  struct Match {
    int64 price, time;
  };
  int64 slipped(const NaiveOrder& order, int64 price) const;
  std::optional<Match> atPrice(const NaiveOrder& order, int64 price, int64 time) const;
  std::optional<Match> matchBar(const NaiveOrder& order, const NaiveBar& bar) const;
  bool isTriggeredBy(const NaiveOrder& order, const NaiveTick& tick) const;
  void matchTick(NaiveOrder& order, NaiveTick& tick, int64 now);
  bool takeLevels(NaiveOrder& order, NaiveTick& tick, int64 now);
  void standInLine(NaiveOrder& order, const NaiveTick& tick) const;
  int64 wholeLots(const NaiveOrder& order, int64 volume) const;
  bool offers(const NaiveOrder& order, const NaiveTick& tick) const;
  void fillWhole(NaiveOrder& order, NaiveTick& tick, int64 now);
  bool fill(NaiveOrder& order, int64 price, int64 volume, bool hadRested, int64 time);
  void end(NaiveOrder& order, order::Status status, int64 time, const std::string& reason = {});
  void tell(const NaiveOrder& order, order::Status status, int64 time,
            const std::string& reason = {});
  void sweep();

  NaiveOptions options_;
  std::vector<NaiveTerms> terms_;
  std::vector<Account> accounts_;
  std::vector<Code> codes_;
  std::list<NaiveOrder> orders_;
  std::map<std::string, std::vector<int64>> orderTimes_;
  std::vector<Told> told_;
};

}  // namespace orvane::testing
