#include "EventStrategy/ov.strategy.runner/StrategyLog.h"

#include "EventStrategy/Log.h"

namespace orvane {

bool isStrategyLogged(StrategyLogLevel level, bool toStg) {
  using detail::LogLevel;
  static_assert(static_cast<int>(StrategyLogLevel::Trace) == static_cast<int>(LogLevel::Trace) &&
                static_cast<int>(StrategyLogLevel::Error) == static_cast<int>(LogLevel::Error));
  const detail::Loggers& all = detail::loggers();
  return detail::isEnabled(toStg ? all.stg : all.stgF, static_cast<LogLevel>(level));
}

}  // namespace orvane
