#pragma once

#include <functional>
#include <list>
#include <string>

#include "shared/DictionaryRecords.h"
#include "shared/Export.h"
#include "shared/ResultStatus.h"

namespace orvane {

/// Blocking reads of dictionary data. `wait` is in milliseconds; `cancelled` is asked while a
/// read waits. The target comes first and the dictionary's name second.
class BarDataReadSyncWrapper {
 public:
  using Cancel = std::function<bool()>;

  ORVANE_API static ResultStatus getRecords(const std::string& target, const std::string& name,
                                            int64 begin, int64 end, std::list<Record>& records,
                                            const Cancel& cancelled, int64 wait, int flags);
  ORVANE_API static ResultStatus getRecord(const std::string& target, const std::string& name,
                                           int64 time, Record& record, const Cancel& cancelled,
                                           int64 wait, int flags);
  ORVANE_API static ResultStatus getRecord(const std::list<std::string>& targets,
                                           const std::string& name, int64 time,
                                           std::list<TargetRecord>& records,
                                           const Cancel& cancelled, int64 wait, int flags);
};

}  // namespace orvane
