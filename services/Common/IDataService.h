#pragma once

#include <list>
#include <memory>
#include <string>
#include <utility>

#include "shared/DictionaryRecords.h"
#include "shared/Export.h"
#include "shared/ResultStatus.h"

namespace orvane {

/// Where dictionary call-backs go. Called on threads of the service.
class ORVANE_API DataSpi {
 public:
  DataSpi() = default;
  DataSpi(const DataSpi&) = delete;
  DataSpi& operator=(const DataSpi&) = delete;
  virtual ~DataSpi();

  virtual void onSnapshot(const SnapshotKey& key, const Record& record);
  virtual void onProgress(int requestId, int progress1, int progress2);
  virtual void onData(int requestId, const DataResult& result, const ResultStatus& status,
                      int batchFlag, int64 batchTag);
  virtual void onDelete(int requestId, const SnapshotKey& key, int64 deleted1, int64 deleted2,
                        int64 deleted3);
  virtual void onDisconnected();
};

/// Pairs of target and name.
using TargetNamePair = std::pair<std::string, std::string>;

/// A target with its records, and a dictionary's name with its targets: the answer of
/// `IDataService::readLatest`.
using LatestOfTarget = std::pair<std::string, std::list<Record>>;
using LatestOfName = std::pair<std::string, std::list<LatestOfTarget>>;

/// Dictionary data: named tables of records, each split by target. Owned by the platform; any
/// thread may call it. It keeps the spi, by shared pointer, while a subscription stands.
class ORVANE_API IDataService {
 public:
  virtual ~IDataService();

  virtual ResultStatus dataDefines(std::list<DataDefine>& defines,
                                   const std::list<std::string>& names, int flags) = 0;
  virtual ResultStatus dataBriefs(std::list<DataBrief>& briefs,
                                  const std::list<std::string>& names) = 0;
  virtual ResultStatus queryOp(const std::string& question, std::string& answer) = 0;
  virtual ResultStatus requestAll(const DataReq& request, int64 tag) = 0;
  virtual ResultStatus subscribeData(const DataReq& request, const std::shared_ptr<DataSpi>& spi,
                                     int requestId) = 0;
  virtual void unsubscribeData(int requestId) = 0;
  virtual void subscribeSnapshot(const std::list<TargetNamePair>& keys,
                                 const std::shared_ptr<DataSpi>& spi, int flags) = 0;
  virtual void unsubscribeAllSnapshots(const std::shared_ptr<DataSpi>& spi) = 0;
  virtual void unsubscribeSnapshot(const std::list<TargetNamePair>& keys,
                                   const std::shared_ptr<DataSpi>& spi, int flags) = 0;
  virtual ResultStatus readLatest(const std::list<TargetNamePair>& keys,
                                  std::list<LatestOfName>& latest, int flags) = 0;
};

}  // namespace orvane
