#pragma once

#include <map>
#include <memory>
#include <string>

#include "shared/Export.h"

namespace orvane {

/// One entry of a base table.
struct BaseInformationItem {
  std::string name;  ///< GBK.
};

/// The tables of base information that the text forms read.
///
/// A platform publishes a new object and never changes a published one, so that a reader that
/// took a copy of the pointer needs no lock.
struct BaseInformationMap {
  std::map<int, BaseInformationItem> infoNames;  ///< Read with `TradingAccountID::infoKey`.
  std::map<int, BaseInformationItem> markets;    ///< Read with `ICodeID::market`.
};

/// The installed platform's tables; may be empty. Replaced only while no strategy runs.
extern ORVANE_API std::shared_ptr<const BaseInformationMap> gBaseInformationMap;

}  // namespace orvane
