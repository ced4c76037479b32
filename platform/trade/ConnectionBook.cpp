#include "platform/trade/ConnectionBook.h"

#include <algorithm>
#include <stdexcept>

#include "shared/TextCodec.h"

namespace orvane::detail {

ConnectionBook::ConnectionBook(const AccountBook& accounts,
                               const std::vector<ConnectionChange>& script)
    : isUp_(accounts.all().size(), true) {
  script_.reserve(script.size());
  for (const ConnectionChange& line : script) {
    const TradingAccountID* account = accounts.named(line.account);
    if (account == nullptr)
      throw std::invalid_argument("connection script: account: \"" + gbkToUtf8(line.account) +
                                  "\" is not an account of this run");
    script_.push_back({line.time, account->accountKey, line.isUp});
  }
  std::stable_sort(script_.begin(), script_.end(),
                   [](const Change& a, const Change& b) { return a.time < b.time; });
}

bool ConnectionBook::isUp(std::int32_t account) const {
  return isUp_[static_cast<std::size_t>(account) - 1];
}

int64 ConnectionBook::nextTime() const {
  return next_ < script_.size() ? script_[next_].time : kUnsetTime;
}

const ConnectionBook::Change& ConnectionBook::makeNext() {
  const Change& change = script_[next_++];
  isUp_[static_cast<std::size_t>(change.account) - 1] = change.isUp;
  return change;
}

void ConnectionBook::reset() {
  next_ = 0;
  isUp_.assign(isUp_.size(), true);
}

}  // namespace orvane::detail
