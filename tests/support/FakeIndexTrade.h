#pragma once

#include <mutex>

#include "services/QuoteClient/IIndexTrade.h"
#include "tests/support/CallLog.h"

namespace orvane::support {

/// An index service that delivers nothing of its own accord. It notes every call as
/// "index.<operation>" and remembers the last spi. Any thread may use it.
class FakeIndexTrade final : public IIndexTrade {
 public:
  explicit FakeIndexTrade(CallLog& calls) : calls_(calls) {}

  void subscribeElementChange(const ICodeID& code,
                              const std::shared_ptr<IndexTradeSpi>& spi) override;
  void unsubscribeElementChange(const ICodeID& code,
                                const std::shared_ptr<IndexTradeSpi>& spi) override;
  ResultStatus indexElements(const ICodeID& code, std::list<IndexTradeElement>& elements) override;

  std::shared_ptr<IndexTradeSpi> spi() const;
  void forget();

 private:
  CallLog& calls_;
  mutable std::mutex mutex_;
  std::shared_ptr<IndexTradeSpi> spi_;
};

}  // namespace orvane::support
