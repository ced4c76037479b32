// Random schedules of what a strategy does with its source of index changes and a hostile service
// to it, against a model of the source's set.

#include "EventStrategy/IndexSrc.h"
#include "tests/EventStrategy/RecordingEventNotify.h"
#include "tests/EventStrategy/model/HostileSchedule.h"
#include "tests/EventStrategy/model/IndexModel.h"
#include "tests/EventStrategy/model/ScheduleTest.h"

namespace orvane::support {
namespace {

constexpr int kCodes = 4;

/// The source holds its mutex across each call of the service.
class IndexSchedule final : public HostileSchedule {
 public:
  IndexSchedule(FakePlatform& platform, std::uint64_t seed, HostileSeen& seen)
      : HostileSchedule(platform, seed, seen, "index.",
                        {"index.subscribeElementChange", "index.unsubscribeElementChange"}) {
    source_->setNotify(&owner_);
  }
  ~IndexSchedule() override { source_->setNotify(nullptr); }

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
        return oneIn(2) ? replace() : listen(true);
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

  void listen(bool listens) {
    tell(listens ? "listen" : "do not listen");
    model_.listens = listens;
    source_->setNotify(listens ? &owner_ : nullptr);
  }

  /// The owner goes and another comes; the service still has the old source's pointers.
  void replace() {
    tell("replace");
    ++seen_.replaced;
    listen(false);
    expectCalls(model_.withdrawAll());
    const auto old = std::exchange(source_, std::make_shared<IndexSrc>());
    listen(true);
    old->release();
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

  Lines takeDeliveries() override { return owner_.take(); }
  void expectTables() override {
    std::set<int64> ids;
    for (const ICodeID& code : TestAccess::codes(*source_)) ids.insert(code.id);
    EXPECT_EQ(ids, model_.codes);
  }

  RecordingEventNotify owner_;
  std::shared_ptr<IndexSrc> source_ = std::make_shared<IndexSrc>();
  IndexModel model_;
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
