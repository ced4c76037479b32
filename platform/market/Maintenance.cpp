#include "platform/market/Maintenance.h"

#include <limits>

#include "platform/core/LostCalls.h"
#include "platform/core/Periods.h"
#include "platform/market/BarAudit.h"
#include "services/Common/ICodeService.h"
#include "shared/TextCodec.h"
#include "shared/TextForms.h"

namespace orvane::detail {

std::vector<MarketStream*> Maintenance::streamsOf(int64 codeId, ITimeType unit) const {
  std::vector<MarketStream*> streams;
  for (MarketStream* stream : store_.streams())
    if (stream->code().id == codeId && !stream->isTicks() &&
        timeTypeOfTerm(stream->periodMs()) == unit)
      streams.push_back(stream);
  if (!streams.empty()) return streams;
  MarketStream* source = store_.sourceOf(codeId, {static_cast<std::int32_t>(unit), 1});
  if (source != nullptr && !source->isTicks()) streams.push_back(source);
  return streams;
}

ResultStatus Maintenance::ask(const ICodeID& code, ITimeType unit, int64 from,
                              const std::shared_ptr<IDataMaintainSpi>& spi, int requestId) {
  if (spi == nullptr) return statusWith(-2, "spi");
  ICodeProperty property;
  if (ResultStatus status = codes_.currentCodeProperty(code, property, kUnsetTime);
      status.code != 0)
    return status;
  const std::vector<MarketStream*> streams = streamsOf(code.id, unit);
  if (streams.empty()) return statusWith(17, codeText(property.code));
  if (from <= 0 || from == kUnsetTime) from = std::numeric_limits<int64>::min();
  const std::lock_guard lock(mutex_);
  if (thread_ == nullptr) thread_ = std::make_unique<ServiceLoop>();
  thread_->post([this, streams, from, spi, requestId, unit, known = property.code] {
    const ResultStatus status = lookThrough(streams, from);
    guarded("a maintenance call-back threw",
            [&] { spi->onMaintained(requestId, known, unit, status); });
  });
  return {};
}

ResultStatus Maintenance::lookThrough(const std::vector<MarketStream*>& streams, int64 from) {
  std::size_t bars = 0;
  for (const MarketStream* stream : streams) {
    BarAudit audit;
    {
      // A published series may grow meanwhile.
      const std::lock_guard turn(turn_);
      audit = auditBars(stream->bars().bars, stream->periodMs(), from);
    }
    bars += audit.bars;
    if (audit.faults != 0)
      return statusWith(20, utf8ToGbk(stream->bars().origin) + ": " + std::to_string(audit.faults) +
                                " of " + std::to_string(audit.bars) + " bars, " + audit.first);
  }
  return {0, std::to_string(bars) + " bars"};
}

}  // namespace orvane::detail
