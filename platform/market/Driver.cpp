#include "platform/market/Driver.h"

#include <algorithm>
#include <chrono>

namespace orvane::detail {
namespace {

using std::chrono::duration_cast;
using std::chrono::milliseconds;
using std::chrono::system_clock;

void announce(DriverProgress& progress, const Feed& feed) {
  progress.begin.store(feed.firstTime());
  progress.end.store(feed.lastTime());
  progress.total.store(feed.total());
  progress.delivered.store(0);
}

}  // namespace

/// The driver at work: whatever it meets with, others get their turn back.
class PlaybackDriver::Helping {
 public:
  Helping(PlaybackDriver& driver, bool runs) : driver_(driver) {
    driver_.isRunning_ = runs;
    driver_.begin();
  }
  ~Helping() {
    driver_.end();
    driver_.isRunning_ = false;
  }
  Helping(const Helping&) = delete;
  Helping& operator=(const Helping&) = delete;

 private:
  PlaybackDriver& driver_;
};

PlaybackDriver::PlaybackDriver(DriverParts parts, double speed, DriverProgress& progress)
    : parts_(parts), speed_(speed), progress_(progress) {}

void PlaybackDriver::begin() {
  turn_ = std::unique_lock(parts_.quotes.turn());
  parts_.quotes.setQuietWait([this] { waitQuiet(); });
  if (parts_.pool.sharesCalls())
    parts_.quotes.setManyCalls(
        [this](std::size_t count, const SharedCalls::Call& call) { callMany(count, call); });
  parts_.trade.setQuietWait([this] { waitQuiet(); });
  parts_.events.setReportsWait([this] {
    do {
      waitQuiet();
    } while (parts_.trade.serve() || !parts_.pool.signal().quiet());
  });
  parts_.dictionary.setQuietWait([this] { waitQuiet(); });
  parts_.pool.beginHelping();
}

void PlaybackDriver::end() {
  parts_.pool.endHelping();
  parts_.quotes.setQuietWait(nullptr);
  parts_.quotes.setManyCalls(nullptr);
  parts_.trade.setQuietWait(nullptr);
  parts_.events.setReportsWait(nullptr);
  parts_.dictionary.setQuietWait(nullptr);
  turn_.unlock();
}

void PlaybackDriver::run() {
  Feed feed(parts_.store.streams(), parts_.store.to());
  announce(progress_, feed);
  dataStart_ = parts_.clock.load();
  const Helping helping(*this, true);
  parts_.trade.beginRun({});
  parts_.events.beginRun({});
  parts_.dictionary.beginRun();
  endsWithEvents_ = !parts_.store.hasRecords();
  settle();
  wallStart_ = system_clock::now();
  while (!parts_.cancelled.load(std::memory_order_relaxed) && step(feed)) {
  }
  settle();
  parts_.trade.endRun();
}

void PlaybackDriver::settleOnly() {
  // Posted while a run is under way: whoever runs it settles all by itself.
  if (isRunning_) return;
  const Helping helping(*this, false);
  settle();
  parts_.trade.persist(true);
}

bool PlaybackDriver::step(Feed& feed) {
  const int64 event = parts_.events.nextDue();
  if (feed.atEnd() && (!endsWithEvents_ || event == kUnsetTime)) return finishInstant();
  const int64 record = feed.atEnd() ? kUnsetTime : feed.nextTime();
  const int64 close = parts_.quotes.nextClose();
  const int64 timer = parts_.timers.nextDue();
  const int64 trade = parts_.trade.nextDue();
  const int64 dictionary = parts_.dictionary.nextDue();
  // Not as a list, which would be written to memory to be read again.
  const int64 next = std::min(std::min(std::min(record, close), std::min(timer, trade)),
                              std::min(event, dictionary));
  if (speed_ > 0 && !pace(next)) return true;
  advanceTo(next);
  if (trade == next) {
    // The settling that follows sees to it.
  } else if (event == next) {
    parts_.events.tellNext();
  } else if (dictionary == next) {
    parts_.dictionary.serve();
  } else if (timer == next) {
    parts_.timers.fireOne(parts_.clock.load(std::memory_order_relaxed));
  } else if (record == next) {
    playRecord(feed);
  } else {
    parts_.quotes.closeThrough(close);
  }
  settle();
  return true;
}

void PlaybackDriver::playRecord(Feed& feed) {
  if (parts_.trade.beforeRecord(feed.nextStream())) settle();
  parts_.quotes.deliverNext(feed.nextStream());
  feed.advance();
  progress_.delivered.store(progress_.delivered.load(std::memory_order_relaxed) + 1,
                            std::memory_order_relaxed);
}

bool PlaybackDriver::finishInstant() {
  const int64 now = parts_.clock.load(std::memory_order_relaxed);
  if (parts_.events.nextDue() <= now) {
    parts_.events.tellNext();
  } else if (parts_.dictionary.nextDue() <= now) {
    parts_.dictionary.serve();
  } else if (parts_.timers.nextDue() <= now) {
    parts_.timers.fireOne(now);
  } else if (parts_.quotes.nextClose() <= now) {
    parts_.quotes.closeThrough(now);
  } else {
    return false;
  }
  settle();
  return true;
}

void PlaybackDriver::advanceTo(int64 time) {
  if (time <= parts_.clock.load(std::memory_order_relaxed)) return;
  parts_.clock.store(time, std::memory_order_release);
  parts_.quotes.passedUntil(time);
  progress_.now.store(time, std::memory_order_relaxed);
}

void PlaybackDriver::settle() {
  do {
    waitQuiet();
    // Records that are due alone have their turn in `step`, after the events of their time.
  } while (parts_.loop.runPosted() || parts_.events.serve() ||
           (parts_.dictionary.anyWaiting() && parts_.dictionary.serve()) || parts_.quotes.serve() ||
           parts_.trade.serve() || !parts_.pool.signal().quiet());
}

void PlaybackDriver::waitQuiet() {
  // Another thread may answer a blocking request while tasks run, and feed its runner; so quiet
  // counts only as seen with the turn in hand.
  while (!parts_.pool.signal().quiet()) {
    turn_.unlock();
    parts_.pool.helpUntilQuiet();
    turn_.lock();
  }
}

void PlaybackDriver::callMany(std::size_t count, const SharedCalls::Call& call) {
  // A task that is run right after its call may block for an answer, which needs the turn.
  turn_.unlock();
  parts_.pool.share(count, call);
  turn_.lock();
  waitQuiet();
}

bool PlaybackDriver::pace(int64 time) {
  const int64 ahead = timesWithin(static_cast<double>(time - dataStart_) / speed_);
  const auto due = wallStart_ + milliseconds(std::max<int64>(0, ahead));
  if (system_clock::now() >= due) return true;
  // While nothing is to be played the workers take the tasks of whoever else starts or asks.
  parts_.pool.endHelping();
  turn_.unlock();
  parts_.loop.runPostedUntil(due, [this] {
    return parts_.cancelled.load() || parts_.quotes.book().anyWaiting() ||
           parts_.trade.anyWaiting() || parts_.events.anyWaiting() ||
           parts_.dictionary.anyWaiting();
  });
  turn_.lock();
  parts_.pool.beginHelping();
  settle();
  return system_clock::now() >= due && !parts_.cancelled.load();
}

LiveDriver::LiveDriver(DriverParts parts, double speed, DriverProgress& progress)
    : parts_(parts), speed_(speed > 0 ? speed : 1), progress_(progress) {}

void LiveDriver::run() {
  Feed feed(parts_.store.streams(), parts_.store.to());
  announce(progress_, feed);
  const TimeShift shift(feed.firstTime(),
                        duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count(),
                        speed_);
  {
    const std::lock_guard turn(parts_.quotes.turn());
    parts_.quotes.setTimeShift(shift);
    parts_.quotes.startAt(feed.firstTime());
  }
  parts_.trade.beginRun(shift);
  parts_.events.beginRun(shift);
  parts_.dictionary.beginRun();
  play(feed, shift);
  parts_.trade.endRun();
}

/// Returns whether something is left for the next turn.
bool LiveDriver::serve() {
  parts_.trade.serve();
  const std::lock_guard turn(parts_.quotes.turn());
  const int64 now = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
  while (parts_.events.nextDue() <= now) parts_.events.tellNext();
  return parts_.events.serveTurn();
}

void LiveDriver::play(Feed& feed, const TimeShift& shift) {
  const std::function<bool()> stop = [this] { return parts_.cancelled.load(); };
  bool isAnyLeft = false;
  while (!feed.atEnd()) {
    if (stop()) return;
    const int64 record = feed.nextTime();
    int64 close = 0;
    {
      const std::lock_guard turn(parts_.quotes.turn());
      close = parts_.quotes.nextClose();
    }
    const int64 next = std::min(record, close);
    const int64 own = ownDue();
    const system_clock::time_point due{milliseconds(std::min(shift.shown(next), own))};
    if (!isAnyLeft && system_clock::now() < due) {
      // What is served meanwhile may bring an earlier end of a bar, or put an order on its way.
      parts_.loop.runPostedUntil(due, [&] {
        const std::lock_guard turn(parts_.quotes.turn());
        return parts_.cancelled.load() || parts_.quotes.nextClose() < next || ownDue() != own;
      });
      continue;
    }
    parts_.loop.runPostedNow();
    isAnyLeft = serve();
    if (system_clock::now() < system_clock::time_point{milliseconds(shift.shown(next))}) continue;
    const std::lock_guard turn(parts_.quotes.turn());
    parts_.quotes.passedUntil(next);
    if (record <= close) {
      if (parts_.trade.beforeRecord(feed.nextStream())) parts_.trade.serve();
      parts_.quotes.deliverNext(feed.nextStream());
      feed.advance();
      progress_.delivered.fetch_add(1);
    } else {
      parts_.quotes.closeThrough(close);
    }
    progress_.now.store(shift.shown(next));
  }
  const std::lock_guard turn(parts_.quotes.turn());
  if (parts_.quotes.nextClose() <= feed.lastTime()) parts_.quotes.closeThrough(feed.lastTime());
}

}  // namespace orvane::detail
