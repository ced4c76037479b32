#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "EventStrategy/GeneralEventNotify.h"
#include "EventStrategy/IndexNotify.h"

namespace orvane::support {

/// Notes what the sources of general events and of index changes deliver. Any thread may call it.
class RecordingEventNotify final : public GeneralEventNotify, public IndexNotify {
 public:
  void onGeneralEvent(const std::string& topic, const std::map<std::string, std::string>& fields,
                      const std::string& detail) override {
    std::string text = topic + " [";
    for (const auto& [key, value] : fields) text += key + "=" + value + ",";
    note(text + "] " + detail);
  }
  void onElementChange(const ICodeID& code, std::list<IndexTradeElement>& elements) override {
    std::string text = std::to_string(code.id) + " " + code.code + " [";
    for (const IndexTradeElement& element : elements)
      text += std::to_string(element.code.id) + "=" + std::to_string(element.value) + ",";
    note(text + "]");
  }

  /// What came since the last time, in order.
  std::vector<std::string> take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(calls_, {});
  }

  /// Runs inside every call, after the note. Set it before calls come.
  std::function<void()> hook;

 private:
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
