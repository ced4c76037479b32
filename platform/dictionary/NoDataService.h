#pragma once

#include "platform/core/NotSupported.h"
#include "services/Common/IDataService.h"

namespace orvane::detail {

/// A dictionary without tables: every question is answered as not supported.
class NoDataService final : public IDataService {
 public:
  ResultStatus dataDefines(std::list<DataDefine>&, const std::list<std::string>&, int) override {
    return notSupported();
  }
  ResultStatus dataBriefs(std::list<DataBrief>&, const std::list<std::string>&) override {
    return notSupported();
  }
  ResultStatus queryOp(const std::string&, std::string&) override { return notSupported(); }
  ResultStatus requestAll(const DataReq&, int64) override { return notSupported(); }
  ResultStatus subscribeData(const DataReq&, const std::shared_ptr<DataSpi>&, int) override {
    return notSupported();
  }
  void unsubscribeData(int) override {}
  void subscribeSnapshot(const std::list<TargetNamePair>&, const std::shared_ptr<DataSpi>&,
                         int) override {}
  void unsubscribeAllSnapshots(const std::shared_ptr<DataSpi>&) override {}
  void unsubscribeSnapshot(const std::list<TargetNamePair>&, const std::shared_ptr<DataSpi>&,
                           int) override {}
  ResultStatus readLatest(const std::list<TargetNamePair>&, std::list<LatestOfName>&,
                          int) override {
    return notSupported();
  }
};

}  // namespace orvane::detail
