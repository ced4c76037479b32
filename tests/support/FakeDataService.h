#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <vector>

#include "services/Common/IDataService.h"
#include "tests/support/CallLog.h"

namespace orvane::support {

/// A dictionary service that delivers nothing of its own accord. It notes every call as
/// "data.<operation>", answers as scripted, and keeps every spi that it was ever given, as a
/// careless service does. Any thread may use it; fill in the answers before other threads do.
class FakeDataService final : public IDataService {
 public:
  explicit FakeDataService(CallLog& calls) : calls_(calls) {}

  /// What the questions of these names answer: unset, one entry for each name asked.
  std::optional<std::list<DataDefine>> definesAnswer;
  std::optional<std::list<DataBrief>> briefsAnswer;
  std::list<LatestOfName> latestAnswer;  ///< What `readLatest` appends.

  ResultStatus dataDefines(std::list<DataDefine>& defines, const std::list<std::string>& names,
                           int flags) override;
  ResultStatus dataBriefs(std::list<DataBrief>& briefs,
                          const std::list<std::string>& names) override;
  ResultStatus queryOp(const std::string& question, std::string& answer) override;
  ResultStatus requestAll(const DataReq& request, int64 tag) override;
  ResultStatus subscribeData(const DataReq& request, const std::shared_ptr<DataSpi>& spi,
                             int requestId) override;
  void unsubscribeData(int requestId) override;
  void subscribeSnapshot(const std::list<TargetNamePair>& keys, const std::shared_ptr<DataSpi>& spi,
                         int flags) override;
  void unsubscribeAllSnapshots(const std::shared_ptr<DataSpi>& spi) override;
  void unsubscribeSnapshot(const std::list<TargetNamePair>& keys,
                           const std::shared_ptr<DataSpi>& spi, int flags) override;
  ResultStatus readLatest(const std::list<TargetNamePair>& keys, std::list<LatestOfName>& latest,
                          int flags) override;

  /// The spi of a request, and of the last snapshot subscription.
  std::shared_ptr<DataSpi> requestSpi(int requestId) const;
  std::shared_ptr<DataSpi> snapshotSpi() const;
  /// Every spi that a subscription or a withdrawal brought, in order.
  std::vector<std::shared_ptr<DataSpi>> spis() const;
  DataReq request(int requestId) const;
  void forget();

 private:
  struct Request {
    DataReq request;
    std::shared_ptr<DataSpi> spi;
  };

  void keep(const std::shared_ptr<DataSpi>& spi);

  CallLog& calls_;
  mutable std::mutex mutex_;
  std::vector<std::shared_ptr<DataSpi>> spis_;
  std::map<int, Request> requests_;
  std::shared_ptr<DataSpi> snapshotSpi_;
};

}  // namespace orvane::support
