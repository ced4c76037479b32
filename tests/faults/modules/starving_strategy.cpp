#include <orvane/sdk/Strategy.h>
#include <orvane/sdk/Subscriptions.h>

#include <new>

namespace {

/// Finds no memory for every third bar.
class Starving : public orvane::Strategy {
 public:
  void onStart(orvane::IContext* context, const QJsonObject& params) override {
    orvane::subscribeAllOrFail(context, params);
  }
  void onBarSeries(orvane::IContext* context, const orvane::ICodeID&, const std::string&,
                   const std::vector<orvane::IKLine>& bars, const orvane::ResultStatus&,
                   int) override {
    if (bars.empty()) return;
    if (++bars_ % 3 == 0) throw std::bad_alloc();
    context->setEnvs({{"taken", std::to_string(++taken_)}}, true);
  }

 private:
  int bars_ = 0;
  int taken_ = 0;
};

}  // namespace

ORVANE_STRATEGY(Starving)
