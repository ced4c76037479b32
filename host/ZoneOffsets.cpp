#include "host/ZoneOffsets.h"

#include <QDateTime>
#include <QTimeZone>
#include <algorithm>
#include <limits>

namespace orvane {

ZoneOffsets::ZoneOffsets(const std::string& name) {
  const QTimeZone named(QByteArray::fromStdString(name));
  const QTimeZone zone = named.isValid() ? named : QTimeZone::utc();
  const QDateTime first(QDate(1900, 1, 1), QTime(0, 0), Qt::UTC);
  const QDateTime last(QDate(2100, 1, 1), QTime(0, 0), Qt::UTC);
  spans_.push_back(
      {std::numeric_limits<int64>::min(), static_cast<int64>(zone.offsetFromUtc(first)) * 1000});
  if (!zone.hasTransitions()) return;
  for (const QTimeZone::OffsetData& data : zone.transitions(first, last)) {
    const int64 offset = static_cast<int64>(data.offsetFromUtc) * 1000;
    // Some transitions change the name alone.
    if (offset != spans_.back().offsetMs)
      spans_.push_back({data.atUtc.toMSecsSinceEpoch(), offset});
  }
}

std::size_t ZoneOffsets::spanOf(int64 utcMs) const {
  // Most questions are about the present rules.
  if (utcMs >= spans_.back().begin) return spans_.size() - 1;
  const auto next = std::ranges::upper_bound(spans_, utcMs, {}, &Span::begin);
  return static_cast<std::size_t>(next - spans_.begin()) - 1;
}

std::vector<ZoneOffsets::Span> ZoneOffsets::spansOf(int64 fromUtcMs, int64 toUtcMs) const {
  const auto first = spans_.begin() + static_cast<std::ptrdiff_t>(spanOf(fromUtcMs));
  const auto last = spans_.begin() + static_cast<std::ptrdiff_t>(spanOf(toUtcMs));
  return {first, last + 1};
}

}  // namespace orvane
