#pragma once

#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/trade/PaperExchange.h"
#include "platform/trade/TradeResults.h"

namespace orvane::detail {

/// The equity curves of accounts and of create sources on them. Points of one instant are one, the
/// last; but the first point of a curve, the start, stands. Guarded by its owner.
class EquityBook {
 public:
  struct Curve {
    EquityPoints points;
    /// By code, ascending; held ones alone.
    std::vector<std::pair<int64, double>> exposures;
  };
  struct AccountCurve : Curve {
    /// How many points were handed to a store. The last point may still change and is kept back.
    std::size_t stored = 0;
  };
  struct SourceCurve {
    /// None as long as it is the account's: the source has the account to itself.
    std::optional<Curve> own;
    std::size_t stored = 0;
  };
  using SourceKey = std::pair<std::int32_t, std::string>;  ///< Account and create source.
  struct ByKey {
    using is_transparent = void;
    bool operator()(const auto& a, const auto& b) const {
      return a.first != b.first ? a.first < b.first : a.second < b.second;
    }
  };
  using SourceCurves = std::map<SourceKey, SourceCurve, ByKey>;

  /// Who holds a code on one account, or once did.
  struct Holders {
    std::int32_t account = 0;
    const Ledger* ledger = nullptr;
    std::vector<SourceCurves::value_type*> sources;
  };
  using AllHolders = std::vector<Holders>;
  struct Mark {
    int64 codeId = 0;
    int64 time = 0;
    bool isTick = false;
  };

  EquityBook(const PaperExchange& exchange, std::size_t accounts);

  bool hasStarted() const { return hasStarted_; }
  void start(int64 time);
  /// A create source sent its first order: its curve begins with the run.
  void addSource(std::int32_t account, const std::string& source);
  /// A source's position in a code may have changed by a fill.
  void noteFill(std::int32_t account, const std::string& source, int64 codeId, int64 time);
  /// The mark price of a code changed; by a tick only one point a minute is taken. Answers whether
  /// anybody holds it. For many in a row it takes what `holdersOf` answers, too.
  bool noteMark(const Mark& mark) { return noteMark(holders_[mark.codeId], mark); }
  bool noteMark(const AllHolders& holders, const Mark& mark);
  /// The account that alone holds a code, where the account's is the only curve; null otherwise.
  static const Holders* soleHolders(const AllHolders& all);
  /// What `noteMark` does for such an account that is worth so much.
  void noteWorth(std::int32_t account, const Mark& mark, double equity, double exposure);
  /// Who holds a code, or once did. Good until `clear`; who comes later is in it then.
  const AllHolders& holdersOf(int64 codeId) { return holders_[codeId]; }
  void finish(int64 time);
  void clear();

  AccountCurve& account(std::int32_t key) { return accounts_[indexOf(key)]; }
  const AccountCurve& account(std::int32_t key) const { return accounts_[indexOf(key)]; }
  SourceCurves& sources() { return sources_; }
  const SourceCurves& sources() const { return sources_; }
  /// The points of a source's curve, whoever has them.
  const EquityPoints& pointsOf(const SourceKey& key, const SourceCurve& curve) const {
    return curve.own ? curve.own->points : account(key.first).points;
  }

 private:
  static std::size_t indexOf(std::int32_t account) { return static_cast<std::size_t>(account) - 1; }
  void noteMarkOf(const Holders& holders, const Mark& mark);
  Holders& holdersOn(std::int32_t account, int64 codeId);
  void partFromAccount(std::int32_t account);
  void addAccountPoint(std::int32_t account, int64 time);
  void addSourcePoint(const SourceKey& key, Curve& curve, int64 time);

  const PaperExchange& exchange_;
  std::vector<AccountCurve> accounts_;
  SourceCurves sources_;
  /// By code, of each account on which it was ever held.
  std::unordered_map<int64, AllHolders> holders_;
  bool hasStarted_ = false;
  int64 startTime_ = 0;
};

}  // namespace orvane::detail
