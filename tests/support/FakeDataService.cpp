#include "tests/support/FakeDataService.h"

#include <string>

namespace orvane::support {
namespace {

std::string keyText(const std::list<TargetNamePair>& keys) {
  std::string text;
  for (const auto& [target, name] : keys) text += (text.empty() ? "" : ",") + name + "/" + target;
  return text;
}

std::string joined(const std::list<std::string>& texts) {
  std::string all;
  for (const std::string& text : texts) all += (all.empty() ? "" : ",") + text;
  return all;
}

std::string requestText(const DataReq& request) {
  std::string text = request.name;
  for (const std::string& target : request.targets) text += "/" + target;
  return text + " begin=" + std::to_string(request.beginTime) +
         " end=" + std::to_string(request.endTime) + " count=" + std::to_string(request.count) +
         " flags=" + std::to_string(request.flags);
}

}  // namespace

ResultStatus FakeDataService::dataDefines(std::list<DataDefine>& defines,
                                          const std::list<std::string>& names, int flags) {
  if (definesAnswer)
    defines = *definesAnswer;
  else
    for (const std::string& name : names) defines.push_back({name, {}, {}, {}, 0, 0, 0});
  return calls_.record("data.dataDefines", joined(names) + " " + std::to_string(flags));
}

ResultStatus FakeDataService::dataBriefs(std::list<DataBrief>& briefs,
                                         const std::list<std::string>& names) {
  if (briefsAnswer)
    briefs = *briefsAnswer;
  else
    for (const std::string& name : names) briefs.push_back({name, {}});
  return calls_.record("data.dataBriefs", joined(names));
}

ResultStatus FakeDataService::queryOp(const std::string& question, std::string& answer) {
  answer = "answer to " + question;
  return calls_.record("data.queryOp", question);
}

ResultStatus FakeDataService::requestAll(const DataReq& request, int64 tag) {
  return calls_.record("data.requestAll", requestText(request) + " tag=" + std::to_string(tag));
}

ResultStatus FakeDataService::subscribeData(const DataReq& request,
                                            const std::shared_ptr<DataSpi>& spi, int requestId) {
  {
    const std::lock_guard lock(mutex_);
    requests_[requestId] = {request, spi};
  }
  keep(spi);
  return calls_.record("data.subscribeData",
                       std::to_string(requestId) + " " + requestText(request));
}

void FakeDataService::unsubscribeData(int requestId) {
  calls_.record("data.unsubscribeData", std::to_string(requestId));
}

void FakeDataService::subscribeSnapshot(const std::list<TargetNamePair>& keys,
                                        const std::shared_ptr<DataSpi>& spi, int flags) {
  {
    const std::lock_guard lock(mutex_);
    snapshotSpi_ = spi;
  }
  keep(spi);
  calls_.record("data.subscribeSnapshot", keyText(keys) + " flags=" + std::to_string(flags));
}

void FakeDataService::unsubscribeAllSnapshots(const std::shared_ptr<DataSpi>& spi) {
  keep(spi);
  calls_.record("data.unsubscribeAllSnapshots");
}

void FakeDataService::unsubscribeSnapshot(const std::list<TargetNamePair>& keys,
                                          const std::shared_ptr<DataSpi>& spi, int flags) {
  keep(spi);
  calls_.record("data.unsubscribeSnapshot", keyText(keys) + " flags=" + std::to_string(flags));
}

ResultStatus FakeDataService::readLatest(const std::list<TargetNamePair>& keys,
                                         std::list<LatestOfName>& latest, int flags) {
  latest.insert(latest.end(), latestAnswer.begin(), latestAnswer.end());
  return calls_.record("data.readLatest", keyText(keys) + " flags=" + std::to_string(flags));
}

std::shared_ptr<DataSpi> FakeDataService::requestSpi(int requestId) const {
  const std::lock_guard lock(mutex_);
  const auto it = requests_.find(requestId);
  return it == requests_.end() ? nullptr : it->second.spi;
}

std::shared_ptr<DataSpi> FakeDataService::snapshotSpi() const {
  const std::lock_guard lock(mutex_);
  return snapshotSpi_;
}

std::vector<std::shared_ptr<DataSpi>> FakeDataService::spis() const {
  const std::lock_guard lock(mutex_);
  return spis_;
}

void FakeDataService::keep(const std::shared_ptr<DataSpi>& spi) {
  const std::lock_guard lock(mutex_);
  spis_.push_back(spi);
}

DataReq FakeDataService::request(int requestId) const {
  const std::lock_guard lock(mutex_);
  return requests_.at(requestId).request;
}

void FakeDataService::forget() {
  std::map<int, Request> requests;
  std::vector<std::shared_ptr<DataSpi>> spis;
  std::shared_ptr<DataSpi> spi;
  const std::lock_guard lock(mutex_);
  requests.swap(requests_);
  spis.swap(spis_);
  spi.swap(snapshotSpi_);
}

}  // namespace orvane::support
