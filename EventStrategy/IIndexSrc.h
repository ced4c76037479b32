#pragma once

#include <list>

#include "shared/Export.h"
#include "shared/IndexTradeElement.h"
#include "shared/ResultStatus.h"

namespace orvane {

/// A strategy's door to the composition of indexes. Owned by its event strategy; any thread may
/// call it.
class ORVANE_API IIndexSrc {
 public:
  IIndexSrc();
  IIndexSrc(const IIndexSrc&) = delete;
  IIndexSrc& operator=(const IIndexSrc&) = delete;
  virtual ~IIndexSrc();

  /// The present elements of an index; the result is the service's.
  virtual ResultStatus indexElements(const ICodeID& code,
                                     std::list<IndexTradeElement>& elements) = 0;
};

}  // namespace orvane
