#pragma once

#include <mutex>
#include <vector>

#include "services/QuoteClient/IIndexTrade.h"
#include "tests/support/CallLog.h"

namespace orvane::support {

/// An index service that delivers nothing of its own accord. It notes every call as
/// "index.<operation>" and keeps every spi that it was ever given, as a careless service does. Any
/// thread may use it.
class FakeIndexTrade final : public IIndexTrade {
 public:
  explicit FakeIndexTrade(CallLog& calls) : calls_(calls) {}

  void subscribeElementChange(const ICodeID& code,
                              const std::shared_ptr<IndexTradeSpi>& spi) override;
  void unsubscribeElementChange(const ICodeID& code,
                                const std::shared_ptr<IndexTradeSpi>& spi) override;
  ResultStatus indexElements(const ICodeID& code, std::list<IndexTradeElement>& elements) override;

  /// The spi of the last subscription.
  std::shared_ptr<IndexTradeSpi> spi() const;
  /// Every spi that a subscription or a withdrawal brought, in order.
  std::vector<std::shared_ptr<IndexTradeSpi>> spis() const;
  void forget();

 private:
  void keep(const std::shared_ptr<IndexTradeSpi>& spi);

  CallLog& calls_;
  mutable std::mutex mutex_;
  std::shared_ptr<IndexTradeSpi> spi_;
  std::vector<std::shared_ptr<IndexTradeSpi>> spis_;
};

}  // namespace orvane::support
