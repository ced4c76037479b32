#pragma once

#include <memory>
#include <string>
#include <vector>

#include "EventStrategy/DataSrc.h"
#include "tests/EventStrategy/LibraryTest.h"
#include "tests/EventStrategy/RecordingDataNotify.h"

namespace orvane::support {

/// A batch of one target with these records.
inline DataResult resultOf(std::list<Record> records, int valueType = 3) {
  return {"dic", static_cast<DataValueType>(valueType), {{"target", std::move(records)}}};
}

/// A dictionary source that a recording notify is attached to.
class DataSrcTest : public LibraryTest {
 protected:
  DataSrcTest() {
    src->setNotify(&notify);
    platform.calls.clear();
  }
  ~DataSrcTest() override {
    src->setNotify(nullptr);
    platform.forgetSpis();
  }

  std::vector<std::string> dataCalls() const { return platform.calls.entries("data."); }

  ResultStatus subscribe(int requestId, const std::string& target = "key") {
    DataReq request;
    request.name = "dic";
    request.targets = {target};
    request.beginTime = 1;
    request.endTime = 2;
    request.count = 3;
    request.flags = 4;
    return src->subscribeData(request, requestId);
  }

  /// What a service does that ends a request as the strategy base does.
  void unsubscribe(int requestId) {
    if (src->forgetRequest(requestId)) platform.data().unsubscribeData(requestId);
  }

  /// Counts how often it ran, with all of the source's locks free.
  void expectLocksFreeIn(std::initializer_list<const char*> operations) {
    for (const char* operation : operations)
      platform.calls.onCall(operation, [this] {
        ++checks;
        EXPECT_TRUE(TestAccess::dataMutexIsFree(*src));
        EXPECT_TRUE(TestAccess::notifyMutexIsFree(*src));
      });
  }

  int checks = 0;
  RecordingDataNotify notify;
  std::shared_ptr<DataSrc> src = std::make_shared<DataSrc>(0);
};

}  // namespace orvane::support
