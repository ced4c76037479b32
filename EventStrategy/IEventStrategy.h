#pragma once

#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "shared/CondId.h"
#include "shared/DictionaryRecords.h"
#include "shared/Export.h"
#include "shared/MarketRecords.h"
#include "shared/TradeRecords.h"

namespace orvane {

class IDataSrc;
class IEvent;
class IGeneralEventSrc;
class IIndexSrc;
class IQuoteSrc;
class ITradeSrc;

/// One stream of events out of all sources of the platform. Implemented by
/// `AbstractEventStrategy`; the order of the operations is fixed.
///
/// Any thread may call any operation. Subscribing needs no attachment: what arrives while detached
/// is dropped in the source.
class ORVANE_API IEventStrategy {
 public:
  IEventStrategy();
  IEventStrategy(const IEventStrategy&) = delete;
  IEventStrategy& operator=(const IEventStrategy&) = delete;
  virtual ~IEventStrategy();

  virtual std::string name() = 0;
  virtual void setName(const std::string& name) = 0;

  /// Attaches the strategy to its sources: from now on their call-backs become events.
  virtual void startEvent() = 0;
  /// Detaches it. Blocks until a call-back in progress has returned; none comes afterwards.
  virtual void stopEvent() = 0;
  /// Restores the trade source's configuration to that of a new one; subscriptions stay.
  virtual void resetCache() = 0;
  /// A fresh request id.
  virtual int generateId() = 0;

  virtual std::shared_ptr<IQuoteSrc> quoteSrc() const = 0;
  virtual std::shared_ptr<ITradeSrc> tradeSrc() const = 0;
  virtual std::shared_ptr<IDataSrc> dataSrc() const = 0;
  virtual std::shared_ptr<IGeneralEventSrc> generalEventSrc() const = 0;
  virtual std::shared_ptr<IIndexSrc> indexSrc() const = 0;

  /// Times in UTC milliseconds. A timer that runs under the same id is replaced.
  virtual void createTimer(int id, int64 beginTime, int64 interval, int triggerCount) = 0;
  virtual void stopTimer(int id) = 0;
  virtual void stopAllTimer() = 0;
  /// True from `createTimer` to `stopTimer`, also once the trigger count has run out.
  virtual bool isTimerExist(int id) = 0;

  virtual void setNotifyQuick(bool quick) = 0;
  virtual void setCreateSourceTradeInfo(
      const std::map<std::string, CreateSourceTradeInfo>& infos) = 0;
  virtual void setRelatedCodeId(const std::vector<ICodeID>& codes) = 0;
  virtual void addSubscribeTradeByCreateSource(const std::string& createSource,
                                               const std::string& subCreateSource) = 0;
  virtual void addSubscribeTradeByCreateId(const std::string& createSource, int64 subCreateId) = 0;
  virtual void onRelatedCodeIdChange(const std::vector<ICodeID>& codes) = 0;

  virtual ResultStatus subscribeKline(const OVDataRange& range, int requestId, int extraFlags) = 0;
  virtual ResultStatus subscribeKline(const ICodeID& code, const std::string& frequency,
                                      int64 beginTime, int64 endTime, int count, int flags,
                                      int requestId) = 0;
  virtual ResultStatus subscribeKline(const std::string& code, const std::string& frequency,
                                      int64 value, int flags, int requestId, int extraFlags) = 0;
  virtual ResultStatus subscribeQuote(const ICodeID& code, int flags) = 0;
  virtual ResultStatus subscribeQuote(const std::string& code, int flags) = 0;
  virtual void subscribeTrade(const TradingAccountID& account) = 0;
  virtual void subscribeDataSnapshot(const std::string& name, const std::string& target,
                                     int flags) = 0;
  virtual void unsubscribeDataSnapshot(const std::string& name, const std::string& target,
                                       int flags) = 0;
  virtual ResultStatus subscribeData(const DataReq& request, int requestId) = 0;
  virtual void subscribeGeneralEvent(const std::string& target, const std::string& name,
                                     const std::list<std::string>& keys) = 0;
  virtual void subscribeElementChange(const ICodeID& code) = 0;
  virtual void subDetail(const CondId& condition) = 0;

  virtual ResultStatus unsubscribeKline(int requestId) = 0;
  virtual ResultStatus unsubscribeQuote(const ICodeID& code, int flags) = 0;
  virtual ResultStatus unsubscribeQuote(const std::string& code, int flags) = 0;
  virtual void unsubscribeTrade(const TradingAccountID& account) = 0;
  virtual void unsubscribeData(int requestId) = 0;
  virtual void unsubscribeGenaralEvent(const std::string& target, const std::string& name) = 0;
  virtual void unsubscribeAllGenaralEvent() = 0;
  virtual void unsubscribeElementChange(const ICodeID& code) = 0;
  virtual void unsubscribeAllElementChange() = 0;
  virtual void unsubscribeCond() = 0;

  virtual bool isSubscribeKline(int requestId) = 0;
  virtual bool isSubscribeQuote(const ICodeID& code) = 0;
  virtual bool isSubscribeDataSnapshot(const std::string& name, const std::string& target) = 0;
  virtual bool isSubscribeData(int requestId) = 0;

  /// Takes ownership of `event`. Called on any thread, with the mutex of the calling source held:
  /// it must not call back into a source on that thread.
  virtual void pushEvent(IEvent* event) = 0;
};

}  // namespace orvane
