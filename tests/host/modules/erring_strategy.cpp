#include <orvane/sdk/Strategy.h>
#include <orvane/sdk/Text.h>

namespace {

class Erring : public orvane::Strategy {
 public:
  void onStart(orvane::IContext* context, const QJsonObject&) override {
    context->setError(orvane::gbk("出错了: no luck"));
  }
};

}  // namespace

ORVANE_STRATEGY(Erring)
