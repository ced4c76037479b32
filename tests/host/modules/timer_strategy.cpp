#include <orvane/sdk/Strategy.h>
#include <orvane/sdk/Subscriptions.h>

namespace {

/// Draws a timer and request ids, which are unique in the process: what this one receives must not
/// show how many others draw theirs.
class TimerStrategy : public orvane::Strategy {
 public:
  void onStart(orvane::IContext* context, const QJsonObject& params) override {
    const auto asked = orvane::subscribeAllOrFail(context, params);
    for (const auto& series : asked)
      if (!series.isTicks)
        context->subscribeKline(context->generateRequestId(), series.code, series.frequency,
                                orvane::kUnsetTime, orvane::kUnsetTime, 0, 0);
    context->createTimer(60'000, 0, 20);
  }
  void onTimer(orvane::IContext* context, int timerId, orvane::int64) override {
    ++fired_;
    context->notifySpi({{"fired", fired_}});
    if (fired_ % 5 != 0) return;
    context->stopTimer(timerId);
    context->createTimer(45'000, 0, 20);
  }

 private:
  int fired_ = 0;
};

}  // namespace

ORVANE_STRATEGY(TimerStrategy)
