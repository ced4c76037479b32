#pragma once

#include <list>
#include <string>

#include "shared/DictionaryRecords.h"
#include "shared/Export.h"
#include "shared/ResultStatus.h"

namespace orvane {

/// Where a dictionary source's call-backs go. Called on threads of the data service, with the
/// source's notify mutex held: an implementation must not call back into the source. Every
/// operation has an empty body, so that a subclass may override one alone.
class ORVANE_API DataNotify {
 public:
  DataNotify();
  DataNotify(const DataNotify&);
  DataNotify& operator=(const DataNotify&);
  virtual ~DataNotify();

  virtual void onDataSnapshot(const std::string& name, const std::string& target,
                              const Record& record);
  virtual void onProgress(int requestId, int progress1, int progress2);
  virtual void onData(int requestId, const std::list<Record>& records, DataValueType valueType,
                      const ResultStatus& status, int batchFlag, int64 batchTag);
  virtual void onDeleteData(int requestId, int64 deleted1, int64 deleted2, int64 deleted3);
};

}  // namespace orvane
