#pragma once

#include <string>
#include <vector>

#include "shared/AccountRecords.h"
#include "shared/Export.h"
#include "shared/ICodeID.h"

namespace orvane {

/// The text form of a code in the log: the code, ".", and the market's name. A market without a
/// name gives an empty one, and the "." stays.
ORVANE_API std::string codeText(const ICodeID& code);

/// The text form of an account in the log: `text1`, account, currency, info name and hedge flag,
/// joined by "@". An index outside its table gives an empty name.
ORVANE_API std::string accountText(const TradingAccountID& account);

}  // namespace orvane
