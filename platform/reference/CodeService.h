#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "platform/reference/Instrument.h"
#include "services/Common/ICodeService.h"

namespace orvane::detail {

/// The instruments of a platform and the queries on them. Any thread may call any operation; each
/// takes one short lock.
///
/// Every code is of kind 1. Markets are numbered from 1 in the order they come, and one of an
/// empty name is a market like any other.
class CodeService final : public ICodeService {
 public:
  static constexpr int kKind = 1;

  /// `now` gives the platform's time in UTC milliseconds; `timeZone` is the platform's.
  CodeService(std::function<int64()> now, std::string timeZone)
      : now_(std::move(now)), timeZone_(std::move(timeZone)) {}

  /// Adds or replaces an instrument, publishes its market's name, and returns its code. Throws
  /// `std::invalid_argument`, in UTF-8, if a field is wrong or an id is taken.
  ICodeID add(const Instrument& instrument);

  /// From now on what users change waits for `takeChanges`, so that all runners see it at one
  /// moment. `onWaiting` is called, with no lock held, when something waits. Before the first use.
  void deferChanges(std::function<void()> onWaiting) { onChangeWaiting_ = std::move(onWaiting); }
  bool anyChangeWaiting() const { return changesWaiting_.load(); }
  /// Takes the changes in, in an order that does not depend on who was faster.
  void takeChanges();
  void dropChanges();
  /// Forgets what users changed.
  void forgetChanges();

  ResultStatus codeNameOf(const ICodeID& code, std::string& name) override;
  ResultStatus codeIdOf(const std::string& text, ICodeID& code) override;
  ResultStatus codeQueryA(int kind, std::list<ICodeID>& codes) override;
  ResultStatus codeQueryB(int kind, int market, int limit, std::list<ICodeID>& codes) override;
  ResultStatus codeQueryC(int kind, int market, std::list<ICodeID>& codes) override;
  ResultStatus codeRangeQuery(const std::string& prefix, int first, int limit,
                              std::list<ICodeID>& codes, int flags) override;
  ResultStatus codeQueryD(const int& market, std::string& name) override;
  ResultStatus codeQueryE(const std::string& name, int& market) override;
  ResultStatus codeServiceQuery(const std::string& text, ICodeID& code, int flags) override;
  ResultStatus currentCodeProperty(const ICodeID& code, ICodeProperty& property,
                                   int64 time) override;
  ResultStatus codePropertyAt(int64 codeId, ICodeProperty& property, int64 time) override;
  ResultStatus codeQueryF(int market, std::list<ICodeProperty>& properties, int64 time) override;
  ResultStatus resolveDominant(const ICodeID& code, ICodeID& resolved) override;
  ResultStatus resolveUnderlying(const ICodeID& code, ICodeID& resolved) override;
  ResultStatus resolveContinuous(const ICodeID& code, ICodeID& resolved) override;
  ResultStatus markets(int kind, std::list<int>& markets) override;
  ResultStatus categoriesOf(int market, int kind, std::vector<ICategoryID>& categories) override;
  ResultStatus categoryQuery(const ICategoryID& category, int flags,
                             std::list<ICodeID>& codes) override;
  ResultStatus setUserCodeProperties(const std::vector<ICodeProperty>& properties) override;
  bool getCategoryID(const std::string& text, ICategoryID& category) override;
  ResultStatus historyCodeProperties(const ICodeID& code, std::vector<ITimeCodeProp>& properties,
                                     int flags) override;
  ResultStatus correctUserProp(ICodeProperty& property) override;

 private:
  struct Entry {
    ICodeID code;
    Instrument instrument;
    std::vector<ITimeCodeProp> history;  ///< Ascending by time; the first holds from the start.
    std::vector<ICodeProperty> held;     ///< All that ever held, also for no time at all, once.
  };
  using Link = std::string Instrument::*;

  static void change(Entry& entry, const ICodeProperty& wanted, int64 time);

  int marketOf(const std::string& name);
  ICodeProperty propertyOf(const Entry& entry) const;
  ResultStatus findLocked(const std::string& text, ICodeID& code) const;
  ResultStatus propertyLocked(const Entry& entry, ICodeProperty& property, int64 time) const;
  ResultStatus resolve(const ICodeID& code, ICodeID& resolved, Link link);
  std::list<ICodeID> codesWhere(const std::function<bool(const Entry&)>& wanted) const;
  void publishMarkets() const;

  const std::function<int64()> now_;
  const std::string timeZone_;
  std::function<void()> onChangeWaiting_;  ///< Null: changes hold at once.
  std::atomic<bool> changesWaiting_{false};
  mutable std::mutex mutex_;  ///< Guards what follows.
  std::vector<ICodeProperty> changes_;
  std::map<int64, Entry> entries_;
  std::vector<std::string> markets_;  ///< The name of market m stands at m - 1.
};

}  // namespace orvane::detail
