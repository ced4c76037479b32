// The change of a strategy's codes while accounts are subscribed.

#include "EventStrategy/EventTypes.h"
#include "EventStrategy/JoinedText.h"
#include "EventStrategy/Log.h"
#include "EventStrategy/Services.h"
#include "EventStrategy/TradeSrc.h"
#include "shared/TextForms.h"

namespace orvane {
void TradeSrc::onRelatedCodeIdChange(const std::vector<ICodeID>& codes) {
  const std::lock_guard lock(mutex_);
  ORVANE_LOG(event, Debug, name_ << ",onRelatedCodeIdChange begin," << joinedText(codes, codeText));
  std::set<ICodeID> left = relatedCodes_;
  const std::set<ICodeID> wanted(codes.begin(), codes.end());
  std::vector<ICodeID> added;
  for (const ICodeID& code : wanted)
    if (left.erase(code) == 0) added.push_back(code);
  const std::vector<ICodeID> removed(left.begin(), left.end());
  ORVANE_LOG(event, Debug,
             name_ << ",onRelatedCodeIdChange,sub=" << joinedText(added, codeText)
                   << ",unsub=" << joinedText(removed, codeText));
  relatedCodes_ = wanted;

  // Every unsubscribe of the change comes before its first subscribe.
  for (const ICodeID& code : removed) {
    for (auto& [account, subInfo] : subInfos_) {
      unsubscribeTradeByCode(account, code, subInfo);
      unsubscribePositionByCode(account, code, subInfo);
    }
  }
  for (const ICodeID& code : added) {
    for (auto& [account, subInfo] : subInfos_) {
      subscribePositionByCode(account, code, SubFromRelated, subInfo);
      for (const auto& [key, info] : createSourceInfos_)
        subscribeTradeByCode(key, info, account, code, SubFromRelated, subInfo);
    }
  }
  ORVANE_LOG(event, Debug, name_ << ",onRelatedCodeIdChange end");
}

void TradeSrc::unsubscribeTradeByCode(const TradingAccountID& account, const ICodeID& code,
                                      TradeSrcSubInfo& subInfo) {
  for (auto& [createSource, codes] : subInfo.sourceCodes) {
    const auto entry = codes.find(code.id);
    if (entry == codes.end()) continue;
    entry->second &= ~SubFromRelated;
    if (entry->second != 0) continue;  // An order placed in this code keeps it.
    const auto info = createSourceInfos_.find(createSource);
    if (info != createSourceInfos_.end()) {
      const int64 mask = info->second.override;
      const auto log = [&, &source = createSource](const char* tag) {
        ORVANE_LOG(event, Debug,
                   name_ << tag << source << "," << accountText(account) << "," << codeText(code));
      };
      if ((mask & EventTypeStrategyPosition) != 0) {
        log(",unsubscribeSourcePosition,");
        tradeService()->unsubscribeSourcePosition(spi(), createSource, account, code);
      }
      // Wider than the test for subscribing: who wants source positions alone ends orders too.
      if ((mask & (EventTypeOrder | EventTypeStrategyPosition)) != 0) {
        log(",unsubscribeOrderBySourceName,");
        tradeService()->unsubscribeOrderBySourceName(spi(), createSource, account, code);
      }
      if ((mask & EventTypeFill) != 0) {
        log(",unsubscribeFillBySourceName,");
        tradeService()->unsubscribeFillBySourceName(spi(), createSource, account, code);
      }
    }
    codes.erase(entry);
  }
}

void TradeSrc::unsubscribePositionByCode(const TradingAccountID& account, const ICodeID& code,
                                         TradeSrcSubInfo& subInfo) {
  const auto entry = subInfo.positionCodes.find(code.id);
  if (entry == subInfo.positionCodes.end()) return;
  entry->second &= ~SubFromRelated;
  if (entry->second != 0) return;
  if ((eventMask_ & EventTypePosition) != 0) {
    ORVANE_LOG(event, Debug,
               name_ << ",unsubscribePosition," << accountText(account) << "," << codeText(code));
    tradeService()->unsubscribePosition(spi(), account, code);
  }
  subInfo.positionCodes.erase(entry);
}

}  // namespace orvane
