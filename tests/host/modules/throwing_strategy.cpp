#include <orvane/sdk/Strategy.h>
#include <orvane/sdk/Subscriptions.h>
#include <stdexcept>

namespace {

class Throwing : public orvane::Strategy {
 public:
  void onStart(orvane::IContext* context, const QJsonObject& params) override {
    orvane::subscribeAllOrFail(context, params);
  }
  void onBarSeries(orvane::IContext*, const orvane::ICodeID&, const std::string&,
                   const std::vector<orvane::IKLine>& bars, const orvane::ResultStatus&,
                   int) override {
    if (!bars.empty()) throw std::runtime_error("not this bar");
  }
};

}  // namespace

ORVANE_STRATEGY(Throwing)
