#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <string>
#include <vector>

#include "EventStrategy/ov.strategy.runner/IContext.h"
#include "sdk/Text.h"

namespace orvane {

/// One series that `subscribeAll` asked for.
struct Subscription {
  std::string name;       ///< The code's text, GBK, as the parameters gave it.
  ICodeID code;           ///< Unset where there is none of this name.
  bool isTicks = false;   ///< Quotes, to `onQuote`; else bars, to `onBarSeries`.
  std::string frequency;  ///< Of the bars, GBK.
  ResultStatus status;    ///< Of the code's look-up or of the subscription; code 0 is success.
};

/// Subscribes every series that the host offers under the parameter "data": an array of objects
/// with "code", "kind" ("bars" or "ticks") and, for bars, "frequency". `orvane run` puts all loaded
/// series there, unless the user gave "data" himself. Answers what was asked for, in that order, a
/// failed one with its status.
///
/// Call it from a call-back, as a rule from `onStart`.
inline std::vector<Subscription> subscribeAll(IContext* context, const QJsonObject& params) {
  std::vector<Subscription> result;
  const QJsonArray entries = params.value(QLatin1String("data")).toArray();
  for (const auto& entry : entries) {
    const QJsonObject series = entry.toObject();
    Subscription asked;
    asked.name = gbk(series.value(QLatin1String("code")).toString());
    asked.isTicks = series.value(QLatin1String("kind")).toString() == QLatin1String("ticks");
    asked.frequency = gbk(series.value(QLatin1String("frequency")).toString());
    asked.status = context->codeServiceQuery(asked.name, asked.code, 0);
    if (asked.status.code == 0)
      asked.status = asked.isTicks ? context->subscribeQuote(asked.code, 0)
                                   : context->subscribeKline(asked.code, asked.frequency,
                                                             kUnsetTime, kUnsetTime, 0, 0);
    result.push_back(std::move(asked));
  }
  return result;
}

/// As `subscribeAll`, and ends the run with a clear text (`IContext::setError`) if there is nothing
/// to subscribe or a subscription was refused; answers an empty list then.
inline std::vector<Subscription> subscribeAllOrFail(IContext* context, const QJsonObject& params) {
  auto result = subscribeAll(context, params);
  std::string error;
  if (result.empty()) error = "no data to subscribe: the parameter \"data\" is empty";
  for (const Subscription& asked : result)
    if (asked.status.code != 0 && error.empty())
      error = "cannot subscribe " + asked.name +
              (asked.isTicks ? " ticks" : " bars " + asked.frequency) + ": code " +
              std::to_string(asked.status.code) + " " + asked.status.message;
  if (error.empty()) return result;
  context->setError(error);
  return {};
}

}  // namespace orvane
