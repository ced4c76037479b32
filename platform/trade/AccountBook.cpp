#include "platform/trade/AccountBook.h"

#include <algorithm>
#include <stdexcept>

#include "shared/CodeTables.h"
#include "shared/TextCodec.h"

namespace orvane::detail {
namespace {

constexpr std::int32_t kCurrencyNotKnown = 11;

std::string quoted(const std::string& gbk) { return "\"" + gbkToUtf8(gbk) + "\""; }

std::int32_t currencyOf(const AccountSpec& spec) {
  if (spec.currency.empty()) return kCurrencyNotKnown;
  for (std::size_t i = 0; i < currencyNames.size(); ++i)
    if (spec.currency == currencyNames[i]) return static_cast<std::int32_t>(i);
  throw std::invalid_argument("account " + quoted(spec.name) + ": currency: " +
                              quoted(spec.currency) + " is not a currency that is known");
}

bool isCounterType(int code) {
  return std::any_of(CounterTypeCodes.begin(), CounterTypeCodes.end(),
                     [&](const auto& entry) { return entry.second == code; });
}

}  // namespace

AccountBook::AccountBook(const std::vector<AccountSpec>& specs) {
  accounts_.reserve(specs.size());
  for (const AccountSpec& spec : specs) {
    if (spec.name.empty()) throw std::invalid_argument("account: name: it is empty");
    if (named(spec.name) != nullptr)
      throw std::invalid_argument("account: name: " + quoted(spec.name) + " is there twice");
    if (!isCounterType(spec.counterType))
      throw std::invalid_argument("account " + quoted(spec.name) + ": counterType: " +
                                  std::to_string(spec.counterType) + " is not a counter type");
    TradingAccountID account;
    account.accountKey = static_cast<std::int32_t>(accounts_.size()) + 1;
    account.counterType = spec.counterType;
    account.text1 = spec.name;
    account.account = spec.name;
    account.currency = currencyOf(spec);
    accounts_.push_back(std::move(account));
  }
}

const TradingAccountID* AccountBook::find(const TradingAccountID& account) const {
  return find(account.accountKey);
}

const TradingAccountID* AccountBook::find(std::int32_t key) const {
  if (key < 1 || static_cast<std::size_t>(key) > accounts_.size()) return nullptr;
  return &accounts_[static_cast<std::size_t>(key) - 1];
}

const TradingAccountID* AccountBook::named(const std::string& account) const {
  for (const TradingAccountID& each : accounts_)
    if (each.account == account) return &each;
  return nullptr;
}

bool AccountBook::has(const AccountID& id) const {
  return std::any_of(accounts_.begin(), accounts_.end(), [&id](const TradingAccountID& each) {
    return each.account == id.text3 && (id.counterType < 1 || each.counterType == id.counterType);
  });
}

AccountID AccountBook::connectionOf(const TradingAccountID& account) {
  AccountID id;
  id.first = account.accountKey;
  id.counterType = account.counterType;
  id.text3 = account.account;
  return id;
}

std::list<AccountLinks> AccountBook::records(const std::string& account, int counterType) const {
  std::list<AccountLinks> found;
  for (const TradingAccountID& each : accounts_) {
    if (!account.empty() && each.account != account) continue;
    if (counterType >= 1 && each.counterType != counterType) continue;
    found.push_back({connectionOf(each), {each}});
  }
  return found;
}

}  // namespace orvane::detail
