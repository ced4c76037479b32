#pragma once

#include <array>
#include <cstdint>
#include <list>
#include <map>
#include <string>

#include "shared/Export.h"
#include "shared/Types.h"

namespace orvane {

/// The vocabulary of the records: numeric codes and the GBK texts that go with them. Built at
/// program start and never written afterwards, so they need no lock.

inline constexpr int kLowestStatusCode = -31;
inline constexpr int kHighestStatusCode = 58;

/// The message of each `ResultStatus` code: the message of code `c` stands at position `c` + 31.
/// Code 55 has none, and its entry is empty.
extern ORVANE_API const std::array<const char*, 90> ResultStatusMessages;

/// The message of a status code; empty for a code outside the table.
ORVANE_API const char* statusMessage(int code);

extern ORVANE_API const std::map<std::string, int> HedgeFlagCodes;
extern ORVANE_API const std::array<const char*, 6> hedgeFlagNames;
extern ORVANE_API const std::map<std::string, int> PriorityCodes;

/// Event source bits and their names; 255 names the whole mask.
extern ORVANE_API const std::map<int, std::string> EventSourceNames;

extern ORVANE_API const std::map<std::string, int> CounterTypeCodes;
extern ORVANE_API const std::array<const char*, 15> currencyNames;

/// Names for the bits of a `flags` field: the decimal text of each bit's number, bits 0 to 29.
extern ORVANE_API const std::map<int, std::string> FlagBitNames;

/// Renders a set of bits: the names of the table's entries that share a bit with `mask`, in
/// ascending order of code and joined by "|". An entry's bits are taken out once it was named;
/// bits without an entry are dropped.
ORVANE_API std::string flagsToNames(const std::map<int, std::string>& table, int64 mask);

/// The names of a mask of event source bits, joined by "|".
ORVANE_API std::string eventSourceText(int64 mask);

/// The keys of the same bits, in ascending order.
ORVANE_API std::list<int> eventSourceCodes(int64 mask);

/// A `flags` field as the numbers of its set bits, joined by "|".
ORVANE_API std::string flagBitText(int mask);

}  // namespace orvane
