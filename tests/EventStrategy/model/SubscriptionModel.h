#pragma once

#include <map>
#include <set>
#include <string>

#include "tests/EventStrategy/model/Flow.h"

namespace orvane::support {

/// What one runner has subscribed, as a model sees it: the sources' tables, which are the first
/// gate that data passes, and the context's books, which are the second. An operation opens or
/// closes the first gate at once, then calls the service, then writes the book.
struct SubscriptionModel {
  // The sources' side.
  std::set<int> quoteGate;      ///< Codes.
  std::set<int> requestGate;    ///< Ids of requests for bars or ticks.
  std::set<int> dataGate;       ///< Ids of dictionary requests.
  std::set<int> snapshotGate;   ///< Keys.
  std::set<int> timers;         ///< Ids of timers, asked again at the second gate.
  std::set<int> runningTimers;  ///< Those that the platform has.

  // The context's books.
  std::set<int> quotes;
  std::map<int, int> idByCode;  ///< Bars: code to drawn id.
  std::map<int, int> drawn;     ///< Bars: drawn id to code.
  std::map<int, int> byCaller;  ///< Bars: the caller's id to code.
  std::map<int, int> idByKey;   ///< Dictionary: key to id.
  std::map<int, int> dics;      ///< Dictionary: id to key.
  std::set<int> snapshots;

  static Flow::Part service(const std::string& operation, int id) {
    return Flow::call(operation + " " + std::to_string(id));
  }

  Flow::Parts subscribeQuote(int code) {
    if (quotes.contains(code)) return {};
    quoteGate.insert(code);
    return {service("quote.subscribeQuote", code), Flow::act([=, this] { quotes.insert(code); })};
  }
  Flow::Parts unsubscribeQuote(int code) {
    if (!quotes.contains(code)) return {};
    quoteGate.erase(code);
    return {service("quote.unsubscribeQuote", code), Flow::act([=, this] { quotes.erase(code); })};
  }

  Flow::Parts subscribeBars(int code, int& lastId) {
    if (idByCode.contains(code)) return {};
    const int id = ++lastId;
    requestGate.insert(id);
    return {service("quote.subscribeBars", id), Flow::act([=, this] {
              idByCode[code] = id;
              drawn[id] = code;
            })};
  }
  Flow::Parts unsubscribeBars(int code) {
    const auto it = idByCode.find(code);
    if (it == idByCode.end()) return {};
    const int id = it->second;
    Flow::Parts parts = closeRequest(id);
    parts.push_back(Flow::act([=, this] {
      drawn.erase(id);
      idByCode.erase(code);
    }));
    return parts;
  }

  Flow::Parts subscribeBarsById(int id, int code) {
    if (byCaller.contains(id)) return {};
    requestGate.insert(id);
    return {service("quote.subscribeBars", id), Flow::act([=, this] { byCaller[id] = code; })};
  }
  Flow::Parts unsubscribeBarsById(int id) {
    if (!byCaller.contains(id)) return {};
    Flow::Parts parts = closeRequest(id);
    parts.push_back(Flow::act([=, this] { byCaller.erase(id); }));
    return parts;
  }

  Flow::Parts subscribeDic(int key, int& lastId) {
    if (idByKey.contains(key)) return {};
    const int id = ++lastId;
    dataGate.insert(id);
    return {service("data.subscribeData", id), Flow::act([=, this] {
              idByKey[key] = id;
              dics[id] = key;
            })};
  }
  Flow::Parts unsubscribeDic(int key) {
    const auto it = idByKey.find(key);
    if (it == idByKey.end()) return {};
    const int id = it->second;
    dataGate.erase(id);
    return {service("data.unsubscribeData", id), Flow::act([=, this] {
              dics.erase(id);
              idByKey.erase(key);
            })};
  }

  Flow::Parts subscribeSnapshot(int key) {
    if (snapshots.contains(key)) return {};
    snapshotGate.insert(key);
    return {service("data.subscribeSnapshot", key),
            Flow::act([=, this] { snapshots.insert(key); })};
  }
  Flow::Parts unsubscribeSnapshot(int key) {
    if (!snapshots.contains(key)) return {};
    snapshotGate.erase(key);
    return {service("data.unsubscribeSnapshot", key),
            Flow::act([=, this] { snapshots.erase(key); })};
  }

  Flow::Parts createTimer(int& lastTimer) {
    const int id = ++lastTimer;
    timers.insert(id);
    runningTimers.insert(id);
    return {service("timer.start", id)};
  }
  Flow::Parts stopTimer(int id) {
    if (timers.erase(id) == 0) return {};
    return {service("timer.stop", id), Flow::act([=, this] { runningTimers.erase(id); })};
  }

  /// The end of a run: everything is withdrawn, in the order of its kinds.
  Flow::Parts exit();

  /// The end of the runner: the sources withdraw what is left, at once and then from the services.
  Flow::Parts release();

 private:
  /// One id may stand for a drawn and for a caller's request: only the first withdrawal is told.
  Flow::Parts closeRequest(int id) {
    if (requestGate.erase(id) == 0) return {};
    return {service("quote.cancelRequest", id)};
  }
  Flow::Part then(std::set<int>& gate, int id) {
    return Flow::act([&gate, id] { gate.erase(id); });
  }
};

inline Flow::Parts SubscriptionModel::exit() {
  Flow::Parts parts;
  for (const int code : quotes) {
    parts.push_back(then(quoteGate, code));
    parts.push_back(service("quote.unsubscribeQuote", code));
  }
  std::set<int> open = requestGate;
  for (const auto* requests : {&drawn, &byCaller})
    for (const auto& [id, code] : *requests) {
      if (open.erase(id) == 0) continue;
      parts.push_back(then(requestGate, id));
      parts.push_back(service("quote.cancelRequest", id));
    }
  parts.push_back(Flow::act([this] {
    quotes.clear();
    idByCode.clear();
    drawn.clear();
    byCaller.clear();
  }));
  for (const auto& [id, key] : dics) {
    parts.push_back(then(dataGate, id));
    parts.push_back(service("data.unsubscribeData", id));
  }
  for (const int key : snapshots) {
    parts.push_back(then(snapshotGate, key));
    parts.push_back(service("data.unsubscribeSnapshot", key));
  }
  parts.push_back(Flow::act([this] {
    idByKey.clear();
    dics.clear();
    snapshots.clear();
  }));
  const std::set<int> all = timers;
  parts.push_back(Flow::act([this] { timers.clear(); }));
  for (const int id : all) {
    parts.push_back(service("timer.stop", id));
    parts.push_back(then(runningTimers, id));
  }
  return parts;
}

inline Flow::Parts SubscriptionModel::release() {
  Flow::Parts parts;
  const std::set<int> requests = requestGate;
  parts.push_back(Flow::act([this] {
    requestGate.clear();
    quoteGate.clear();
  }));
  for (const int id : requests) parts.push_back(service("quote.cancelRequest", id));
  parts.push_back(Flow::call("quote.unsubscribeSpi"));
  const std::set<int> data = dataGate;
  parts.push_back(Flow::act([this] {
    dataGate.clear();
    snapshotGate.clear();
  }));
  for (const int id : data) parts.push_back(service("data.unsubscribeData", id));
  parts.push_back(Flow::call("data.unsubscribeAllSnapshots"));
  return parts;
}

}  // namespace orvane::support
