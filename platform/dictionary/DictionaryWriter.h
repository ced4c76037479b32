#pragma once

#include <list>
#include <string>

#include "platform/dictionary/DictionaryService.h"

namespace orvane::detail {

/// What a publisher needs of the dictionary: a source of its own. The numbers of sources, which
/// put the publications of one moment in order, are given as they are made; so make publishers in
/// an order that does not depend on threads. Any thread may call it.
class DictionaryWriter {
 public:
  explicit DictionaryWriter(DictionaryService& service)
      : service_(service), source_(service.addSource()) {}

  ResultStatus publishRecords(const std::string& name, const std::string& target, int valueType,
                              const std::list<Record>& records, int flags, int64 tag) {
    return service_.publish(source_, {name, target, valueType, flags, tag, kUnsetTime, records});
  }
  ResultStatus requestRange(const DataReq& request, int64 tag) {
    return service_.requestRange(source_, request, tag);
  }

 private:
  DictionaryService& service_;
  const int source_;
};

}  // namespace orvane::detail
