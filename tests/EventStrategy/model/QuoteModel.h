#pragma once

#include <map>
#include <string>
#include <vector>

#include "shared/MarketRecords.h"

namespace orvane::support {

/// What a quote source promises, told by its two tables. Each operation gives the calls that the
/// service must get, in order; the tables change before the first of them.
class QuoteModel {
 public:
  using Calls = std::vector<std::string>;

  Calls subscribeQuote(int64 code, int flags) {
    if (++subscribers[code] > 1) return {};
    return {"quote.subscribeQuote " + std::to_string(code) + " flags=" + std::to_string(flags)};
  }

  Calls unsubscribeQuote(int64 code, int flags) {
    if (!subscribers.contains(code)) return {};
    if (--subscribers[code] > 0) return {};
    subscribers.erase(code);
    return {"quote.unsubscribeQuote " + std::to_string(code) + " flags=" + std::to_string(flags)};
  }

  /// `period` is the pair that the service gets, such as "(3,1)".
  Calls request(int id, const IMDQuery& query, const std::string& period) {
    requests[id] = query;
    return {"quote.subscribeBars " + std::to_string(id) + " code=" + std::to_string(query.code.id) +
            " term=" + period + " begin=" + std::to_string(query.beginTime) +
            " end=" + std::to_string(query.endTime) + " count=" + std::to_string(query.count) +
            " flags=" + std::to_string(query.flags)};
  }

  Calls cancel(int id) {
    if (requests.erase(id) == 0) return {};
    return {"quote.cancelRequest " + std::to_string(id)};
  }

  Calls release() {
    Calls calls;
    for (const auto& [id, query] : requests)
      calls.push_back("quote.cancelRequest " + std::to_string(id));
    calls.push_back("quote.unsubscribeSpi");
    requests.clear();
    subscribers.clear();
    return calls;
  }

  std::map<int64, int> subscribers;  ///< By code, 1 at least.
  std::map<int, IMDQuery> requests;
  bool listens = true;  ///< Whether somebody is attached.
};

}  // namespace orvane::support
