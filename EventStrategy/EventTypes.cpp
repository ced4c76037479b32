#include "EventStrategy/EventTypes.h"

#include "shared/CodeTables.h"

namespace orvane {

const std::map<int, std::string> EventTypeNames = {
    {EventTypeUnknown, "UNKNOWN"},
    {EventTypeInit, "INIT"},
    {EventTypeAccountStatus, "ACCOUNT_STATUS"},
    {EventTypeBarProcess, "BAR_PROCESS"},
    {EventTypeBar, "BAR"},
    {EventTypeData, "DATA"},
    {EventTypeTick, "TICK"},
    {EventTypePosition, "POSITION"},
    {EventTypeOrder, "ORDER"},
    {EventTypeFill, "FILL"},
    {EventTypeTimer, "TIMER"},
    {EventTypeParams, "PARAMS"},
    {EventTypeReady, "READY"},
    {EventTypeBarOpen, "BAROPEN"},
    {EventTypeSignal, "SIGNAL"},
    {EventTypeStrategyPosition, "STRATEGYPOSITION"},
    {EventTypeEvent, "EVENT"},
    {EventTypeExit, "EXIT"},
    {EventTypeCapital, "CAPITAL"},
    {EventTypeBarClose, "BARCLOSE"},
    {EventTypeRollover, "ROLLOVER"},
    {EventTypeDataDeleted, "DATA_DELETED"},
    {EventTypeDic, "DIC"},
    {EventTypeDataProcess, "DATA_PROCESS"},
    {EventTypeIndexElementChange, "INDEXELEMENT_CHANGE"},
    {EventTypeDebugData, "DEBUGDATA"},
    {EventTypeDataSnapshot, "DATASNAPSHOT"},
};

std::string eventTypeNames(int mask) {
  return flagsToNames(EventTypeNames, mask & TradeEventTypeMask);
}

}  // namespace orvane
