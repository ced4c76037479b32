#pragma once

#include <set>
#include <string>
#include <vector>

#include "EventStrategy/EventTypes.h"
#include "shared/TradeRecords.h"
#include "tests/EventStrategy/LibraryTest.h"
#include "tests/EventStrategy/model/Dice.h"

namespace orvane::support {

/// What a trade schedule draws at random.
class TradeDice : public Dice {
 protected:
  using Dice::Dice;

  static constexpr int kAccounts = 3;
  static constexpr int kCodes = 5;
  inline static const std::vector<std::string> kCreateSources = {"own", "alt", "ghost"};
  inline static const std::vector<std::string> kAllSources = {"own", "alt", "ghost", "x", "y"};

  Word aMark() { return static_cast<Word>(any()); }

  /// Codes are known by their id alone, so their texts vary.
  ICodeID aCode() { return codeOf(1 + below(kCodes), std::to_string(below(3))); }

  /// A few codes, some of them twice.
  std::vector<ICodeID> someCodes() {
    std::vector<ICodeID> codes;
    for (int count = below(5); count > 0; --count) codes.push_back(aCode());
    return codes;
  }

  static std::set<int64> idsOf(const std::vector<ICodeID>& codes) {
    std::set<int64> ids;
    for (const ICodeID& code : codes) ids.insert(code.id);
    return ids;
  }

  CreateSourceTradeInfo anInfo() {
    CreateSourceTradeInfo info;
    if (!oneIn(10))
      for (const int64 type : {EventTypeAccountStatus, EventTypePosition, EventTypeOrder,
                               EventTypeFill, EventTypeStrategyPosition, EventTypeCapital})
        if (!oneIn(6)) info.override |= type;
    if (oneIn(3)) info.subCreateId = below(512);
    if (oneIn(3)) info.subCreateSource.insert(oneOf(kAllSources));
    return info;
  }

  SourceId aSource(const std::string& createSource) {
    SourceId source;
    source.createSource = createSource;
    source.sourceType = oneIn(3) ? below(300) : 512;
    return source;
  }
};

}  // namespace orvane::support
