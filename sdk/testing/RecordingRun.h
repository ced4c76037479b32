#pragma once

#include <QJsonObject>
#include <list>
#include <map>
#include <string>
#include <vector>

#include "EventStrategy/ov.strategy.runner/IContext.h"
#include "sdk/Text.h"
#include "sdk/testing/Recorded.h"
#include "sdk/testing/ScriptedAnswers.h"

namespace orvane::detail {

/// The part of a `RecordingContext` that is about the run itself: how it ends, its environment,
/// its log, its timers.
class RecordingRun : public IContext {
 public:
  /// How the strategy ended the run.
  enum class End { None, Stopped, Finished, Error };

  ScriptedAnswers script;  ///< What the test wants to be answered.
  int64 now = 0;           ///< The present, UTC milliseconds; a harness moves it.

  // What the strategy did.

  End ending = End::None;                  ///< How it ended the run, if it did.
  std::string error;                       ///< The text of `setError`, UTF-8.
  std::vector<RecordedLog> logs;           ///< Its lines.
  std::vector<RecordedTimer> timers;       ///< All that it started.
  std::vector<QJsonObject> notifications;  ///< Of `notifySpi`.

  /// Whether a line of the log has this text in it, UTF-8.
  bool logged(const std::string& part) const {
    for (const RecordedLog& line : logs)
      if (line.text.find(part) != std::string::npos) return true;
    return false;
  }

  std::string name() override { return ownName; }
  std::string ownName = "test";  ///< What `name` answers.

  bool isSetStop() override { return ending != End::None; }
  void setError(const std::string& message) override {
    if (isSetStop()) return;
    ending = End::Error;
    error = utf8(message);
  }
  void setFinish() override {
    if (!isSetStop()) ending = End::Finished;
  }
  void stop() override {
    if (!isSetStop()) ending = End::Stopped;
  }
  void notifySpi(const QJsonObject& argument) override { notifications.push_back(argument); }

  void setEnvs(const std::map<std::string, std::string>& values, bool) override {
    for (const auto& [key, value] : values) envs_[key] = value;
  }
  void setEnv(const std::string& key, const std::string& value, bool store) override {
    setEnvs({{key, value}}, store);
  }
  void clearEnv() override { envs_.clear(); }
  std::string env(const std::string& key, const std::string& defaultValue) override {
    const auto found = envs_.find(key);
    return found == envs_.end() ? defaultValue : found->second;
  }
  std::map<std::string, std::string> envs() override { return envs_; }
  void setEnvItems(const std::list<EnvItem>& items, bool) override {
    for (const EnvItem& item : items) envItems_[item.group][item.key] = item;
  }
  void setEnvItem(const EnvItem& item, bool store) override { setEnvItems({item}, store); }
  void clearEnvItems() override { envItems_.clear(); }
  std::list<EnvItem> envItems(const std::string& group) override {
    std::list<EnvItem> result;
    if (const auto found = envItems_.find(group); found != envItems_.end())
      for (const auto& [key, item] : found->second) result.push_back(item);
    return result;
  }

  int generateRequestId() override { return ++lastId_; }

  void logTrace(const std::string& message, bool toStg) override {
    logs.push_back({RecordedLog::Level::Trace, utf8(message), toStg});
  }
  void logDebug(const std::string& message, bool toStg) override {
    logs.push_back({RecordedLog::Level::Debug, utf8(message), toStg});
  }
  void logInfo(const std::string& message, bool toStg) override {
    logs.push_back({RecordedLog::Level::Info, utf8(message), toStg});
  }
  void logWarn(const std::string& message, bool toStg) override {
    logs.push_back({RecordedLog::Level::Warn, utf8(message), toStg});
  }
  void logError(const std::string& message, bool toStg) override {
    logs.push_back({RecordedLog::Level::Error, utf8(message), toStg});
  }

  int createTimer(int64 interval, int64 beginTime, int triggerCount) override {
    const bool isEndless = triggerCount <= 0 || triggerCount == kNoLimit;
    const bool keepsPhase = beginTime > 0 && interval > 0;
    int64 due = beginTime;
    if (beginTime < now) due = keepsPhase ? now - (now - beginTime) % interval : now;
    timers.push_back({++lastId_, interval, due, interval <= 0 ? 1 : isEndless ? -1 : triggerCount});
    return lastId_;
  }
  void stopTimer(int timerId) override {
    for (RecordedTimer& timer : timers)
      if (timer.id == timerId) timer.isStopped = true;
  }

 protected:
  /// The scripted answer of an operation, or success.
  ResultStatus answer(const std::string& operation) {
    ResultStatus status;
    script.take(operation, status);
    return status;
  }

 private:
  std::map<std::string, std::string> envs_;
  std::map<std::string, std::map<std::string, EnvItem>> envItems_;
  int lastId_ = 0;
};

}  // namespace orvane::detail
