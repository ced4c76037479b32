#include "host/StopTeller.h"

#include <fmt/core.h>

#include <algorithm>
#include <utility>

#include "host/Console.h"

namespace orvane {
namespace {

std::string& onceMore() {
  static std::string text = "Ctrl-C once more ends at once, without summary and report";
  return text;
}

/// The first few of a list, and how many more there are.
std::string joined(const std::vector<std::string>& texts) {
  constexpr std::size_t kMostNamed = 3;
  std::string result;
  for (std::size_t i = 0; i < std::min(texts.size(), kMostNamed); ++i)
    result += (i == 0 ? "" : ", ") + texts[i];
  if (texts.size() > kMostNamed) result += fmt::format(" and {} more", texts.size() - kMostNamed);
  return result;
}

}  // namespace

StopTeller::StopTeller(InterruptWatcher& interrupts, const RunnerBoard& board)
    : interrupts_(interrupts), board_(board) {
  interrupts_.setReminder([this](int seconds) { tell(seconds); });
}

void StopTeller::setOnceMore(std::string text) { onceMore() = std::move(text); }

StopTeller::~StopTeller() { interrupts_.setReminder({}); }

std::string StopTeller::waitingText(const std::vector<RunnerStanding>& before,
                                    const std::vector<RunnerStanding>& now, int seconds) {
  std::vector<std::string> held, left;
  for (std::size_t i = 0; i < now.size(); ++i) {
    const bool isHeld = now[i].inside != RunPulse::kOutside && i < before.size() &&
                        before[i].inside == now[i].inside && before[i].calls == now[i].calls;
    if (isHeld) held.push_back(fmt::format("\"{}\" is in {}", now[i].name, now[i].callback()));
    if (!now[i].isOver()) left.push_back(fmt::format("\"{}\"", now[i].name));
  }
  const std::string what = !held.empty()   ? joined(held)
                           : !left.empty() ? joined(left) + " not stopped yet"
                                           : "the runners have stopped, what they did is written";
  return fmt::format("stopping for {} s: {}", seconds, what);
}

void StopTeller::tell(int seconds) {
  std::vector<RunnerStanding> now = board_.look();
  if (seconds == 0) {
    complain(fmt::format("interrupted: the runners are stopped in order; {}", onceMore()));
  } else if (seconds >= next_) {
    // Less and less often: somebody may have left it alone over night.
    next_ = seconds * 2;
    complain(fmt::format("{}; {}", waitingText(before_, now, seconds), onceMore()));
  }
  before_ = std::move(now);
}

}  // namespace orvane
