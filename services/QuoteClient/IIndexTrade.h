#pragma once

#include <list>
#include <memory>

#include "shared/Export.h"
#include "shared/IndexTradeElement.h"
#include "shared/ResultStatus.h"

namespace orvane {

/// Where index changes go. Called on threads of the service.
class ORVANE_API IndexTradeSpi {
 public:
  IndexTradeSpi() = default;
  IndexTradeSpi(const IndexTradeSpi&) = delete;
  IndexTradeSpi& operator=(const IndexTradeSpi&) = delete;
  virtual ~IndexTradeSpi();
  virtual void onIndexReserved1();
  virtual void onIndexReserved2();
  virtual void onIndexReserved3();
  virtual void onIndexReserved4();
  virtual void onIndexReserved5();
  virtual void onIndexReserved6();
  virtual void onIndexReserved7();
  virtual void onElementChange(const ICodeID& code, std::list<IndexTradeElement>& elements);
};

/// The composition of indexes. Any thread may call it; it delivers on its own thread.
class ORVANE_API IIndexTrade {
 public:
  virtual ~IIndexTrade();
  static IIndexTrade* instance();

  virtual void subscribeElementChange(const ICodeID& code,
                                      const std::shared_ptr<IndexTradeSpi>& spi) = 0;
  virtual void unsubscribeElementChange(const ICodeID& code,
                                        const std::shared_ptr<IndexTradeSpi>& spi) = 0;
  virtual ResultStatus indexElements(const ICodeID& code,
                                     std::list<IndexTradeElement>& elements) = 0;
};

}  // namespace orvane
