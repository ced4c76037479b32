#pragma once

#include <string>
#include <vector>

#include "shared/CodeProperty.h"
#include "shared/Export.h"
#include "shared/MarketRecords.h"

namespace orvane {

/// What a frequency text means.
class QuoteUtils {
 public:
  /// Turns a frequency text into its period in milliseconds. `extraFlag` tells that the query
  /// needs flag bit 256. A bad text gives code 17; the outputs are then untouched.
  ORVANE_API static ResultStatus freqToTerm(const std::string& frequency, int64& term,
                                            bool& extraFlag);
};

/// Conversions of what market data is asked with.
class CommonMethod {
 public:
  ORVANE_API static IMDQuery DataRange2IMDQuery(const OVDataRange& range);
  ORVANE_API static ITimeType MilFrequency2ITimeType(int64 term);
};

/// Helpers for the properties of codes.
class CodePropertyUtils {
 public:
  /// True if the text names a category, which `category` then is.
  ORVANE_API static bool getCategoryID(const std::string& text, ICategoryID& category);
  ORVANE_API static ResultStatus getHistoryCodeProperties(const ICodeID& code,
                                                          std::vector<ITimeCodeProp>& properties,
                                                          int flags);
  /// Checks and completes a property that a user wrote.
  ORVANE_API static ResultStatus correctUserProp(ICodeProperty& property);
};

}  // namespace orvane
