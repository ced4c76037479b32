#include "EventStrategy/QuoteGetSyncSpi.h"

#include <utility>

namespace orvane::detail {

void QuoteGetSyncSpi::setBarsCallback(BarsCallback callback) {
  const std::lock_guard lock(mutex_);
  barsCallback_ = std::move(callback);
}

void QuoteGetSyncSpi::setTicksCallback(TicksCallback callback) {
  const std::lock_guard lock(mutex_);
  ticksCallback_ = std::move(callback);
}

void QuoteGetSyncSpi::setMaintainCallback(MaintainCallback callback) {
  const std::lock_guard lock(mutex_);
  maintainCallback_ = std::move(callback);
}

bool QuoteGetSyncSpi::isDone() {
  const std::lock_guard lock(mutex_);
  return done_;
}

void QuoteGetSyncSpi::setDone() {
  const std::lock_guard lock(mutex_);
  done_ = true;
}

void QuoteGetSyncSpi::forget() {
  setBarsCallback(nullptr);
  setTicksCallback(nullptr);
  setMaintainCallback(nullptr);
}

void QuoteGetSyncSpi::onTick(int, const std::vector<IDepthMarketData>& ticks, const ResultStatus&,
                             int flags) {
  if ((flags & kLastBatchFlag) == 0) return;
  const std::lock_guard lock(mutex_);
  if (ticksCallback_) ticksCallback_(code_, ticks);
  done_ = true;
}

void QuoteGetSyncSpi::onKLine(int, const std::vector<IKLine>& bars, const ResultStatus&,
                              int flags) {
  if ((flags & kLastBatchFlag) == 0) return;
  const std::lock_guard lock(mutex_);
  if (barsCallback_) barsCallback_(code_, bars);
  done_ = true;
}

void QuoteGetSyncSpi::onMaintained(int, const ICodeID& code, ITimeType timeType,
                                   const ResultStatus& status) {
  const std::lock_guard lock(mutex_);
  if (maintainCallback_) maintainCallback_(code, timeType, status);
  done_ = true;
}

}  // namespace orvane::detail
