#include <orvane/sdk/Strategy.h>
#include <orvane/sdk/Subscriptions.h>

namespace {

/// Has seen enough after ten bars.
class Finishing : public orvane::Strategy {
 public:
  void onStart(orvane::IContext* context, const QJsonObject& params) override {
    orvane::subscribeAllOrFail(context, params);
  }
  void onBarSeries(orvane::IContext* context, const orvane::ICodeID&, const std::string&,
                   const std::vector<orvane::IKLine>& bars, const orvane::ResultStatus&,
                   int) override {
    count_ += bars.size();
    if (count_ == 10) context->setFinish();
  }

 private:
  std::size_t count_ = 0;
};

}  // namespace

ORVANE_STRATEGY(Finishing)
