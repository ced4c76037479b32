#pragma once

#include <functional>
#include <list>
#include <map>
#include <string>

#include "services/Common/IDataService.h"
#include "services/ov.publisher/IPublisher.h"
#include "shared/DictionaryRecords.h"
#include "shared/Export.h"
#include "shared/ResultStatus.h"

namespace orvane {

/// A strategy's door to dictionary data. Owned by its event strategy; any thread may call it. The
/// order of the operations is fixed. `name` is the dictionary and `target` the entry in it; `wait`
/// is in milliseconds. A status is the service's unless an operation says otherwise.
class ORVANE_API IDataSrc {
 public:
  using Cancel = std::function<bool()>;

  IDataSrc();
  IDataSrc(const IDataSrc&) = delete;
  IDataSrc& operator=(const IDataSrc&) = delete;
  virtual ~IDataSrc();

  virtual ResultStatus publisherOp1(ORVANE_PUBLISHER_OP_ARGS) = 0;
  virtual ResultStatus publisherOp2(ORVANE_PUBLISHER_OP_ARGS) = 0;
  virtual ResultStatus publisherOp3(ORVANE_PUBLISHER_OP_ARGS) = 0;
  virtual ResultStatus publisherOp4(ORVANE_PUBLISHER_OP_ARGS) = 0;
  virtual ResultStatus publisherOp5(ORVANE_PUBLISHER_OP_ARGS) = 0;
  virtual ResultStatus publisherOp6(ORVANE_PUBLISHER_OP_ARGS) = 0;
  virtual ResultStatus publisherOp7(ORVANE_PUBLISHER_OP_ARGS) = 0;
  virtual ResultStatus publisherOp8(ORVANE_PUBLISHER_OP_ARGS) = 0;
  virtual ResultStatus publisherOp9(ORVANE_PUBLISHER_OP_ARGS) = 0;
  virtual ResultStatus publisherOp10(ORVANE_PUBLISHER_OP_ARGS) = 0;
  virtual ResultStatus publisherOp11(ORVANE_PUBLISHER_OP_ARGS) = 0;
  virtual ResultStatus publisherOp12(ORVANE_PUBLISHER_OP_ARGS) = 0;

  /// Publishes a copy of the records, sorted by key; records of one key keep their order.
  virtual ResultStatus publishRecords(const std::string& name, const std::string& target,
                                      int valueType, const std::list<Record>& records, int flags,
                                      int64 tag) = 0;
  virtual ResultStatus readRecords(const std::string& name, const std::string& target, int64 begin,
                                   int64 end, const Cancel& cancelled, std::list<Record>& records,
                                   int flags, int64 wait) = 0;
  /// The last record of each target that has one; other entries of `records` are not touched.
  virtual ResultStatus readTargets(const std::string& name, const std::list<std::string>& targets,
                                   int64 time, const Cancel& cancelled,
                                   std::map<std::string, Record>& records, int flags,
                                   int64 wait) = 0;
  virtual ResultStatus readRecord(const std::string& name, const std::string& target, int64 time,
                                  const Cancel& cancelled, Record& record, int flags,
                                  int64 wait) = 0;
  /// The newest record. Code 22 "不存在" if there is none and the service did not fail.
  virtual ResultStatus readLatest(const std::string& name, const std::string& target,
                                  Record& record, int flags) = 0;
  virtual ResultStatus readLatestMany(const std::list<TargetNamePair>& keys,
                                      std::list<LatestOfName>& latest, int flags) = 0;
  virtual ResultStatus requestRange(const std::string& name, const std::string& target, int64 begin,
                                    int64 end, int64 tag, int flags) = 0;
  virtual ResultStatus requestRangeAll(const std::string& name, int64 begin, int64 end, int64 tag,
                                       int flags) = 0;
  virtual ResultStatus dataDefine(const std::string& name, DataDefine& define) = 0;
  virtual ResultStatus dataBrief(const std::string& name, DataBrief& brief) = 0;
  virtual std::list<std::string> targetsOfName(const std::string& name) = 0;
  virtual ResultStatus dataServiceQuery(const std::string& question, std::string& answer) = 0;
};

}  // namespace orvane
