#include "platform/events/SystemEvents.h"

#include "platform/market/files/NumberParser.h"
#include "shared/TextForms.h"

namespace orvane::detail {

void SystemEvents::codePropertyChanged(const ICodeProperty& property, int change) {
  events_.publishEvent("system",
                       {{"key", codeText(property.code)},
                        {"change", std::to_string(change)},
                        {"name", property.name},
                        {"timeZone", property.timeZone},
                        {"sessions", property.sessions},
                        {"currency", property.currency},
                        {"priceTick", decimalText(property.priceTick)},
                        {"multiplier", decimalText(property.multiplier)},
                        {"lotSize", decimalText(property.lotSize)},
                        {"marginRate", decimalText(property.marginRate)},
                        {"feePerLot", decimalText(property.feePerLot)},
                        {"feeRate", decimalText(property.feeRate)},
                        {"decimals", std::to_string(property.decimals)}},
                       "codeProperty");
}

}  // namespace orvane::detail
