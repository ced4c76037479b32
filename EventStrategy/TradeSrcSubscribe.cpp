// The subscriptions of the trade source.

#include "EventStrategy/Attempts.h"
#include "EventStrategy/EventTypes.h"
#include "EventStrategy/Log.h"
#include "EventStrategy/Services.h"
#include "EventStrategy/TradeSrc.h"
#include "shared/CodeTables.h"
#include "shared/TextCodec.h"
#include "shared/TextForms.h"

namespace orvane {
void TradeSrc::subscribeTrade(const TradingAccountID& account) {
  const std::lock_guard lock(mutex_);
  ORVANE_LOG(event, Debug, name_ << ",subscribeTrade," << accountText(account));
  if (subInfos_.contains(account)) return;
  TradeSrcSubInfo& subInfo = subInfos_[account];
  subInfo.quick = notifyQuick_;
  subscribeByAccount(account, subInfo);
  sendSnapshot(account, subInfo);
}

void TradeSrc::unsubscribeTrade(const TradingAccountID& account) {
  const std::lock_guard lock(mutex_);
  const auto it = subInfos_.find(account);
  if (it == subInfos_.end()) return;
  ORVANE_LOG(event, Debug, name_ << ",unsubscribeTrade begin," << accountText(account));
  tradeService()->unsubscribeAccount(spi(), account);
  ORVANE_LOG(event, Debug, name_ << ",unsubscribeTrade end");
  subInfos_.erase(it);
}

void TradeSrc::subscribeByAccount(const TradingAccountID& account, TradeSrcSubInfo& subInfo) {
  ORVANE_LOG(event, Debug, name_ << ",subscribeByAccount begin," << accountText(account));
  ORVANE_LOG(event, Debug, name_ << ",subscribeStatus," << accountText(account));
  tradeService()->subscribeStatus(spi(), account);
  if ((eventMask_ & EventTypeCapital) != 0) {
    ORVANE_LOG(event, Debug, name_ << ",subscribeCapital," << accountText(account));
    tradeService()->subscribeCapital(spi(), account);
  }
  for (const ICodeID& code : relatedCodes_) {
    subscribePositionByCode(account, code, SubFromRelated, subInfo);
    for (const auto& [key, info] : createSourceInfos_)
      subscribeTradeByCode(key, info, account, code, SubFromRelated, subInfo);
  }
  for (const auto& [key, info] : createSourceInfos_)
    subscribeByCreateSource(account, info, subInfo);
  for (const auto& [key, info] : createSourceInfos_) subscribeByCreateId(account, info, subInfo);
  ORVANE_LOG(event, Debug, name_ << ",subscribeByAccount end");
}

void TradeSrc::subscribePositionByCode(const TradingAccountID& account, const ICodeID& code,
                                       TradeSrcSubFrom from, TradeSrcSubInfo& subInfo) {
  const auto [it, isNew] = subInfo.positionCodes.try_emplace(code.id, 0);
  it->second |= from;
  if (!isNew || (eventMask_ & EventTypePosition) == 0) return;
  ORVANE_LOG(event, Debug,
             name_ << ",subscribePosition," << accountText(account) << "," << codeText(code));
  tradeService()->subscribePosition(spi(), account, code);
}

void TradeSrc::subscribeTradeByCode(const std::string& createSource,
                                    const CreateSourceTradeInfo& info,
                                    const TradingAccountID& account, const ICodeID& code,
                                    TradeSrcSubFrom from, TradeSrcSubInfo& subInfo) {
  const auto [it, isNew] = subInfo.sourceCodes[createSource].try_emplace(code.id, 0);
  it->second |= from;
  if (!isNew) return;
  const auto log = [&](const char* tag) {
    ORVANE_LOG(
        event, Debug,
        name_ << tag << createSource << "," << accountText(account) << "," << codeText(code));
  };
  if ((info.override & EventTypeStrategyPosition) != 0) {
    log(",subscribeSourcePosition,");
    tradeService()->subscribeSourcePosition(spi(), createSource, account, code);
  }
  if ((info.override & EventTypeOrder) != 0) {
    log(",subscribeOrderBySourceName,");
    tradeService()->subscribeOrderBySourceName(spi(), createSource, account, code);
  }
  if ((info.override & EventTypeFill) != 0) {
    log(",subscribeFillBySourceName,");
    tradeService()->subscribeFillBySourceName(spi(), createSource, account, code);
  }
}

void TradeSrc::subscribeByCreateSource(const TradingAccountID& account,
                                       const CreateSourceTradeInfo& info,
                                       TradeSrcSubInfo& subInfo) {
  for (const std::string& source : info.subCreateSource) {
    if (!subInfo.orderSources.contains(source) && (info.override & EventTypeOrder) != 0) {
      ORVANE_LOG(event, Debug,
                 name_ << ",subscribeOrderBySourceName," << source << "," << accountText(account));
      tradeService()->subscribeOrderBySourceName(spi(), source, account);
      subInfo.orderSources.insert(source);
    }
    if (!subInfo.fillSources.contains(source) && (info.override & EventTypeFill) != 0) {
      ORVANE_LOG(event, Debug,
                 name_ << ",subscribeFillBySourceName," << source << "," << accountText(account));
      tradeService()->subscribeFillBySourceName(spi(), source, account);
      subInfo.fillSources.insert(source);
    }
  }
}

void TradeSrc::subscribeByCreateId(const TradingAccountID& account,
                                   const CreateSourceTradeInfo& info, TradeSrcSubInfo& subInfo) {
  for (const int id : eventSourceCodes(info.subCreateId)) {
    if ((subInfo.orderEventSourceIds & id) == 0 && (info.override & EventTypeOrder) != 0) {
      ORVANE_LOG(event, Debug,
                 name_ << ",subscribeOrderByEventSourceId," << eventSourceText(id) << ","
                       << accountText(account));
      tradeService()->subscribeOrderByEventSourceId(spi(), id, account);
      subInfo.orderEventSourceIds |= id;
    }
    if ((subInfo.fillEventSourceIds & id) == 0 && (info.override & EventTypeFill) != 0) {
      ORVANE_LOG(event, Debug,
                 name_ << ",subscribeFillByEventSourceId," << eventSourceText(id) << ","
                       << accountText(account));
      tradeService()->subscribeFillByEventSourceId(spi(), id, account);
      subInfo.fillEventSourceIds |= id;
    }
  }
}

void TradeSrc::addSubscribeTradeByCreateSource(const std::string& createSource,
                                               const std::string& subCreateSource) {
  const std::lock_guard lock(mutex_);
  ORVANE_LOG(event, Debug,
             name_ << ",addSubscribeTradeByCreateSource," << createSource
                   << ",subCreateSource=" << subCreateSource);
  const auto it = createSourceInfos_.find(createSource);
  if (it == createSourceInfos_.end()) return;
  it->second.subCreateSource.insert(subCreateSource);
  for (auto& [account, subInfo] : subInfos_) subscribeByCreateSource(account, it->second, subInfo);
}

void TradeSrc::addSubscribeTradeByCreateId(const std::string& createSource, int64 subCreateId) {
  const std::lock_guard lock(mutex_);
  ORVANE_LOG(event, Debug,
             name_ << ",addSubscribeTradeByCreateId," << createSource << ","
                   << eventSourceText(subCreateId));
  const auto it = createSourceInfos_.find(createSource);
  if (it == createSourceInfos_.end()) return;
  it->second.subCreateId |= subCreateId;
  for (auto& [account, subInfo] : subInfos_) subscribeByCreateId(account, it->second, subInfo);
}

ResultStatus TradeSrc::sendOrder(const OrderRequest& request, std::list<Order>& orders) {
  {
    const std::lock_guard lock(mutex_);
    const auto account = subInfos_.find(request.account);
    const auto source = createSourceInfos_.find(request.source.createSource);
    if (account != subInfos_.end() && source != createSourceInfos_.end()) {
      subscribePositionByCode(request.account, request.code, SubFromOrder, account->second);
      subscribeTradeByCode(source->first, source->second, request.account, request.code,
                           SubFromOrder, account->second);
    }
  }
  std::list<Order> sent;
  ResultStatus status = tradeService()->sendOrder(request, sent);
  orders = std::move(sent);
  return status;
}

void TradeSrc::subDetail(const CondId& condition) {
  ORVANE_LOG(event, Debug,
             name_ << ",subDetail," << condition.third << "|" << condition.first << "|"
                   << utf8ToGbk(condition.text.toStdString()) << "|" << condition.second);
  if (ICondService* conditions = condService_) conditions->subscribeDetail(condition, this);
}

void TradeSrc::unsubAllDetail() {
  ORVANE_LOG(event, Debug, name_ << ",unsubAllDetail");
  if (ICondService* conditions = condService_) conditions->unsubscribeDetails(this);
}

void TradeSrc::release() {
  const std::lock_guard lock(mutex_);
  ORVANE_LOG(event, Debug, name_ << ",release,unsubscribeTrade begin");
  detail::Attempts attempts;
  attempts.take([this] {
    if (ITradeService* trade = tradeService(); trade != nullptr) trade->unsubscribeAll(spi());
  });
  ORVANE_LOG(event, Debug, name_ << ",release,unsubscribeTrade end");
  subInfos_.clear();
  // The condition service does not own its receivers: it must hear of this whatever went before.
  attempts.take([this] {
    if (ICondService* conditions = condService_) conditions->unsubscribeDetails(this);
  });
  attempts.finish();
}

}  // namespace orvane
