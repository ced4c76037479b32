#include "tests/support/FakeIndexTrade.h"

#include <string>

namespace orvane::support {

void FakeIndexTrade::subscribeElementChange(const ICodeID& code,
                                            const std::shared_ptr<IndexTradeSpi>& spi) {
  {
    const std::lock_guard lock(mutex_);
    spi_ = spi;
  }
  keep(spi);
  calls_.record("index.subscribeElementChange", std::to_string(code.id));
}

void FakeIndexTrade::unsubscribeElementChange(const ICodeID& code,
                                              const std::shared_ptr<IndexTradeSpi>& spi) {
  keep(spi);
  calls_.record("index.unsubscribeElementChange", std::to_string(code.id));
}

ResultStatus FakeIndexTrade::indexElements(const ICodeID& code,
                                           std::list<IndexTradeElement>& elements) {
  elements.push_back({code, 1});
  return calls_.record("index.indexElements", std::to_string(code.id));
}

std::shared_ptr<IndexTradeSpi> FakeIndexTrade::spi() const {
  const std::lock_guard lock(mutex_);
  return spi_;
}

std::vector<std::shared_ptr<IndexTradeSpi>> FakeIndexTrade::spis() const {
  const std::lock_guard lock(mutex_);
  return spis_;
}

void FakeIndexTrade::keep(const std::shared_ptr<IndexTradeSpi>& spi) {
  const std::lock_guard lock(mutex_);
  spis_.push_back(spi);
}

void FakeIndexTrade::forget() {
  std::shared_ptr<IndexTradeSpi> spi;
  std::vector<std::shared_ptr<IndexTradeSpi>> spis;
  const std::lock_guard lock(mutex_);
  spi.swap(spi_);
  spis.swap(spis_);
}

}  // namespace orvane::support
