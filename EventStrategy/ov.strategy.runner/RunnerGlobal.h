#pragma once

#include <mutex>

#include "EventStrategy/ov.strategy.runner/IRunnerGlobal.h"

namespace orvane {

/// The one store of accounts. Its lock is a leaf: nothing is called while it is held.
class RunnerGlobal final : public IRunnerGlobal {
 public:
  void setKeepDetail(bool keep) override;
  void setKeepDetailByCounter(const std::map<std::uint32_t, bool>& keepByCounter) override;
  void setAccounts(const std::list<AccountRecord>& accounts) override;
  ResultStatus getAccount(int counterType, const std::string& account, AccountRecord& out) override;

 private:
  std::mutex mutex_;  ///< Guards what follows.
  bool keepDetail_ = true;
  std::map<std::uint32_t, bool> keepDetailByCounter_;
  std::map<std::string, AccountRecord> accounts_;  ///< By counter type, "@" and account text.
};

}  // namespace orvane
