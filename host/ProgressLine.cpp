#include "host/ProgressLine.h"

#include <fmt/core.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

#include "host/Console.h"
#include "host/TimeArgument.h"

namespace orvane {

ProgressLine::ProgressLine() : isTerminal_(isatty(STDERR_FILENO) != 0) {}

void ProgressLine::show(const std::string& text) {
  const std::size_t blanks = text.size() < width_ ? width_ - text.size() : 0;
  // Both times: a message of another thread may come in between.
  noteOpenLine(true);
  fmt::print(stderr, "\r{}{}", text, std::string(blanks, ' '));
  std::fflush(stderr);
  noteOpenLine(true);
  width_ = text.size();
}

bool ProgressLine::isDue(Clock::time_point now) {
  if (!isTerminal_ || now - shownAt_ < std::chrono::milliseconds(100)) return false;
  shownAt_ = now;
  return true;
}

void ProgressLine::showReading(const std::string& path, double share) {
  if (!isDue(Clock::now())) return;
  show(fmt::format("reading {} {:3.0f}%", std::filesystem::path(path).filename().string(),
                   share * 100));
}

void ProgressLine::showRun(const PlaybackProgress& progress, bool isLive) {
  if (!isTerminal_) return;
  const auto now = Clock::now();
  if (runBegan_ == Clock::time_point{}) runBegan_ = now;
  const double seconds = std::chrono::duration<double>(now - runBegan_).count();
  const double rate = seconds > 0 ? static_cast<double>(progress.delivered) / seconds : 0;
  const double share = progress.total == 0 ? 1
                                           : static_cast<double>(progress.delivered) /
                                                 static_cast<double>(progress.total);
  show(fmt::format("{} {:5.1f}%  {}  {} of {} records  {:.0f} records/s",
                   isLive ? "live" : "playing", share * 100, isoTime(progress.now).substr(0, 19),
                   progress.delivered, progress.total, rate));
}

void ProgressLine::wipe() {
  if (isTerminal_) fmt::print(stderr, "\r\033[K");
  std::fflush(stderr);
  width_ = 0;
  noteOpenLine(false);
}

void ProgressLine::clear() {
  if (width_ > 0) wipe();
}

}  // namespace orvane
