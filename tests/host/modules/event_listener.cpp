// How a strategy hears what `IStrategy` has no call-back for: through an event strategy of its own.

#include <orvane/EventStrategy/AbstractEventStrategy.h>
#include <orvane/EventStrategy/Events.h>
#include <orvane/sdk/Strategy.h>

#include <memory>
#include <mutex>
#include <string>

namespace {

/// Keeps a line for each event. It is called on threads of the platform.
class Ear final : public orvane::AbstractEventStrategy {
 public:
  void pushEvent(orvane::IEvent* event) override {
    const std::unique_ptr<orvane::IEvent> owned(event);
    const std::lock_guard lock(mutex_);
    if (event->type == orvane::EventTypeEvent) {
      const auto& told = static_cast<const orvane::GeneralEvent&>(*event);
      heard_ += told.topic;
      for (const auto& [field, value] : told.fields) heard_ += " " + field + "=" + value;
      heard_ += ";";
    } else if (event->type == orvane::EventTypeIndexElementChange) {
      const auto& change = static_cast<const orvane::IndexElementChangeEvent&>(*event);
      heard_ += change.code.code + ":";
      for (const auto& element : change.elements) heard_ += " " + element.code.code;
      heard_ += ";";
    }
  }

  std::string heard() {
    const std::lock_guard lock(mutex_);
    return heard_;
  }

 private:
  std::mutex mutex_;
  std::string heard_;
};

class EventListener : public orvane::Strategy {
 public:
  void onStart(orvane::IContext* context, const QJsonObject&) override {
    ear_ = std::make_unique<Ear>();
    ear_->startEvent();
    ear_->subscribeGeneralEvent("news", "open", {});
    orvane::ICodeID index;
    if (context->codeServiceQuery("I.X", index, 0).code == 0) ear_->subscribeElementChange(index);
  }
  void onStop(orvane::IContext* context) override {
    ear_->stopEvent();
    context->setEnv("heard", ear_->heard(), true);
  }

 private:
  std::unique_ptr<Ear> ear_;
};

}  // namespace

ORVANE_STRATEGY(EventListener)
