// Sources that several threads use at once: whatever they saw, it can be told as one operation
// after the other.

#include <atomic>
#include <latch>
#include <thread>

#include "tests/EventStrategy/RecordingDataNotify.h"
#include "tests/EventStrategy/RecordingEventNotify.h"
#include "tests/EventStrategy/model/DataModel.h"
#include "tests/EventStrategy/model/GeneralEventModel.h"
#include "tests/EventStrategy/model/IndexModel.h"
#include "tests/EventStrategy/model/Linearity.h"
#include "tests/EventStrategy/model/QuoteKeeper.h"
#include "tests/EventStrategy/model/QuoteModel.h"
#include "tests/EventStrategy/model/ScheduleTest.h"

namespace orvane::support {
namespace {

/// What the operation that this thread is in made the service and the owner see.
thread_local std::string seenHere;

std::string yesOrNo(bool yes) { return yes ? "yes;" : "no;"; }

/// The names of the calls, without what they are given.
std::string namesOf(const std::vector<std::string>& calls) {
  std::string names;
  for (const std::string& call : calls) names += call.substr(0, call.find(' ')) + ";";
  return names;
}

/// The owner's side of a source: notes in `seenHere` that it heard something.
template <typename Notify>
class Owner {
 public:
  Owner() {
    notify.hook = [] { seenHere += "heard;"; };
  }
  Notify notify;
};

class QuoteSubject {
 public:
  using Model = QuoteModel;
  static constexpr int kKinds = 9;
  static inline const std::vector<std::string> kOperations = {
      "quote.subscribeQuote", "quote.unsubscribeQuote", "quote.subscribeBars",
      "quote.cancelRequest", "quote.unsubscribeSpi"};

  explicit QuoteSubject(FakePlatform&) { source_->setNotify(&owner_.notify); }
  ~QuoteSubject() { source_->setNotify(nullptr); }

  static std::string apply(Model& model, const Witnessed& of) {
    switch (of.kind) {
      case 0:
      case 1:
        return namesOf(model.subscribeQuote(of.key, 0));
      case 2:
      case 3:
        return namesOf(model.unsubscribeQuote(of.key, 0));
      case 4:
        return namesOf(model.request(of.key, {}, ""));
      case 5:
        return namesOf(model.cancel(of.key));
      case 6:
        return model.subscribers.contains(of.key) ? "heard;" : "";
      case 7:
        return model.requests.contains(of.key) ? "heard;" : "";
      default:
        return of.key == 0 ? namesOf(model.release()) : yesOrNo(model.subscribers.contains(of.key));
    }
  }

  void perform(int kind, int key) {
    switch (kind) {
      case 0:
      case 1:
        source_->subscribeQuote(codeOf(key), 0);
        return;
      case 2:
      case 3:
        source_->unsubscribeQuote(codeOf(key), 0);
        return;
      case 4:
        source_->subscribeKline(codeOf(key), "1m", 0, 0, 0, 0, key);
        return;
      case 5:
        source_->unsubscribeKline(key);
        return;
      case 6:
        return source_->onQuote(quoteOf(key));
      case 7:
        return source_->onKLineProgress(key, {});
      default:
        if (key == 0) return source_->release();
        seenHere += yesOrNo(source_->isSubscribeQuote(codeOf(key)));
    }
  }

 private:
  Owner<QuoteKeeper> owner_;
  std::shared_ptr<QuoteSrc> source_ = std::make_shared<QuoteSrc>(0);
};

class DataSubject {
 public:
  using Model = DataModel;
  static constexpr int kKinds = 9;
  static inline const std::vector<std::string> kOperations = {
      "data.subscribeData", "data.unsubscribeData", "data.subscribeSnapshot",
      "data.unsubscribeSnapshot", "data.unsubscribeAllSnapshots"};

  explicit DataSubject(FakePlatform& platform) : platform_(platform) {
    source_->setNotify(&owner_.notify);
  }
  ~DataSubject() { source_->setNotify(nullptr); }

  static std::string apply(Model& model, const Witnessed& of) {
    switch (of.kind) {
      case 0:
      case 1:
        return namesOf(model.subscribe(keyOf(of.key), 0));
      case 2:
      case 3:
        return namesOf(model.unsubscribe(keyOf(of.key), 0));
      case 4:
        return namesOf(model.request(of.key));
      case 5:
        return namesOf(model.cancel(of.key));
      case 6:
        return model.snapshots.contains(keyOf(of.key)) ? "heard;" : "";
      case 7:
        return model.requests.contains(of.key) ? "heard;" : "";
      default:
        return of.key == 0 ? namesOf(model.release())
                           : yesOrNo(model.snapshots.contains(keyOf(of.key)));
    }
  }

  void perform(int kind, int key) {
    const std::string name = keyOf(key).name;
    switch (kind) {
      case 0:
      case 1:
        return source_->subscribeDataSnapshot(name, "t", 0);
      case 2:
      case 3:
        return source_->unsubscribeDataSnapshot(name, "t", 0);
      case 4:
        source_->subscribeData({}, key);
        return;
      case 5:
        if (source_->forgetRequest(key)) platform_.data().unsubscribeData(key);
        return;
      case 6:
        return source_->onSnapshot(keyOf(key), {});
      case 7:
        return source_->onProgress(key, 1, 2);
      default:
        if (key == 0) return source_->release();
        seenHere += yesOrNo(source_->isSubscribeDataSnapshot(name, "t"));
    }
  }

