#include <orvane/sdk/Params.h>
#include <orvane/sdk/Strategy.h>
#include <orvane/sdk/Subscriptions.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <utility>

namespace {

/// Says "waiting" at its first bar and stays inside that call-back until somebody opens the pipe
/// "gate" for writing. With "refuse", it does so before anything is played, and refuses that then.
class Waiting : public orvane::Strategy {
 public:
  void onStart(orvane::IContext* context, const QJsonObject& params) override {
    gate_ = params["gate"].toString().toStdString();
    if (params["refuse"].toBool()) {
      wait();
      return context->setError("not this");
    }
    orvane::subscribeAllOrFail(context, params);
  }
  void onBarSeries(orvane::IContext*, const orvane::ICodeID&, const std::string&,
                   const std::vector<orvane::IKLine>&, const orvane::ResultStatus&, int) override {
    wait();
  }
  void onStop(orvane::IContext*) override { std::puts("stopped"); }

 private:
  void wait() {
    if (gate_.empty()) return;
    std::puts("waiting");
    std::fflush(stdout);
    const std::ifstream opened(std::exchange(gate_, {}));
  }

  std::string gate_;
};

}  // namespace

ORVANE_STRATEGY(Waiting)
