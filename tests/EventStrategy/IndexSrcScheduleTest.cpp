// Random schedules of what a strategy does with its source of index changes and a hostile service
// to it, against a model of the source's set.

#include "EventStrategy/IndexSrc.h"
#include "tests/EventStrategy/RecordingEventNotify.h"
#include "tests/EventStrategy/model/IndexModel.h"
#include "tests/EventStrategy/model/OwnedSchedule.h"
#include "tests/EventStrategy/model/ScheduleTest.h"

namespace orvane::support {
namespace {

constexpr int kCodes = 4;

/// The source holds its mutex across each call of the service.
class IndexSchedule final : public OwnedSchedule<IndexSrc, RecordingEventNotify, IndexModel> {
 public:
  IndexSchedule(FakePlatform& platform, std::uint64_t seed, HostileSeen& seen)
      : OwnedSchedule(platform, seed, seen, "index.",
                      {"index.subscribeElementChange", "index.unsubscribeElementChange"}) {}

 private:
  void takeStep() override {
    switch (below(16)) {
      case 0:
      case 1:
      case 2:
      case 3:
        return subscribe(aCode());
      case 4:
      case 5:
        return unsubscribe(aCode());
      case 6:
        return withdrawAll("unsubscribe all", &IndexSrc::unsubscribeAll);
      case 7:
        return withdrawAll("release", &IndexSrc::release);
      case 8:
        return listen(oneIn(2));
      case 9:
        return oneIn(2) ? replace(model_.withdrawAll()) : listen(true);
      default:
        callBack();
        callBack();
    }
  }

  /// Codes are known by their id alone, so their texts vary.
  ICodeID aCode() { return codeOf(below(kCodes), std::string(1, "XYZ"[below(3)])); }

  // What the owner does.

  void subscribe(const ICodeID& code) {
    tell("subscribe " + std::to_string(code.id));
    expectCalls(model_.subscribe(code.id));
    source_->subscribeElementChange(code);
  }

  void unsubscribe(const ICodeID& code) {
    tell("unsubscribe " + std::to_string(code.id));
    expectCalls(IndexModel::unsubscribe(code.id));
    source_->unsubscribeElementChange(code);
    model_.unsubscribed(code.id);
  }

  void withdrawAll(const std::string& how, void (IndexSrc::*operation)()) {
    tell(how);
    expectCalls(model_.withdrawAll());
    (source_.get()->*operation)();
  }

  // What the service does.

  struct CallBack {
    std::shared_ptr<IndexTradeSpi> spi;
    ICodeID code;
    int64 value = 0;

    void operator()() const {
      std::list<IndexTradeElement> elements = {{codeOf(3), value}};
      spi->onElementChange(code, elements);
    }
  };

  CallBack drawCallBack() {
    const auto spis = platform_.indexes.spis();
    return {spis.empty() || !oneIn(4) ? source_ : oneOf(spis), aCode(), below(1000)};
  }

  void callBack() override {
    const CallBack call = drawCallBack();
    for (int times = oneIn(6) ? 2 : 1; times > 0; --times) {
      judge(call);
      call();
    }
  }

  void act() override {
    if (mood() == Mood::Throws && !oneIn(3)) throwNow();
    if (mood() != Mood::CallsAtOnce && mood() != Mood::CallsFromAThread) return;
    if (isCalledBeside()) return;
    pending_ = drawCallBack();
    callBackBeside(*pending_);
  }

  /// Who called during the operation is heard after it, if still wanted then.
  void afterStep() override {
    if (pending_) judge(*pending_);
    pending_.reset();
  }

  void judge(const CallBack& call) {
    expectDelivery(
        model_.listens && call.spi.get() == source_.get() && model_.codes.contains(call.code.id),
        std::to_string(call.code.id) + " " + call.code.code + " [3=" + std::to_string(call.value) +
            ",]");
  }

  // What is compared.

  void expectTables() override {
    std::set<int64> ids;
    for (const ICodeID& code : TestAccess::codes(*source_)) ids.insert(code.id);
    EXPECT_EQ(ids, model_.codes);
  }

  std::optional<CallBack> pending_;
};

class IndexSrcSchedule : public ScheduleTest {};

TEST_F(IndexSrcSchedule, shouldKeepEveryPromiseInRandomSchedules) {
  take<IndexSchedule>(1500, 60);
  if (HasFailure()) return;
  EXPECT_GT(seen.delivered, schedules);
  EXPECT_GT(seen.dropped, schedules);
  EXPECT_GT(seen.inside, schedules / 2);
  EXPECT_GT(seen.thrown, schedules / 2);
  EXPECT_GT(seen.replaced, schedules / 4);
}

}  // namespace
}  // namespace orvane::support
