#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "EventStrategy/DataNotify.h"
#include "EventStrategy/EventTradeNotify.h"
#include "EventStrategy/GeneralEventNotify.h"
#include "EventStrategy/IEventStrategy.h"
#include "EventStrategy/IndexNotify.h"
#include "EventStrategy/QuoteNotify.h"
#include "services/Common/ITimerNotify.h"

namespace orvane {

class DataSrc;
class GeneralEventSrc;
class IndexSrc;
class QuoteSrc;
class TimerSrc;
class TradeSrc;

namespace detail {
struct TestAccess;
}

/// Turns the system's six sources into one stream of events: owns one source of each kind, copies
/// each call-back into a record of its own and gives it to `pushEvent`, which a subclass supplies.
/// Everything else is a forward to the right source.
///
/// Call-backs run on service threads and timer threads, concurrently with one another, each with
/// its source's mutex held. The class has no thread and queues nothing. Detached when made; a
/// subclass must see to it that `stopEvent` has run before its own part is destroyed.
class ORVANE_API AbstractEventStrategy : public IEventStrategy,
                                         private EventTradeNotify,
                                         private ITimerNotify,
                                         private QuoteNotify,
                                         private DataNotify,
                                         private GeneralEventNotify,
                                         private IndexNotify {
 public:
  /// `mode` is a set of `RunnerModeFlag` bits.
  explicit AbstractEventStrategy(int mode = 0);
  /// Releases the sources: index, general events, trade, quotes, dictionary data, in this order.
  ~AbstractEventStrategy() override;

  std::string name() override;
  void setName(const std::string& name) override;
  void startEvent() override;
  void stopEvent() override;
  void resetCache() override;
  int generateId() override;
  std::shared_ptr<IQuoteSrc> quoteSrc() const override;
  std::shared_ptr<ITradeSrc> tradeSrc() const override;
  std::shared_ptr<IDataSrc> dataSrc() const override;
  std::shared_ptr<IGeneralEventSrc> generalEventSrc() const override;
  std::shared_ptr<IIndexSrc> indexSrc() const override;
  void createTimer(int id, int64 beginTime, int64 interval, int triggerCount) override;
  void stopTimer(int id) override;
  void stopAllTimer() override;
  bool isTimerExist(int id) override;
  void setNotifyQuick(bool quick) override;
  void setCreateSourceTradeInfo(const std::map<std::string, CreateSourceTradeInfo>& infos) override;
  void setRelatedCodeId(const std::vector<ICodeID>& codes) override;
  void addSubscribeTradeByCreateSource(const std::string& createSource,
                                       const std::string& subCreateSource) override;
  void addSubscribeTradeByCreateId(const std::string& createSource, int64 subCreateId) override;
  void onRelatedCodeIdChange(const std::vector<ICodeID>& codes) override;
  ResultStatus subscribeKline(const OVDataRange& range, int requestId, int extraFlags) override;
  ResultStatus subscribeKline(const ICodeID& code, const std::string& frequency, int64 beginTime,
                              int64 endTime, int count, int flags, int requestId) override;
  ResultStatus subscribeKline(const std::string& code, const std::string& frequency, int64 value,
                              int flags, int requestId, int extraFlags) override;
  ResultStatus subscribeQuote(const ICodeID& code, int flags) override;
  ResultStatus subscribeQuote(const std::string& code, int flags) override;
  void subscribeTrade(const TradingAccountID& account) override;
  void subscribeDataSnapshot(const std::string& name, const std::string& target,
                             int flags) override;
  void unsubscribeDataSnapshot(const std::string& name, const std::string& target,
                               int flags) override;
  ResultStatus subscribeData(const DataReq& request, int requestId) override;
  void subscribeGeneralEvent(const std::string& target, const std::string& name,
                             const std::list<std::string>& keys) override;
  void subscribeElementChange(const ICodeID& code) override;
  void subDetail(const CondId& condition) override;
  ResultStatus unsubscribeKline(int requestId) override;
  ResultStatus unsubscribeQuote(const ICodeID& code, int flags) override;
  ResultStatus unsubscribeQuote(const std::string& code, int flags) override;
  void unsubscribeTrade(const TradingAccountID& account) override;
  void unsubscribeData(int requestId) override;
  void unsubscribeGenaralEvent(const std::string& target, const std::string& name) override;
  void unsubscribeAllGenaralEvent() override;
  void unsubscribeElementChange(const ICodeID& code) override;
  void unsubscribeAllElementChange() override;
  void unsubscribeCond() override;
  bool isSubscribeKline(int requestId) override;
  bool isSubscribeQuote(const ICodeID& code) override;
  bool isSubscribeDataSnapshot(const std::string& name, const std::string& target) override;
  bool isSubscribeData(int requestId) override;

 protected:
  /// Inject a batch as if the quote source had delivered it; they end in an override of `onKLine`
  /// or `onTick` if there is one.
  void pushKlineEvent(int requestId, const ICodeID& code, const std::vector<IKLine>& bars,
                      const ResultStatus& status, int batchFlag);
  void pushTickEvent(int requestId, const ICodeID& code, const std::vector<IDepthMarketData>& ticks,
                     const ResultStatus& status, int batchFlag);

  /// The sources themselves, for a host that works on their books.
  const std::shared_ptr<QuoteSrc>& quotes() const { return quoteSrc_; }
  const std::shared_ptr<TradeSrc>& trades() const { return tradeSrc_; }
  const std::shared_ptr<DataSrc>& data() const { return dataSrc_; }
  const std::shared_ptr<TimerSrc>& timers() const { return timerSrc_; }

 private:
  friend struct detail::TestAccess;

  void onRtnPosition(const Position& position) override;
  void onRtnStrategyPosition(const SourcePosition& position) override;
  void onRtnOrder(const Order& order) override;
  void onRtnTrade(const OrderFill& fill) override;
  void onRspStatus(const AccountID& account, const AccountStatusInfo& info) override;
  void onRtnCapital(const TradingAccount& capital) override;
  void onTimer(int id, int64 value) override;
  void onQuote(const IDepthMarketData& quote) override;
  void onKLine(int requestId, const ICodeID& code, const std::vector<IKLine>& bars,
               const ResultStatus& status, int batchFlag) override;
  void onKLineProgress(int requestId, const ICodeID& code, const KLineProgress& progress) override;
  void onTick(int requestId, const ICodeID& code, const std::vector<IDepthMarketData>& ticks,
              const ResultStatus& status, int batchFlag) override;
  void onRollover(int requestId, const ICodeID& code,
                  const RolloverCoefficient& coefficient) override;
  void onDataSnapshot(const std::string& name, const std::string& target,
                      const Record& record) override;
  void onProgress(int requestId, int progress1, int progress2) override;
  void onData(int requestId, const std::list<Record>& records, DataValueType valueType,
              const ResultStatus& status, int batchFlag, int64 batchTag) override;
  void onDeleteData(int requestId, int64 deleted1, int64 deleted2, int64 deleted3) override;
  void onGeneralEvent(const std::string& topic, const std::map<std::string, std::string>& fields,
                      const std::string& detail) override;
  void onElementChange(const ICodeID& code, std::list<IndexTradeElement>& elements) override;

  std::shared_ptr<QuoteSrc> quoteSrc_;
  std::shared_ptr<TradeSrc> tradeSrc_;
  std::shared_ptr<DataSrc> dataSrc_;
  std::shared_ptr<TimerSrc> timerSrc_;
  std::shared_ptr<GeneralEventSrc> generalEventSrc_;
  std::shared_ptr<IndexSrc> indexSrc_;
  std::mutex mutex_;  ///< Guards `name_`. Taken before a source's mutex, never inside one.
  std::string name_;
};

}  // namespace orvane
