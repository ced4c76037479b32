// Random schedules of what a strategy does with its dictionary source and a hostile service to it,
// against a model of the source's tables.

#include "tests/EventStrategy/DataSrcFixture.h"
#include "tests/EventStrategy/model/DataModel.h"
#include "tests/EventStrategy/model/OwnedSchedule.h"
#include "tests/EventStrategy/model/ScheduleTest.h"

namespace orvane::support {
namespace {

constexpr int kIds = 5;
const std::vector<std::string> kTexts = {"a", "b", ""};

class DataSchedule final : public OwnedSchedule<DataSrc, RecordingDataNotify, DataModel> {
 public:
  DataSchedule(FakePlatform& platform, std::uint64_t seed, HostileSeen& seen)
      : OwnedSchedule(platform, seed, seen, "data.",
                      {"data.subscribeData", "data.unsubscribeData", "data.subscribeSnapshot",
                       "data.unsubscribeSnapshot", "data.unsubscribeAllSnapshots"}) {}

 private:
  void takeStep() override {
    switch (below(20)) {
      case 0:
      case 1:
      case 2:
        return request(below(kIds));
      case 3:
      case 4:
        return cancel(below(kIds));
      case 5:
      case 6:
      case 7:
      case 8:
        return subscribe(aKey());
      case 9:
      case 10:
      case 11:
        return unsubscribe(aKey());
      case 12:
        return listen(oneIn(2));
      case 13:
        return oneIn(4) ? release() : listen(true);
      case 14:
        return oneIn(2) ? replace(model_.release()) : callBack();
      default:
        callBack();
        callBack();
    }
  }

  SnapshotKey aKey() { return {oneOf(kTexts), oneOf(kTexts)}; }

  // What the owner does.

  void request(int id) {
    tell("request " + std::to_string(id));
    expectCalls(model_.request(id));
    DataReq request;
    request.name = "dic";
    expectStatus(source_->subscribeData(request, id), true);
  }

  void cancel(int id) {
    tell("cancel " + std::to_string(id));
    const auto calls = model_.cancel(id);
    expectCalls(calls);
    EXPECT_EQ(source_->forgetRequest(id), !calls.empty());
    if (!calls.empty()) platform_.data().unsubscribeData(id);
  }

  void subscribe(const SnapshotKey& key) {
    tell("subscribe " + key.name + "/" + key.target);
    const int flags = below(8);
    expectCalls(model_.subscribe(key, flags));
    source_->subscribeDataSnapshot(key.name, key.target, flags);
  }

  void unsubscribe(const SnapshotKey& key) {
    tell("unsubscribe " + key.name + "/" + key.target);
    const int flags = below(8);
    expectCalls(model_.unsubscribe(key, flags));
    source_->unsubscribeDataSnapshot(key.name, key.target, flags);
  }

  void release() {
    tell("release");
    expectCalls(model_.release());
    source_->release();
  }

  // What the service does.

  void callBack() override {
    const auto spis = platform_.data().spis();
    const std::shared_ptr<DataSpi> spi = spis.empty() || !oneIn(4) ? source_ : oneOf(spis);
    const bool isHeard = model_.listens && spi.get() == source_.get();
    const int id = below(kIds), times = oneIn(6) ? 2 : 1;
    const SnapshotKey key = aKey();
    for (int i = 0; i < times; ++i) {
      if (oneIn(4))
        tellOwner(isHeard && model_.snapshots.contains(key),
                  "onDataSnapshot " + key.name + "/" + key.target + " 1:2:x", [&] {
                    spi->onSnapshot(key, {1, 2, "x"});
                  });
      else
        tellOfRequest(*spi, id, isHeard && model_.requests.contains(id));
    }
  }

  void tellOfRequest(DataSpi& spi, int id, bool isWanted) {
    const std::string of = " " + std::to_string(id) + " ";
    const int a = below(100), b = below(100), c = below(100);
    const std::string numbers = std::to_string(a) + " " + std::to_string(b);
    const ResultStatus status{a, "s"};
    const std::string rest = " status=" + std::to_string(a) + "s flag=" + std::to_string(b) +
                             " tag=" + std::to_string(c);
    switch (below(4)) {
      case 0:
        return tellOwner(isWanted, "onProgress" + of + numbers, [&] { spi.onProgress(id, a, b); });
      case 1:
        return tellOwner(isWanted, "onDeleteData" + of + numbers + " " + std::to_string(c),
                         [&] { spi.onDelete(id, {}, a, b, c); });
      case 2:
        return tellOwner(isWanted, "onData" + of + "[] type=0" + rest,
                         [&] { spi.onData(id, {}, status, b, c); });
      default: {
        DataResult result = resultOf({{a, b, "x"}, {a, b, "y"}});
        if (oneIn(2)) result.targets.push_back({"further", {{3, 3, "z"}}});
        const std::string key = std::to_string(a) + ":" + std::to_string(b);
        return tellOwner(isWanted, "onData" + of + "[" + key + ":x," + key + ":y,] type=3" + rest,
                         [&] { spi.onData(id, result, status, b, c); });
      }
    }
  }

  // What is compared.

  /// No call finds the source's books behind the owner's wishes, nor its locks held.
  void expectInside() override { expectTables(); }

  void expectTables() override {
    EXPECT_EQ(TestAccess::requestIds(*source_), model_.requests);
    EXPECT_EQ(TestAccess::snapshots(*source_), model_.snapshots);
    for (int id = 0; id < kIds; ++id)
      EXPECT_EQ(source_->isSubscribeData(id), model_.requests.contains(id));
    for (const std::string& name : kTexts)
      for (const std::string& target : kTexts)
        EXPECT_EQ(source_->isSubscribeDataSnapshot(name, target),
                  model_.snapshots.contains(SnapshotKey{target, name}));
  }
};

class DataSrcSchedule : public ScheduleTest {};

TEST_F(DataSrcSchedule, shouldKeepEveryPromiseInRandomSchedules) {
  take<DataSchedule>(1500, 60);
  if (HasFailure()) return;
  EXPECT_GT(seen.delivered, schedules);
  EXPECT_GT(seen.dropped, schedules);
  EXPECT_GT(seen.inside, schedules / 2);
  EXPECT_GT(seen.thrown, schedules / 2);
  EXPECT_GT(seen.refused, schedules / 8);
  EXPECT_GT(seen.replaced, schedules / 4);
}

}  // namespace
}  // namespace orvane::support
