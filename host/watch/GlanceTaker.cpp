#include "host/watch/GlanceTaker.h"

#include <utility>

#include "host/Report.h"
#include "host/TimeArgument.h"
#include "shared/TextCodec.h"

namespace orvane {
namespace {

/// A call-back that lasts longer is told.
constexpr double kLongSeconds = 1;
/// How long a run goes on before it can be told when it ends.
constexpr double kSecondsToKnow = 1;

std::string titleOf(const RunPlan& plan) {
  if (plan.runners.size() == 1) return plan.runners.front().name;
  return std::to_string(plan.runners.size()) + " runners";
}

}  // namespace

GlanceTaker::GlanceTaker(WatchView& view, Parts parts) : view_(view), parts_(std::move(parts)) {
  view_.setSource([this] { return take(); });
}

void GlanceTaker::note(const PlaybackProgress& progress) {
  const std::lock_guard lock(mutex_);
  progress_ = progress;
  hasProgress_ = true;
}

void GlanceTaker::noteEnd() {
  const std::lock_guard lock(mutex_);
  isOver_ = true;
}

std::string GlanceTaker::timeText(int64 utcMs) const {
  const int64 offset = parts_.platform.zoneOffsetMs(OVTimeZone::Platform, utcMs);
  std::string text = isoTime(utcMs + offset).substr(0, 19);
  text[10] = ' ';
  return text;
}

Glance GlanceTaker::take() {
  Glance glance;
  const double seconds = std::chrono::duration<double>(Clock::now() - began_).count();
  glance.title = titleOf(parts_.plan);
  glance.timeZone = parts_.timeZone;
  glance.elapsedSeconds = seconds;
  addProgress(seconds, glance);
  addRunners(seconds, glance);
  addTrading(glance);
  return glance;
}

void GlanceTaker::addProgress(double seconds, Glance& glance) {
  const std::lock_guard lock(mutex_);
  glance.phase = parts_.interrupts.isInterrupted() ? "stopping"
                 : isOver_                         ? "ending"
                 : !hasProgress_                   ? "starting"
                 : parts_.plan.isLive              ? "live"
                                                   : "playing";
  glance.delivered = progress_.delivered;
  glance.total = progress_.total;
  glance.recordsPerSecond = recordRate_.note(seconds, progress_.delivered);
  // By the mean since the beginning, so that it does not jump.
  const bool isOnItsWay = hasProgress_ && !isOver_ && !parts_.interrupts.isInterrupted();
  if (isOnItsWay && seconds > kSecondsToKnow && glance.delivered > 0)
    glance.leftSeconds = seconds * static_cast<double>(glance.total - glance.delivered) /
                         static_cast<double>(glance.delivered);
  if (const int64 now = parts_.platform.nowUtcMs(); now != kUnsetTime && hasProgress_)
    glance.time = timeText(now);
}

void GlanceTaker::addRunners(double seconds, Glance& glance) {
  const std::vector<RunnerStanding> standings = parts_.board.look();
  callRates_.resize(standings.size());
  stays_.resize(standings.size());
  for (std::size_t i = 0; i < standings.size(); ++i) {
    const RunnerStanding& standing = standings[i];
    RunnerGlance& runner = glance.runners.emplace_back();
    runner.name = standing.name;
    runner.status = runnerStatusName(standing.status);
    runner.isError = standing.status == RunnerError;
    runner.message = standing.message;
    runner.calls = standing.calls;
    runner.callsPerSecond = callRates_[i].note(seconds, standing.calls);
    Stay& stay = stays_[i];
    if (stay.calls != standing.calls || stay.inside != standing.inside)
      stay = {standing.calls, standing.inside, seconds};
    if (seconds - stay.since >= kLongSeconds) runner.callback = standing.callback();
  }
}

void GlanceTaker::addTrading(Glance& glance) const {
  std::map<std::string, AccountGlance> accounts;
  for (AccountGlance& account : parts_.platform.glanceAtTrading()) {
    std::string name = gbkToUtf8(account.account.account);
    accounts.emplace(std::move(name), std::move(account));
  }
  for (std::size_t i = 0; i < glance.runners.size(); ++i) {
    const RunnerPlan& plan = parts_.plan.runners[i];
    const auto account = accounts.find(plan.account);
    if (account == accounts.end()) continue;
    RunnerGlance& runner = glance.runners[i];
    runner.startBalance = runner.equity = account->second.startBalance;
    const std::string source = utf8ToGbk(plan.orderSource);
    for (const SourceGlance& made : account->second.sources) {
      if (made.source != source) continue;
      runner.equity += made.result;
      for (const PositionGlance& held : made.positions)
        runner.holdings.push_back({reportedCode(held.code), held.longVolume - held.shortVolume});
    }
  }
}

}  // namespace orvane
