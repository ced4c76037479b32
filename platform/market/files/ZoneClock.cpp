#include "platform/market/files/ZoneClock.h"

#include <QDateTime>
#include <cstdio>
#include <cstdlib>

#include "platform/market/files/MomentText.h"

namespace orvane::detail {
namespace {

std::int64_t dayOf(std::int64_t ms) {
  return ms >= 0 ? ms / kDayMs : -((-ms + kDayMs - 1) / kDayMs);
}

}  // namespace

ZoneClock::ZoneClock(const std::string& name) : name_(name) {
  if (parseOffset(name, fixedOffset_)) {
    fixed_ = true;
    const int minutes = static_cast<int>(std::abs(fixedOffset_) / 60'000);
    char text[16];
    std::snprintf(text, sizeof(text), "UTC%c%02d:%02d", fixedOffset_ < 0 ? '-' : '+',
                  minutes / 60 % 100, minutes % 60);
    name_ = fixedOffset_ == 0 ? "UTC" : text;
    return;
  }
  // A text without a zone may still pass for a rule of its own, so the tables are asked.
  const QByteArray id = QByteArray::fromStdString(name);
  ok_ = QTimeZone::isTimeZoneIdAvailable(id);
  if (ok_) zone_ = QTimeZone(id);
  ok_ = ok_ && zone_.isValid();
}

std::int64_t ZoneClock::offsetAt(std::int64_t utcMs) const {
  if (fixed_) return fixedOffset_;
  return std::int64_t{zone_.offsetFromUtc(QDateTime::fromMSecsSinceEpoch(utcMs, Qt::UTC))} * 1000;
}

std::int64_t ZoneClock::toUtc(std::int64_t localMs, std::int64_t notBefore) {
  if (fixed_) return localMs - fixedOffset_;
  // No zone is further than 15 hours from UTC, so these bounds enclose the local day.
  constexpr std::int64_t kMargin = 15 * kDayMs / 24;
  const std::int64_t day = dayOf(localMs);
  if (day != localDay_) {
    localDay_ = day;
    localOffset_ = offsetAt(day * kDayMs - kMargin);
    localUniform_ = localOffset_ == offsetAt((day + 1) * kDayMs + kMargin);
  }
  wasTwice_ = false;
  if (localUniform_) return localMs - localOffset_;

  const std::int64_t before = offsetAt(localMs - kMargin);
  const std::int64_t after = offsetAt(localMs + kMargin);
  const std::int64_t first = localMs - before;
  const std::int64_t second = localMs - after;
  const bool firstReal = offsetAt(first) == before;
  const bool secondReal = offsetAt(second) == after;
  wasTwice_ = firstReal && secondReal && first != second;
  if (firstReal && secondReal) return first < notBefore && second >= notBefore ? second : first;
  return secondReal ? second : first;
}

std::int64_t ZoneClock::toLocal(std::int64_t utcMs) {
  if (fixed_) return utcMs + fixedOffset_;
  const std::int64_t day = dayOf(utcMs);
  if (day != utcDay_) {
    utcDay_ = day;
    utcOffset_ = offsetAt(day * kDayMs);
    utcUniform_ = utcOffset_ == offsetAt((day + 1) * kDayMs);
  }
  return utcMs + (utcUniform_ ? utcOffset_ : offsetAt(utcMs));
}

}  // namespace orvane::detail
