#include "platform/market/BarAudit.h"

#include <limits>

#include "platform/events/PublicationChecks.h"
#include "platform/fields/KLineView.h"

namespace orvane::detail {
namespace {

std::string faultBeside(const KLineView& bar, const KLineView& before) {
  if (bar.beginTime() == before.beginTime() && bar.endTime() == before.endTime())
    return "it has the times of the bar before";
  if (bar.endTime() <= before.endTime()) return "its end is not after that of the bar before";
  if (bar.beginTime() < before.endTime()) return "it begins before the bar before has ended";
  return {};
}

}  // namespace

BarAudit auditBars(std::span<const IKLine> bars, int64 periodMs, int64 from) {
  BarAudit audit;
  for (std::size_t at = 0; at < bars.size(); ++at) {
    const KLineView view(bars[at]);
    if (view.beginTime() < from) continue;
    ++audit.bars;
    std::string fault = faultOf(bars[at], periodMs, std::numeric_limits<int64>::max());
    if (fault.empty() && at > 0) fault = faultBeside(view, KLineView(bars[at - 1]));
    if (fault.empty()) continue;
    if (audit.faults++ == 0) audit.first = "bar " + std::to_string(at + 1) + ": " + fault;
  }
  return audit;
}

}  // namespace orvane::detail
