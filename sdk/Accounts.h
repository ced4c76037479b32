#pragma once

#include <QJsonObject>
#include <string>

#include "EventStrategy/ov.strategy.runner/IContext.h"
#include "sdk/Text.h"

namespace orvane {

/// The name of the account that the host gave this runner to trade on, under the parameter
/// "account", GBK; empty if there is none.
inline std::string accountName(const QJsonObject& params) {
  return gbk(params.value(QLatin1String("account")).toString());
}

/// Finds that account. Code 22 if the host gave none, or gave one that is not there.
inline ResultStatus findOwnAccount(IContext* context, const QJsonObject& params,
                                   TradingAccountID& account) {
  return context->findTradingAccount(accountName(params), 0, account);
}

}  // namespace orvane
