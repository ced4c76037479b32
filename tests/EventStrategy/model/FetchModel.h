#pragma once

#include <map>
#include <vector>

#include "services/Common/IRealtimeQuoteService.h"

namespace orvane::support {

/// What blocking fetches promise, told by all requests that one source ever made, by their ids: a
/// request counts as ended from its last batch on, and is heard until its waiter lets it go.
class FetchModel {
 public:
  struct Request {
    int64 code = 0;
    bool isMaintenance = false;
    bool isEnded = false;
    bool isHeard = true;
  };
  using Marks = std::vector<Word>;  ///< Bars, by what tells them apart.

  /// A fetch or a maintenance begins.
  void begin() {
    bars.clear();
    status = {};
    pending_.clear();
  }

  void ask(int id, const Request& request) {
    requests[id] = request;
    pending_.push_back(id);
  }
  void refuse(int id) { requests.at(id).isEnded = true; }

  /// These tell whether somebody heard it.
  bool answerBars(int id, const Marks& marks, int flags) {
    if ((flags & kLastBatchFlag) == 0) return false;
    Request& request = requests.at(id);
    request.isEnded = true;
    const bool isTaken = request.isHeard && !request.isMaintenance;
    if (isTaken) bars[request.code] = marks;
    return isTaken;
  }
  void answerTicks(int id, int flags) {
    if ((flags & kLastBatchFlag) != 0) requests.at(id).isEnded = true;
  }
  bool answerMaintenance(int id, const ResultStatus& answer) {
    Request& request = requests.at(id);
    request.isEnded = true;
    const bool isTaken = request.isHeard && request.isMaintenance;
    if (isTaken) status = answer;
    return isTaken;
  }

  /// Whether there is nothing left to wait for.
  bool isOver() const {
    for (const int id : pending_)
      if (!requests.at(id).isEnded) return false;
    return true;
  }

  void letGo(int id) { requests.at(id).isHeard = false; }
  void letAllGo() {
    for (auto& entry : requests) entry.second.isHeard = false;
  }

  const std::vector<int>& pending() const { return pending_; }

  std::map<int, Request> requests;
  std::map<int64, Marks> bars;  ///< What the present fetch has got, by code.
  ResultStatus status;          ///< What the present maintenance was told.

 private:
  std::vector<int> pending_;  ///< What the present call asked for, in order.
};

}  // namespace orvane::support
