#pragma once

#include <memory>
#include <mutex>

#include "platform/core/ServiceLoop.h"
#include "platform/market/MarketStore.h"
#include "services/QuoteClient/IDataMaintain.h"

namespace orvane {
class ICodeService;
}

namespace orvane::detail {

/// Looks through the bars of a code, on a thread of its own: whoever asks may stand still in a
/// call-back until the answer is there. Made once for a platform; the thread comes with the first
/// request. Any thread may ask.
class Maintenance {
 public:
  /// `turn` is the lock that whoever changes a series holds.
  Maintenance(MarketStore& store, ICodeService& codes, std::mutex& turn)
      : store_(store), codes_(codes), turn_(turn) {}

  /// As `IDataMaintain::maintain`. All series of the unit are looked through, or else the one that
  /// bars of the unit are made of; also rows that were not played yet. `from` is the begin time of
  /// the first bar in UTC milliseconds as the data have it; 0 or less, or unset, means all.
  /// Refused with 22 if the code is not there, 17 if it has no such bars. The answer is 0 and how
  /// many bars there are, or 20 with the first fault.
  ResultStatus ask(const ICodeID& code, ITimeType unit, int64 from,
                   const std::shared_ptr<IDataMaintainSpi>& spi, int requestId);

 private:
  std::vector<MarketStream*> streamsOf(int64 codeId, ITimeType unit) const;
  ResultStatus lookThrough(const std::vector<MarketStream*>& streams, int64 from);

  MarketStore& store_;
  ICodeService& codes_;
  std::mutex& turn_;
  std::mutex mutex_;                     ///< Guards what follows.
  std::unique_ptr<ServiceLoop> thread_;  ///< Last, so that it ends first.
};

/// One use of it.
class DataMaintain final : public IDataMaintain {
 public:
  explicit DataMaintain(Maintenance& maintenance) : maintenance_(maintenance) {}

  ResultStatus maintain(const ICodeID& code, ITimeType timeType, int64 value,
                        const std::shared_ptr<IDataMaintainSpi>& spi, int requestId) override {
    return maintenance_.ask(code, timeType, value, spi, requestId);
  }

 private:
  Maintenance& maintenance_;
};

}  // namespace orvane::detail
