#pragma once

#include <array>
#include <bit>
#include <list>
#include <map>
#include <string>
#include <utility>

#include "shared/ICodeID.h"
#include "shared/ResultStatus.h"
#include "shared/Types.h"

namespace orvane {

/// One bar: eleven 64-bit words without any pointer, so that a vector of bars is copied as a
/// block. What each word means is the platform's; `platform/fields/KLineView.h` names them.
struct IKLine {
  std::array<Word, 11> words{};

  friend bool operator==(const IKLine&, const IKLine&) = default;
};

/// One level of the depth ladder. All three values are carried.
struct DepthLevel {
  Word value1 = 0;
  Word value2 = 0;
  double value3 = 0;

  friend bool operator==(const DepthLevel&, const DepthLevel&) = default;
};

/// One quote. The blocks are carried; `platform/fields/QuoteView.h` names their positions.
struct IDepthMarketData {
  ICodeID code;
  std::array<Word, 18> block1{};
  std::array<std::int32_t, 6> block2{};
  std::array<Word, 8> block3{0, 0, 0, 0, 0, 0, 0, std::bit_cast<Word>(1.0)};
  std::array<DepthLevel, 10> levels{};  ///< Always ten entries.
  std::map<int64, std::string> extras;
};

/// A report on a running K-line request.
struct KLineProgress {
  int64 value1 = 0;         ///< Embedded platform: bars delivered so far.
  int64 value2 = 0;         ///< Embedded platform: bars in the whole history answer.
  std::int32_t value3 = 0;  ///< Embedded platform: per cent done, 0 to 100.
  std::int32_t value4 = 0;
  ResultStatus status;
};

/// A rollover adjustment of a continuous contract.
struct RolloverCoefficient {
  Word value = 0;
  std::list<std::pair<Word, Word>> items;
};

/// Units of a bar's period. A period is a unit and a count of it (`TermPair`).
enum class ITimeType : std::int32_t {
  HalfSecond = 1,
  Second = 2,
  Minute = 3,
  Hour = 4,
  Day = 5,
  Week = 6,
  Month = 7,
  Year = 8,  ///< With a count of 0: single ticks.
};

/// A period as the realtime quote service takes it: an `ITimeType` value and a count of it.
struct TermPair {
  std::int32_t timeType = 5;
  std::int32_t count = 1;

  friend bool operator==(const TermPair&, const TermPair&) = default;
};

/// A request for bars or ticks, as the realtime quote service takes it.
struct IMDQuery {
  ICodeID code;
  int64 beginTime = 0;     ///< UTC milliseconds; `kUnsetTime` means not given.
  int64 endTime = 0;       ///< UTC milliseconds; `kUnsetTime` means open: live data follows.
  std::int32_t count = 0;  ///< Most records of the history; `kNoLimit` means all.
  std::int32_t flags = 0;
};

/// A wanted range of bars, in the form of the data libraries.
struct OVDataRange {
  ICodeID code;
  int64 term = 0;  ///< The period in milliseconds.
  int64 mode = 0;
  int64 beginTime = 0;
  int64 endTime = 0;
  int64 flags = 0;
  std::string text;
};

/// Time zones of `Timestamp`. Zone 0 is the one that the platform is set to.
enum class OVTimeZone : std::int32_t { Platform = 0, Utc = 1 };

}  // namespace orvane
