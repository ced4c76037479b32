#include <orvane/sdk/Strategy.h>
#include <orvane/sdk/Subscriptions.h>
#include <orvane/sdk/Views.h>

// Tells its host, through the environment, what it saw: how many bars, and the sum of their closes.
class BarCounter : public orvane::Strategy {
 public:
  void onStart(orvane::IContext* context, const QJsonObject& params) override {
    orvane::subscribeAllOrFail(context, params);
  }

  void onBarSeries(orvane::IContext* context, const orvane::ICodeID&, const std::string& frequency,
                   const std::vector<orvane::IKLine>& bars, const orvane::ResultStatus&,
                   int) override {
    for (const orvane::IKLine& bar : bars) {
      ++count_;
      sum_ += static_cast<long>(orvane::KLineView(bar).close());
    }
    context->setEnvs({{"bars", std::to_string(count_)},
                      {"closes", std::to_string(sum_)},
                      {"frequency", frequency}},
                     true);
  }

 private:
  int count_ = 0;
  long sum_ = 0;
};

ORVANE_STRATEGY(BarCounter)