 private:
  static SnapshotKey keyOf(int key) { return {"t", std::to_string(key)}; }

  FakePlatform& platform_;
  Owner<RecordingDataNotify> owner_;
  std::shared_ptr<DataSrc> source_ = std::make_shared<DataSrc>(0);
};

class IndexSubject {
 public:
  using Model = IndexModel;
  static constexpr int kKinds = 6;
  static inline const std::vector<std::string> kOperations = {"index.subscribeElementChange",
                                                              "index.unsubscribeElementChange"};

  explicit IndexSubject(FakePlatform&) { source_->setNotify(&owner_.notify); }
  ~IndexSubject() { source_->setNotify(nullptr); }

  static std::string apply(Model& model, const Witnessed& of) {
    switch (of.kind) {
      case 0:
      case 1:
        return namesOf(model.subscribe(of.key));
      case 2:
        model.unsubscribed(of.key);
        return namesOf(IndexModel::unsubscribe(of.key));
      case 3:
        return namesOf(model.withdrawAll());
      default:
        return model.codes.contains(of.key) ? "heard;" : "";
    }
  }

  void perform(int kind, int key) {
    std::list<IndexTradeElement> elements;
    switch (kind) {
      case 0:
      case 1:
        return source_->subscribeElementChange(codeOf(key));
      case 2:
        return source_->unsubscribeElementChange(codeOf(key));
      case 3:
        return key == 0 ? source_->release() : source_->unsubscribeAll();
      default:
        return source_->onElementChange(codeOf(key), elements);
    }
  }

 private:
  Owner<RecordingEventNotify> owner_;
  std::shared_ptr<IndexSrc> source_ = std::make_shared<IndexSrc>();
};

class EventSubject {
 public:
  using Model = GeneralEventModel;
  static constexpr int kKinds = 5;
  static inline const std::vector<std::string> kOperations = {
      "event.subscribe", "event.unsubscribe", "event.unsubscribeTarget", "event.unsubscribeAll"};

  explicit EventSubject(FakePlatform&) { source_->setNotify(&owner_.notify); }
  ~EventSubject() { source_->setNotify(nullptr); }

  static std::string apply(Model& model, const Witnessed& of) {
    const std::string target = std::to_string(of.key);
    switch (of.kind) {
      case 0:
      case 1:
        return namesOf(model.subscribe(target, "n"));
      case 2:
        model.unsubscribed(target, "n");
        return namesOf(GeneralEventModel::unsubscribe(target, "n"));
      case 3: {
        const std::string names = namesOf(model.unsubscribeAll());
        model.table.clear();
        return names;
      }
      default:
        return of.key == 0 ? namesOf(model.release()) : "heard;";
    }
  }

  void perform(int kind, int key) {
    const std::string target = std::to_string(key);
    switch (kind) {
      case 0:
      case 1:
        return source_->subscribeEvent(target, "n", {});
      case 2:
        return source_->unsubscribeEvent(target, "n");
      case 3:
        return source_->unsubscribeAllEvent();
      default:
        return key == 0 ? source_->release() : source_->onGeneralEvent("", {}, "");
    }
  }

 private:
  Owner<RecordingEventNotify> owner_;
  std::shared_ptr<GeneralEventSrc> source_ = std::make_shared<GeneralEventSrc>();
};

template <typename Subject>
class SourceLinearity : public ScheduleTest {
 protected:
  static constexpr int kThreads = 3, kOperations = 4, kKeys = 2;

  SourceLinearity() {
    // A service is no quick thing: who waits for it meets the others.
    for (const std::string& operation : Subject::kOperations)
      platform.calls.onCall(operation, [operation] {
        seenHere += operation + ";";
        std::this_thread::yield();
      });
  }

  /// What threads see that each do what was drawn for them, all at once.
  History witness(Dice dice) {
    History history(kThreads, std::vector<Witnessed>(kOperations));
    for (auto& thread : history)
      for (Witnessed& each : thread) {
        each.kind = dice.below(Subject::kKinds);
        each.key = dice.below(kKeys);
      }
    Subject subject(platform);
    std::atomic<int> moment{0};
    std::latch go(kThreads);
    std::vector<std::thread> threads;
    for (auto& mine : history)
      threads.emplace_back([&subject, &moment, &go, &mine] {
        go.arrive_and_wait();
        for (Witnessed& each : mine) {
          seenHere.clear();
          each.begin = ++moment;
          subject.perform(each.kind, each.key);
          each.end = ++moment;
          each.result = seenHere;
        }
      });
    for (std::thread& thread : threads) thread.join();
    return history;
  }
};

using Subjects = ::testing::Types<QuoteSubject, DataSubject, IndexSubject, EventSubject>;
TYPED_TEST_SUITE(SourceLinearity, Subjects);

TYPED_TEST(SourceLinearity, shouldBehaveUnderManyThreadsAsIfTheyTookTurns) {
  int overlaps = 0;
  this->forEachSeed(500, [&](std::uint64_t seed) {
    const History history = this->witness(Dice(seed));
    EXPECT_TRUE(isLinear(history, typename TypeParam::Model(), &TypeParam::apply))
        << textOf(history);
    for (const Witnessed& one : history[0])
      for (const Witnessed& other : history[1])
        overlaps += one.begin < other.end && other.begin < one.end ? 1 : 0;
    this->platform.calls.clear();
    this->platform.forgetSpis();
  });
  std::printf("%d pairs of operations at once\n", overlaps);
}

}  // namespace
}  // namespace orvane::support
