#pragma once

#include <functional>
#include <mutex>
#include <vector>

#include "services/Common/IBlockingReceiver.h"
#include "services/Common/IRealtimeQuoteService.h"
#include "services/QuoteClient/IDataMaintain.h"

namespace orvane::detail {

struct TestAccess;

/// The call-back of one request that somebody waits for. The service shares it and may keep it, and
/// call it, for as long as it likes: what it passes on to goes through three functions that the
/// waiter takes away before it leaves. A late call-back finds them empty.
///
/// Any thread may call any operation. A function is called with the lock held, so that `forget`
/// returns only when none is under way. A function must not call back into this object.
class QuoteGetSyncSpi final : public QuoteSpi, public IDataMaintainSpi, public IBlockingReceiver {
 public:
  using BarsCallback = std::function<void(const ICodeID&, const std::vector<IKLine>&)>;
  using TicksCallback = std::function<void(const ICodeID&, const std::vector<IDepthMarketData>&)>;
  using MaintainCallback = std::function<void(const ICodeID&, ITimeType, const ResultStatus&)>;

  QuoteGetSyncSpi(const ICodeID& code, int requestId) : code_(code), requestId_(requestId) {}

  int requestId() const { return requestId_; }

  void setBarsCallback(BarsCallback callback);
  void setTicksCallback(TicksCallback callback);
  void setMaintainCallback(MaintainCallback callback);

  /// Whether the request has ended.
  bool isDone();
  void setDone();

  /// Takes the functions away, one after the other.
  void forget();

  /// Only a batch with `kLastBatchFlag` counts; those before it are thrown away.
  void onTick(int requestId, const std::vector<IDepthMarketData>& ticks, const ResultStatus& status,
              int flags) override;
  void onKLine(int requestId, const std::vector<IKLine>& bars, const ResultStatus& status,
               int flags) override;
  void onMaintained(int requestId, const ICodeID& code, ITimeType timeType,
                    const ResultStatus& status) override;

 private:
  friend struct TestAccess;

  std::mutex mutex_;  ///< Guards what follows but for the two constants.
  const ICodeID code_;
  const int requestId_;
  bool done_ = false;
  BarsCallback barsCallback_;
  TicksCallback ticksCallback_;
  MaintainCallback maintainCallback_;
};

}  // namespace orvane::detail
