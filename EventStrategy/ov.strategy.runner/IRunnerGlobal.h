#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <string>

#include "shared/AccountRecords.h"
#include "shared/Export.h"
#include "shared/ResultStatus.h"

namespace orvane {

/// The process-wide store through which a host hands its accounts to server runs. One per process,
/// made on first use and never destroyed. Any thread may call it. Everything goes in and out by
/// value, and there is no way to remove an account.
class ORVANE_API IRunnerGlobal {
 public:
  IRunnerGlobal();
  IRunnerGlobal(const IRunnerGlobal&);
  IRunnerGlobal& operator=(const IRunnerGlobal&);
  virtual ~IRunnerGlobal();

  /// The one of the process.
  static IRunnerGlobal* instance();

  /// Whether readers get the detail fields of accounts of a counter type that has no switch of its
  /// own: `login.text5`, `login.text6` and `hidden`. They do until this says otherwise. The stored
  /// records stay whole, so a host can change its mind at any time.
  virtual void setKeepDetail(bool keep) = 0;
  /// The switches of single counter types; those that are not named stay as they are.
  virtual void setKeepDetailByCounter(const std::map<std::uint32_t, bool>& keepByCounter) = 0;
  /// Adds accounts, each under its counter type and account text (`id.counterType`, `id.text3`).
  /// One that stands there already is replaced whole.
  virtual void setAccounts(const std::list<AccountRecord>& accounts) = 0;
  /// Code 22 "不存在" if there is none; `out` is then untouched.
  virtual ResultStatus getAccount(int counterType, const std::string& account,
                                  AccountRecord& out) = 0;
};

}  // namespace orvane
