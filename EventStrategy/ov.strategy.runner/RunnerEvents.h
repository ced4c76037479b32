#pragma once

#include <QJsonObject>
#include <memory>
#include <string>
#include <utility>

#include "EventStrategy/IEvent.h"

namespace orvane {

class RunnerContext;

enum class RunnerEventKind : std::int32_t {
  Start = 0,
  Stop = 1,
  Error = 2,
  Finish = 3,
  Update = 4,
  Reset4PlayBack = 5,
};

/// A control event: a requested change of a run, in one stream with the data events. A stop, error
/// or finish holds its runner, so that it reaches the strategy even if the host lets go right
/// after it asked.
struct IRunnerEvent : IEvent {
  explicit IRunnerEvent(RunnerEventKind kind, std::shared_ptr<RunnerContext> runner = {})
      : IEvent(0), runnerKind(kind), holder(std::move(runner)) {}

  RunnerEventKind runnerKind;
  std::shared_ptr<RunnerContext> holder;
};

struct RunnerStartEvent : IRunnerEvent {
  explicit RunnerStartEvent(QJsonObject p)
      : IRunnerEvent(RunnerEventKind::Start), params(std::move(p)) {}
  QJsonObject params;
};

struct RunnerStopEvent : IRunnerEvent {
  explicit RunnerStopEvent(std::shared_ptr<RunnerContext> runner)
      : IRunnerEvent(RunnerEventKind::Stop, std::move(runner)) {}
};

struct RunnerErrorEvent : IRunnerEvent {
  RunnerErrorEvent(std::shared_ptr<RunnerContext> runner, std::string text)
      : IRunnerEvent(RunnerEventKind::Error, std::move(runner)), message(std::move(text)) {}
  std::string message;
};

struct RunnerFinishEvent : IRunnerEvent {
  explicit RunnerFinishEvent(std::shared_ptr<RunnerContext> runner)
      : IRunnerEvent(RunnerEventKind::Finish, std::move(runner)) {}
};

struct RunnerUpdateEvent : IRunnerEvent {
  explicit RunnerUpdateEvent(QJsonObject p)
      : IRunnerEvent(RunnerEventKind::Update), params(std::move(p)) {}
  QJsonObject params;
};

struct RunnerReset4PlayBackEvent : IRunnerEvent {
  explicit RunnerReset4PlayBackEvent(QJsonObject p)
      : IRunnerEvent(RunnerEventKind::Reset4PlayBack), params(std::move(p)) {}
  QJsonObject params;
};

}  // namespace orvane
