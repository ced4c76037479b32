#include <orvane/sdk/Strategy.h>

namespace {

/// Publishes a long record and is done, before anything is played.
class PublishingFinisher : public orvane::Strategy {
 public:
  void onStart(orvane::IContext* context, const QJsonObject&) override {
    context->publishRecords("d", "t", 0, {{1, 0, std::string(1'000'000, 'x')}}, 0);
    context->setFinish();
  }
};

}  // namespace

ORVANE_STRATEGY(PublishingFinisher)
