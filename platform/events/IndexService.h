#pragma once

#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/events/IndexFile.h"
#include "platform/market/TimeShift.h"
#include "services/QuoteClient/IIndexTrade.h"

namespace orvane {
class ICodeService;
}

namespace orvane::detail {

/// What indexes are made of. A composition is known from its time on, and not before.
///
/// The operations of the service take one short lock and may be called by any thread; a change is
/// told by whoever drives the platform, on the thread of the service loop, one at a time.
class IndexService final : public IIndexTrade {
 public:
  /// With `lockstep` false the times of changes mean nothing until `followTimes`.
  IndexService(ICodeService& codes, bool lockstep) : codes_(codes), followsTimes_(lockstep) {}

  /// Adds compositions; not while anything is told. Throws `std::invalid_argument`, in UTF-8 and
  /// begun with where the composition stands, if a code is not there, an index is made of itself,
  /// by way of others too, or has two compositions of one time. Nothing is added then.
  void add(const std::vector<IndexComposition>& compositions);

  void subscribeElementChange(const ICodeID& code,
                              const std::shared_ptr<IndexTradeSpi>& spi) override;
  void unsubscribeElementChange(const ICodeID& code,
                                const std::shared_ptr<IndexTradeSpi>& spi) override;
  ResultStatus indexElements(const ICodeID& code, std::list<IndexTradeElement>& elements) override;

  // On the service loop's thread.

  /// When the first change happens, as the data tell it; `kUnsetTime` if none has a time. Not while
  /// anything is added.
  int64 firstTime() const;
  /// When the next change happens, as times are shown; `kUnsetTime` without one.
  int64 nextDue() const;
  /// Lets the next change happen and tells it.
  void tellNext();
  /// Changes before `time` have happened, untold; those from `end` on never do.
  void startAt(int64 time, int64 end);
  void setTimeShift(const TimeShift& shift) { shift_ = shift; }
  void followTimes() { followsTimes_ = true; }

 private:
  using Elements = std::list<IndexTradeElement>;
  struct Change {
    int64 time = 0;
    ICodeID index;
    std::shared_ptr<const Elements> elements;
    std::string origin;
  };
  using Receivers = std::vector<std::shared_ptr<IndexTradeSpi>>;

  Change changeOf(const IndexComposition& composition) const;
  static void checkCycles(const std::vector<Change>& changes);
  bool isWanted(int64 codeId, const IndexTradeSpi* spi) const;

  ICodeService& codes_;

  // For the service loop's thread.
  std::vector<Change> changes_;  ///< By time, then as they came.
  std::size_t next_ = 0;
  std::size_t end_ = 0;
  bool followsTimes_;
  TimeShift shift_;

  mutable std::mutex mutex_;  ///< Guards what follows; never held while a receiver is called.
  std::map<int64, std::shared_ptr<const Elements>> present_;  ///< By the index's id.
  std::map<int64, Receivers> receivers_;                      ///< As they subscribed.
};

}  // namespace orvane::detail
