#include "EventStrategy/ov.strategy.runner/RunnerGlobal.h"

#include <atomic>

#include "shared/CodeTables.h"
#include "shared/StatusCodes.h"

namespace orvane {
namespace {

using status::kNotThere;

/// Later calls come here without the guard of the function-local static.
std::atomic<IRunnerGlobal*> cachedGlobal{nullptr};

std::string keyOf(int counterType, const std::string& account) {
  return std::to_string(static_cast<std::uint32_t>(counterType)) + '@' + account;
}

}  // namespace

IRunnerGlobal* IRunnerGlobal::instance() {
  if (IRunnerGlobal* global = cachedGlobal.load(std::memory_order_acquire)) return global;
  static IRunnerGlobal* const made = new RunnerGlobal;
  cachedGlobal.store(made, std::memory_order_release);
  return made;
}

void RunnerGlobal::setKeepDetail(bool keep) {
  const std::lock_guard lock(mutex_);
  keepDetail_ = keep;
}

void RunnerGlobal::setKeepDetailByCounter(const std::map<std::uint32_t, bool>& keepByCounter) {
  const std::lock_guard lock(mutex_);
  for (const auto& [counterType, keep] : keepByCounter) keepDetailByCounter_[counterType] = keep;
}

void RunnerGlobal::setAccounts(const std::list<AccountRecord>& accounts) {
  const std::lock_guard lock(mutex_);
  for (const AccountRecord& account : accounts)
    accounts_[keyOf(account.id.counterType, account.id.text3)] = account;
}

ResultStatus RunnerGlobal::getAccount(int counterType, const std::string& account,
                                      AccountRecord& out) {
  const std::lock_guard lock(mutex_);
  const auto found = accounts_.find(keyOf(counterType, account));
  if (found == accounts_.end()) return {kNotThere, statusMessage(kNotThere)};
  out = found->second;
  const auto own = keepDetailByCounter_.find(static_cast<std::uint32_t>(counterType));
  const bool keep = own == keepDetailByCounter_.end() ? keepDetail_ : own->second;
  if (!keep) {
    out.login.text5.clear();
    out.login.text6.clear();
    out.hidden = {};
  }
  return {};
}

}  // namespace orvane
