#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "EventStrategy/DataNotify.h"

namespace orvane::support {

/// Notes what a dictionary source delivers. Any thread may call it.
class RecordingDataNotify final : public DataNotify {
 public:
  void onDataSnapshot(const std::string& name, const std::string& target,
                      const Record& record) override {
    note("onDataSnapshot " + name + "/" + target + " " + textOf(record));
  }
  void onProgress(int requestId, int progress1, int progress2) override {
    note("onProgress " + std::to_string(requestId) + " " + std::to_string(progress1) + " " +
         std::to_string(progress2));
  }
  void onData(int requestId, const std::list<Record>& records, DataValueType valueType,
              const ResultStatus& status, int batchFlag, int64 batchTag) override {
    std::string text = "onData " + std::to_string(requestId) + " [";
    for (const Record& record : records) text += textOf(record) + ",";
    note(text + "] type=" + std::to_string(static_cast<int>(valueType)) +
         " status=" + std::to_string(status.code) + status.message +
         " flag=" + std::to_string(batchFlag) + " tag=" + std::to_string(batchTag));
  }
  void onDeleteData(int requestId, int64 deleted1, int64 deleted2, int64 deleted3) override {
    note("onDeleteData " + std::to_string(requestId) + " " + std::to_string(deleted1) + " " +
         std::to_string(deleted2) + " " + std::to_string(deleted3));
  }

  /// What came since the last time, in order.
  std::vector<std::string> take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(calls_, {});
  }

  /// Runs inside every call, after the note. Set it before calls come.
  std::function<void()> hook;

 private:
  static std::string textOf(const Record& record) {
    return std::to_string(record.key) + ":" + std::to_string(record.value2) + ":" + record.text;
  }
  void note(std::string call) {
    {
      const std::lock_guard lock(mutex_);
      calls_.push_back(std::move(call));
    }
    if (hook) hook();
  }

  std::mutex mutex_;
  std::vector<std::string> calls_;
};

}  // namespace orvane::support
