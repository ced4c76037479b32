#pragma once

#include "platform/core/NotSupported.h"
#include "services/QuoteClient/IIndexTrade.h"

namespace orvane::detail {

/// No index has elements here.
class NoIndexTrade final : public IIndexTrade {
 public:
  void subscribeElementChange(const ICodeID&, const std::shared_ptr<IndexTradeSpi>&) override {}
  void unsubscribeElementChange(const ICodeID&, const std::shared_ptr<IndexTradeSpi>&) override {}
  ResultStatus indexElements(const ICodeID&, std::list<IndexTradeElement>&) override {
    return notSupported();
  }
};

}  // namespace orvane::detail
