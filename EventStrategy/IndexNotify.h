#pragma once

#include <list>

#include "shared/Export.h"
#include "shared/IndexTradeElement.h"

namespace orvane {

/// Where index changes go. Called on threads of the index service, with the source's mutex held.
class ORVANE_API IndexNotify {
 public:
  IndexNotify();
  IndexNotify(const IndexNotify&);
  IndexNotify& operator=(const IndexNotify&);
  virtual ~IndexNotify();

  virtual void onElementChange(const ICodeID& code, std::list<IndexTradeElement>& elements);
};

}  // namespace orvane
