#include "tests/support/RecordingRunnerSpi.h"

#include <QJsonDocument>

namespace orvane::support {

void RecordingRunnerSpi::note(const std::string& call) {
  {
    const std::lock_guard lock(mutex_);
    calls_.push_back(call);
    lastThread_ = std::this_thread::get_id();
  }
  if (hook) hook(call);
}

void RecordingRunnerSpi::onStatus(int status, const std::string& message) {
  {
    const std::lock_guard lock(mutex_);
    statuses_.push_back(status);
    lastMessage_ = message;
  }
  note("status " + std::to_string(status) + " " + message);
}

void RecordingRunnerSpi::onNotify(const QJsonObject& argument) {
  note("notify " + QJsonDocument(argument).toJson(QJsonDocument::Compact).toStdString());
}

void RecordingRunnerSpi::onEnvs(const std::map<std::string, std::string>& values) {
  std::string text = "envs ";
  for (const auto& [key, value] : values) text += key + "=" + value + ",";
  note(text);
}

void RecordingRunnerSpi::onEnvItems(const std::list<EnvItem>& items) {
  std::string text = "envItems ";
  for (const EnvItem& item : items)
    text += item.group + "/" + item.key + "/" + std::to_string(item.kind) + "/" + item.text + ",";
  note(text);
}

std::vector<std::string> RecordingRunnerSpi::calls() const {
  const std::lock_guard lock(mutex_);
  return calls_;
}

std::vector<int> RecordingRunnerSpi::statuses() const {
  const std::lock_guard lock(mutex_);
  return statuses_;
}

std::string RecordingRunnerSpi::lastMessage() const {
  const std::lock_guard lock(mutex_);
  return lastMessage_;
}

std::thread::id RecordingRunnerSpi::lastThread() const {
  const std::lock_guard lock(mutex_);
  return lastThread_;
}

}  // namespace orvane::support
