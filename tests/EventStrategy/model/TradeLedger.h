#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "tests/EventStrategy/model/DeliveryKeeper.h"

namespace orvane::support {

/// Two promises, watched from the strategy's side and with no word of how they are kept: what is
/// over comes no second time after a reconnect, and nothing wanted is missing once an account was
/// read whole.
class TradeLedger {
 public:
  /// What was delivered in one step; `reconnected` are the accounts that were read again in it.
  void note(const std::vector<Delivery>& deliveries, const std::set<int>& reconnected) {
    for (const Delivery& each : deliveries) {
      if (each.orderId != 0) {
        lastLines_[each.orderId] = each.line;
        if (each.isLastOrder) noteOnce(each, std::to_string(each.orderId), reconnected);
      }
      if (!each.fill.empty()) noteOnce(each, each.fill, reconnected);
    }
  }

  /// What a quick account was not given with its first picture, since it was over before.
  void withhold(const Order& order) { settled_.insert(std::to_string(order.id)); }
  void withhold(const OrderFill& fill) { settled_.insert(nameOf(fill)); }

  /// After an account was read whole: each order and fill that was wanted.
  void expect(const Order& order) {
    if (isLast(order) ? settled_.contains(std::to_string(order.id))
                      : lastLines_[order.id] == lineOf(order))
      return;
    faults_.push_back("lost: " + lineOf(order));
  }
  void expect(const OrderFill& fill) {
    if (!settled_.contains(nameOf(fill))) faults_.push_back("lost: " + lineOf(fill));
  }

  const std::vector<std::string>& faults() const { return faults_; }

 private:
  void noteOnce(const Delivery& delivery, const std::string& name,
                const std::set<int>& reconnected) {
    if (!settled_.insert(name).second && reconnected.contains(delivery.account))
      faults_.push_back("again: " + delivery.line);
  }

  std::map<int64, std::string> lastLines_;
  std::set<std::string> settled_;  ///< What is over and was delivered or withheld.
  std::vector<std::string> faults_;
};

}  // namespace orvane::support
