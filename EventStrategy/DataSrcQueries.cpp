// The read and publish side of the dictionary source.

#include "EventStrategy/DataSrc.h"
#include "EventStrategy/Services.h"
#include "services/Common/BDUtil.h"
#include "services/QuoteClient/BarDataReadSyncWrapper.h"
#include "shared/CodeTables.h"
#include "shared/StatusCodes.h"

namespace orvane {
namespace {

using status::kNotThere;
constexpr int kFlagFromDataService = 512;

ResultStatus notThere() { return {kNotThere, statusMessage(kNotThere)}; }

DataReq rangeOf(const std::string& name, std::list<std::string> targets, int64 begin, int64 end,
                int flags) {
  DataReq request;
  request.name = name;
  request.targets = std::move(targets);
  request.beginTime = begin;
  request.endTime = end;
  request.count = kNoLimit;
  request.flags = flags;
  return request;
}

}  // namespace

ResultStatus DataSrc::publisherOp1(ORVANE_PUBLISHER_OP_ARGS) {
  return publisher_->publisherOp1(text1, text2, value1, value2, text3, count, flags);
}

ResultStatus DataSrc::publisherOp2(ORVANE_PUBLISHER_OP_ARGS) {
  return publisher_->publisherOp2(text1, text2, value1, value2, text3, count, flags);
}

ResultStatus DataSrc::publisherOp3(ORVANE_PUBLISHER_OP_ARGS) {
  return publisher_->publisherOp3(text1, text2, value1, value2, text3, count, flags);
}

ResultStatus DataSrc::publisherOp4(ORVANE_PUBLISHER_OP_ARGS) {
  return publisher_->publisherOp4(text1, text2, value1, value2, text3, count, flags);
}

ResultStatus DataSrc::publisherOp5(ORVANE_PUBLISHER_OP_ARGS) {
  return publisher_->publisherOp5(text1, text2, value1, value2, text3, count, flags);
}

ResultStatus DataSrc::publisherOp6(ORVANE_PUBLISHER_OP_ARGS) {
  return publisher_->publisherOp6(text1, text2, value1, value2, text3, count, flags);
}

ResultStatus DataSrc::publisherOp7(ORVANE_PUBLISHER_OP_ARGS) {
  return publisher_->publisherOp7(text1, text2, value1, value2, text3, count, flags);
}

ResultStatus DataSrc::publisherOp8(ORVANE_PUBLISHER_OP_ARGS) {
  return publisher_->publisherOp8(text1, text2, value1, value2, text3, count, flags);
}

ResultStatus DataSrc::publisherOp9(ORVANE_PUBLISHER_OP_ARGS) {
  return publisher_->publisherOp9(text1, text2, value1, value2, text3, count, flags);
}

ResultStatus DataSrc::publisherOp10(ORVANE_PUBLISHER_OP_ARGS) {
  return publisher_->publisherOp10(text1, text2, value1, value2, text3, count, flags);
}

ResultStatus DataSrc::publisherOp11(ORVANE_PUBLISHER_OP_ARGS) {
  return publisher_->publisherOp11(text1, text2, value1, value2, text3, count, flags);
}

ResultStatus DataSrc::publisherOp12(ORVANE_PUBLISHER_OP_ARGS) {
  return publisher_->publisherOp12(text1, text2, value1, value2, text3, count, flags);
}

ResultStatus DataSrc::publishRecords(const std::string& name, const std::string& target,
                                     int valueType, const std::list<Record>& records, int flags,
                                     int64 tag) {
  std::list<Record> sorted = records;
  sorted.sort([](const Record& a, const Record& b) { return a.key < b.key; });
  return publisher_->publishRecords(name, target, valueType, sorted, flags, tag);
}

ResultStatus DataSrc::readRecords(const std::string& name, const std::string& target, int64 begin,
                                  int64 end, const Cancel& cancelled, std::list<Record>& records,
                                  int flags, int64 wait) {
  return BarDataReadSyncWrapper::getRecords(target, name, begin, end, records, cancelled, wait,
                                            flags);
}

ResultStatus DataSrc::readTargets(const std::string& name, const std::list<std::string>& targets,
                                  int64 time, const Cancel& cancelled,
                                  std::map<std::string, Record>& records, int flags, int64 wait) {
  std::list<TargetRecord> found;
  ResultStatus status =
      BarDataReadSyncWrapper::getRecord(targets, name, time, found, cancelled, wait, flags);
  for (const TargetRecord& target : found)
    if (!target.records.empty()) records[target.target] = target.records.back();
  return status;
}

ResultStatus DataSrc::readRecord(const std::string& name, const std::string& target, int64 time,
                                 const Cancel& cancelled, Record& record, int flags, int64 wait) {
  return BarDataReadSyncWrapper::getRecord(target, name, time, record, cancelled, wait, flags);
}

ResultStatus DataSrc::readLatest(const std::string& name, const std::string& target, Record& record,
                                 int flags) {
  std::list<LatestOfName> latest;
  ResultStatus status = dataService()->readLatest({{target, name}}, latest, flags);
  if (!latest.empty() && !latest.back().second.empty() &&
      !latest.back().second.back().second.empty()) {
    record = latest.back().second.back().second.back();
    return {};
  }
  return status.code != 0 ? status : notThere();
}

ResultStatus DataSrc::readLatestMany(const std::list<TargetNamePair>& keys,
                                     std::list<LatestOfName>& latest, int flags) {
  return dataService()->readLatest(keys, latest, flags);
}

ResultStatus DataSrc::requestRange(const std::string& name, const std::string& target, int64 begin,
                                   int64 end, int64 tag, int flags) {
  return publisher_->requestRange(rangeOf(name, {target}, begin, end, flags), tag);
}

ResultStatus DataSrc::requestRangeAll(const std::string& name, int64 begin, int64 end, int64 tag,
                                      int flags) {
  const DataReq request = rangeOf(name, {}, begin, end, flags);
  if ((flags & kFlagFromDataService) != 0) return dataService()->requestAll(request, tag);
  return publisher_->requestRange(request, tag);
}

ResultStatus DataSrc::dataDefine(const std::string& name, DataDefine& define) {
  std::list<DataDefine> found;
  dataService()->dataDefines(found, {name}, 1);
  if (found.empty()) return notThere();
  define = found.front();
  return {};
}

ResultStatus DataSrc::dataBrief(const std::string& name, DataBrief& brief) {
  std::list<DataBrief> found;
  dataService()->dataBriefs(found, {name});
  if (found.empty()) return notThere();
  brief = found.front();
  return {};
}

std::list<std::string> DataSrc::targetsOfName(const std::string& name) {
  return BDUtil::getTargetByName(name, dataService(), false);
}

ResultStatus DataSrc::dataServiceQuery(const std::string& question, std::string& answer) {
  return dataService()->queryOp(question, answer);
}

}  // namespace orvane
