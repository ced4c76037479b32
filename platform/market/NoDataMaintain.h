#pragma once

#include "platform/core/NotSupported.h"
#include "services/QuoteClient/IDataMaintain.h"

namespace orvane::detail {

/// Data are files, and nobody changes them under way: there is nothing to put in order.
class NoDataMaintain final : public IDataMaintain {
 public:
  ResultStatus maintain(const ICodeID&, ITimeType, int64, const std::shared_ptr<IDataMaintainSpi>&,
                        int) override {
    return notSupported();
  }
};

}  // namespace orvane::detail
