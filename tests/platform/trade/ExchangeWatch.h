#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/trade/PaperExchange.h"
#include "tests/platform/trade/NaiveExchange.h"

namespace orvane::testing {

/// Looks at what an exchange tells, with no idea of how it matches, and finds what can never be:
/// fills from the future, beyond a limit, at a price or of a volume that was not shown, statuses
/// out of turn, volumes that do not add up.
class ExchangeWatch {
 public:
  ExchangeWatch(std::vector<NaiveTerms> terms, int64 volumeShare)
      : terms_(std::move(terms)), volumeShare_(volumeShare) {}

  void arrives(const NaiveOrder& order, int64 now);
  /// What is about to be shown to the exchange, of a code.
  void shows(std::size_t code, const NaiveBar& bar);
  void shows(std::size_t code, const NaiveTick& tick);
  void saw(const std::vector<detail::TradeEvent>& events, int64 now);
  /// The event was dealt with.
  void isOver();
  /// Everything was cancelled.
  void ends();

  /// What was found; empty: nothing.
  const std::string& fault() const { return fault_; }
  int count(order::Status status) const;
  int64 fills() const { return fills_; }

 private:
  struct Seen {
    NaiveOrder order;
    int64 arrival = 0;
    int status = 0;
    double announced = 0;  ///< Filled, as the order's record says.
    double filled = 0;
  };
  void expect(bool is, const char* what, int64 orderId);
  void sawOrder(const Order& order, int64 now);
  void sawFill(const OrderFill& fill, int64 time, int64 now);
  bool isShown(const Seen& seen, int64 price) const;
  void addUp(const Seen& seen, int64 price, int64 volume, bool hadRested);

  const std::vector<NaiveTerms> terms_;
  const int64 volumeShare_;
  std::map<int64, Seen> orders_;
  std::size_t code_ = 0;
  bool isMarket_ = false, isBar_ = false;
  NaiveBar bar_;
  NaiveTick tick_;
  Int128 dealt_ = 0;
  std::map<std::pair<bool, int64>, Int128> taken_;  ///< From levels, by side and price.
  int64 fills_ = 0;
  std::string fault_;
};

}  // namespace orvane::testing
