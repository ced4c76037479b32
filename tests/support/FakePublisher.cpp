#include "tests/support/FakePublisher.h"

#include <mutex>
#include <set>

namespace orvane::support {
namespace {

std::string number(int64 value) { return " " + std::to_string(value); }

std::string sizeOf(const auto& list) { return std::to_string(list.size()); }

struct Living {
  std::mutex mutex;
  std::set<const FakePublisher*> publishers;
};

Living& living() {
  static Living* const all = new Living;
  return *all;
}

}  // namespace

FakePublisher::FakePublisher(CallLog& calls, Published& published)
    : calls_(calls), published_(published) {
  const std::lock_guard lock(living().mutex);
  living().publishers.insert(this);
}

FakePublisher::~FakePublisher() {
  calls_.record("publisher.gone");
  const std::lock_guard lock(living().mutex);
  living().publishers.erase(this);
}

#define ORVANE_FAKE_PUBLISHER_OP(n)                                                         \
  ResultStatus FakePublisher::publisherOp##n(ORVANE_PUBLISHER_OP_ARGS) {                    \
    return calls_.record("publisher.publisherOp" #n, text1 + " " + text2 + number(value1) + \
                                                         number(value2) + " " + text3 +     \
                                                         number(count) + number(flags));    \
  }

ORVANE_FAKE_PUBLISHER_OP(1)
ORVANE_FAKE_PUBLISHER_OP(2)
ORVANE_FAKE_PUBLISHER_OP(3)
ORVANE_FAKE_PUBLISHER_OP(4)
ORVANE_FAKE_PUBLISHER_OP(5)
ORVANE_FAKE_PUBLISHER_OP(6)
ORVANE_FAKE_PUBLISHER_OP(7)
ORVANE_FAKE_PUBLISHER_OP(8)
ORVANE_FAKE_PUBLISHER_OP(9)
ORVANE_FAKE_PUBLISHER_OP(10)
ORVANE_FAKE_PUBLISHER_OP(11)
ORVANE_FAKE_PUBLISHER_OP(12)
#undef ORVANE_FAKE_PUBLISHER_OP

ResultStatus FakePublisher::publishRecords(const std::string& name, const std::string& target,
                                           int valueType, const std::list<Record>& records,
                                           int flags, int64 tag) {
  {
    const std::lock_guard lock(published_.mutex);
    published_.records = records;
  }
  return calls_.record("publisher.publishRecords", name + " " + target + number(valueType) + " " +
                                                       sizeOf(records) + number(flags) +
                                                       number(tag));
}

ResultStatus FakePublisher::requestRange(const DataReq& request, int64 tag) {
  {
    const std::lock_guard lock(published_.mutex);
    published_.request = request;
  }
  return calls_.record("publisher.requestRange", request.name + number(tag));
}

void FakePublisher::keep(const std::list<IDepthMarketData>& quotes) {
  const std::lock_guard lock(published_.mutex);
  published_.quotes = quotes;
}

void FakePublisher::keep(const std::list<IKLine>& bars) {
  const std::lock_guard lock(published_.mutex);
  published_.bars = bars;
}

ResultStatus FakePublisher::publishQuoteList(const std::list<IDepthMarketData>& quotes, int flags) {
  keep(quotes);
  return calls_.record("publisher.publishQuoteList", sizeOf(quotes) + number(flags));
}

ResultStatus FakePublisher::publishQuoteSeries(const ICodeID& code, const std::list<IKLine>& bars,
                                               int term, int flags) {
  keep(bars);
  return calls_.record("publisher.publishQuoteSeries",
                       std::to_string(code.id) + " " + sizeOf(bars) + number(term) + number(flags));
}

ResultStatus FakePublisher::publishQuoteItems(const ICodeID& code,
                                              const std::list<IDepthMarketData>& ticks, int flags) {
  keep(ticks);
  return calls_.record("publisher.publishQuoteItems",
                       std::to_string(code.id) + " " + sizeOf(ticks) + number(flags));
}

ResultStatus FakePublisher::publishQuoteItems2(const ICodeID& code, const std::list<IKLine>& bars,
                                               int flags) {
  keep(bars);
  return calls_.record("publisher.publishQuoteItems2",
                       std::to_string(code.id) + " " + sizeOf(bars) + number(flags));
}

ResultStatus FakePublisher::publishOp5(const std::string& key, const std::string& text, int flags) {
  return calls_.record("publisher.publishOp5", key + " " + text + number(flags));
}

ResultStatus FakePublisher::publishOp6(const std::string& key, const std::string& text, int flags) {
  return calls_.record("publisher.publishOp6", key + " " + text + number(flags));
}

ResultStatus FakePublisher::publishOp7(const std::string& key, const std::string& text, int flags) {
  return calls_.record("publisher.publishOp7", key + " " + text + number(flags));
}

ResultStatus FakePublisher::publishOp8(const std::string& key, const std::string& text, int flags) {
  return calls_.record("publisher.publishOp8", key + " " + text + number(flags));
}

}  // namespace orvane::support
