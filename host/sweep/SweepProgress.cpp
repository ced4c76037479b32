#include "host/sweep/SweepProgress.h"

#include <fmt/core.h>

#include <algorithm>

namespace orvane {
namespace {

std::string durationText(double seconds) {
  const auto whole = static_cast<long long>(std::min(seconds, 9e9));
  if (whole < 60) return fmt::format("{}s", whole);
  if (whole < 3600) return fmt::format("{}m{:02}s", whole / 60, whole % 60);
  return fmt::format("{}h{:02}m", whole / 3600, whole / 60 % 60);
}

}  // namespace

void SweepProgress::begin(std::size_t total, std::size_t done) {
  total_ = total;
  before_ = done_ = done;
  began_ = Clock::now();
}

void SweepProgress::endBatch(std::size_t done) {
  done_ += done;
  playing_ = 0;
  wipe();
}

void SweepProgress::showRun(const PlaybackProgress& progress, bool) {
  const auto now = Clock::now();
  if (!isDue(now)) return;
  const double share = progress.total == 0 ? 0
                                           : static_cast<double>(progress.delivered) /
                                                 static_cast<double>(progress.total);
  const double runs = static_cast<double>(done_) + share * static_cast<double>(playing_);
  const double seconds = std::chrono::duration<double>(now - began_).count();
  const double rate = seconds > 0 ? (runs - static_cast<double>(before_)) / seconds : 0;
  std::string text = fmt::format("sweep {:5.1f}%  {} of {} done, {} playing  {:.2f}/s",
                                 100 * runs / static_cast<double>(std::max<std::size_t>(total_, 1)),
                                 done_, total_, playing_, rate);
  if (rate > 0)
    text += fmt::format("  {} left", durationText((static_cast<double>(total_) - runs) / rate));
  show(text);
}

}  // namespace orvane
