#include "platform/core/ZoneRules.h"

#include <QDateTime>
#include <QFile>
#include <QTimeZone>
#include <algorithm>
#include <limits>
#include <map>
#include <mutex>

namespace orvane::detail {
namespace {

/// Any word of letters would make a valid zone, being read as a rule without an offset; so the
/// name must be in the zone database or a fixed offset.
bool isZone(const std::string& name) {
  const QByteArray id = QByteArray::fromStdString(name);
  return (name.starts_with("UTC") || QTimeZone::availableTimeZoneIds().contains(id)) &&
         QTimeZone(id).isValid();
}

}  // namespace

std::string zoneDatabaseVersion() {
  QFile database("/usr/share/zoneinfo/tzdata.zi");
  if (!database.open(QIODevice::ReadOnly)) return {};
  // The first line is "# version 2024a".
  return database.readLine(100).trimmed().split(' ').last().toStdString();
}

ZoneRules::ZoneRules(const std::string& name) {
  const QTimeZone zone(QByteArray::fromStdString(name));
  const QDateTime first(QDate(1900, 1, 1), QTime(0, 0), Qt::UTC);
  const QDateTime last(QDate(2100, 1, 1), QTime(0, 0), Qt::UTC);
  spans_.push_back(
      {std::numeric_limits<int64>::min(), static_cast<int64>(zone.offsetFromUtc(first)) * 1000});
  if (!zone.hasTransitions()) return;
  for (const QTimeZone::OffsetData& data : zone.transitions(first, last)) {
    const int64 offset = static_cast<int64>(data.offsetFromUtc) * 1000;
    // Some transitions change the name alone.
    if (offset != spans_.back().offset) spans_.push_back({data.atUtc.toMSecsSinceEpoch(), offset});
  }
}

std::shared_ptr<const ZoneRules> ZoneRules::find(const std::string& name) {
  static std::mutex mutex;
  static auto* const known = new std::map<std::string, std::shared_ptr<const ZoneRules>>;
  const std::lock_guard lock(mutex);
  const auto at = known->find(name);
  if (at != known->end()) return at->second;
  if (!isZone(name)) return nullptr;
  return known->emplace(name, std::shared_ptr<const ZoneRules>(new ZoneRules(name))).first->second;
}

int64 ZoneRules::offsetMs(int64 utcMs) const {
  // Most questions are about the present rules.
  if (utcMs >= spans_.back().begin) return spans_.back().offset;
  const auto next =
      std::upper_bound(spans_.begin(), spans_.end(), utcMs,
                       [](int64 time, const Span& span) { return time < span.begin; });
  return std::prev(next)->offset;
}

int64 ZoneRules::toUtc(int64 localMs) const {
  // The offsets before and after any change within a day of the time.
  constexpr int64 kDay = 86'400'000;
  const int64 early = localMs - offsetMs(localMs - kDay);
  if (early + offsetMs(early) == localMs) return early;
  const int64 late = localMs - offsetMs(localMs + kDay);
  if (late + offsetMs(late) == localMs) return late;
  // Skipped: the change lies between the two readings.
  const auto change =
      std::upper_bound(spans_.begin(), spans_.end(), std::min(early, late),
                       [](int64 time, const Span& span) { return time < span.begin; });
  return change == spans_.end() ? early : change->begin;
}

}  // namespace orvane::detail
