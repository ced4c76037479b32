#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "EventStrategy/ov.strategy.runner/IRunnerSpi.h"

namespace orvane::support {

/// A host that notes what it hears, in order. Texts of an entry: "status 3 ", "status 1 why",
/// "notify {...}", "envs k=v,", "envItems group/key/kind/text,". Any thread may call it.
class RecordingRunnerSpi final : public IRunnerSpi {
 public:
  void onStatus(int status, const std::string& message) override;
  void onNotify(const QJsonObject& argument) override;
  void onEnvs(const std::map<std::string, std::string>& values) override;
  void onEnvItems(const std::list<EnvItem>& items) override;

  std::vector<std::string> calls() const;

  /// The status codes alone, in order, and the text of the last.
  std::vector<int> statuses() const;
  std::string lastMessage() const;

  /// The thread of the last call.
  std::thread::id lastThread() const;

  /// Runs inside every call, after the note, with no lock held. Set it before calls come.
  std::function<void(const std::string& call)> hook;

 private:
  void note(const std::string& call);

  mutable std::mutex mutex_;
  std::vector<std::string> calls_;
  std::vector<int> statuses_;
  std::string lastMessage_;
  std::thread::id lastThread_;
};

}  // namespace orvane::support
