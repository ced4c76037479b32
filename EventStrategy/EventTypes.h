#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "shared/Export.h"

namespace orvane {

/// The kinds of events, single bits, so that a set of them fits a 32-bit mask. Never changed.
enum EventType : std::int32_t {
  EventTypeUnknown = 0x0,
  EventTypeInit = 0x1,
  EventTypeAccountStatus = 0x2,
  EventTypeBarProcess = 0x4,
  EventTypeBar = 0x8,
  EventTypeData = 0x10,
  EventTypeTick = 0x20,
  EventTypePosition = 0x40,
  EventTypeOrder = 0x80,
  EventTypeFill = 0x100,
  EventTypeTimer = 0x200,
  EventTypeParams = 0x400,
  EventTypeReady = 0x800,
  EventTypeBarOpen = 0x1000,
  EventTypeSignal = 0x2000,
  EventTypeStrategyPosition = 0x4000,
  EventTypeEvent = 0x8000,
  EventTypeExit = 0x10000,
  EventTypeCapital = 0x20000,
  EventTypeBarClose = 0x40000,
  EventTypeRollover = 0x80000,
  EventTypeDataDeleted = 0x100000,
  EventTypeDic = 0x200000,
  EventTypeDataProcess = 0x400000,
  EventTypeIndexElementChange = 0x800000,
  EventTypeDebugData = 0x1000000,
  EventTypeDataSnapshot = 0x2000000,
};

/// The event types of the trade side.
inline constexpr std::int32_t TradeEventTypeMask = EventTypeAccountStatus | EventTypePosition |
                                                   EventTypeOrder | EventTypeFill |
                                                   EventTypeStrategyPosition | EventTypeCapital;

/// The name of each event type.
extern ORVANE_API const std::map<int, std::string> EventTypeNames;

/// The names of the trade event types in a mask, ascending by code, joined by "|".
ORVANE_API std::string eventTypeNames(int mask);

}  // namespace orvane
