#pragma once

#include <mutex>
#include <string>

#include "services/ov.publisher/IPublisher.h"
#include "tests/support/CallLog.h"

namespace orvane::support {

/// What the publishers of one platform were given last. Any thread may use it.
struct Published {
  std::list<Record> lastRecords() const {
    const std::lock_guard lock(mutex);
    return records;
  }
  DataReq lastRequest() const {
    const std::lock_guard lock(mutex);
    return request;
  }
  std::list<IDepthMarketData> lastQuotes() const {
    const std::lock_guard lock(mutex);
    return quotes;
  }
  std::list<IKLine> lastBars() const {
    const std::lock_guard lock(mutex);
    return bars;
  }

  mutable std::mutex mutex;
  std::list<Record> records;
  DataReq request;
  std::list<IDepthMarketData> quotes;  ///< Or ticks.
  std::list<IKLine> bars;
};

/// A publisher that publishes nothing. It notes every call as "publisher.<operation>", with its
/// arguments, and its own end as "publisher.gone". Some owners never release theirs, so the ones
/// alive stay reachable from a list of the process: a leak check finds real leaks only.
class FakePublisher final : public IPublisher {
 public:
  FakePublisher(CallLog& calls, Published& published);
  ~FakePublisher() override;

  ResultStatus publisherOp1(ORVANE_PUBLISHER_OP_ARGS) override;
  ResultStatus publisherOp2(ORVANE_PUBLISHER_OP_ARGS) override;
  ResultStatus publisherOp3(ORVANE_PUBLISHER_OP_ARGS) override;
  ResultStatus publisherOp4(ORVANE_PUBLISHER_OP_ARGS) override;
  ResultStatus publisherOp5(ORVANE_PUBLISHER_OP_ARGS) override;
  ResultStatus publisherOp6(ORVANE_PUBLISHER_OP_ARGS) override;
  ResultStatus publisherOp7(ORVANE_PUBLISHER_OP_ARGS) override;
  ResultStatus publisherOp8(ORVANE_PUBLISHER_OP_ARGS) override;
  ResultStatus publisherOp9(ORVANE_PUBLISHER_OP_ARGS) override;
  ResultStatus publisherOp10(ORVANE_PUBLISHER_OP_ARGS) override;
  ResultStatus publisherOp11(ORVANE_PUBLISHER_OP_ARGS) override;
  ResultStatus publisherOp12(ORVANE_PUBLISHER_OP_ARGS) override;
  ResultStatus publishRecords(const std::string& name, const std::string& target, int valueType,
                              const std::list<Record>& records, int flags, int64 tag) override;
  ResultStatus requestRange(const DataReq& request, int64 tag) override;
  ResultStatus publishQuoteList(const std::list<IDepthMarketData>& quotes, int flags) override;
  ResultStatus publishQuoteSeries(const ICodeID& code, const std::list<IKLine>& bars, int term,
                                  int flags) override;
  ResultStatus publishQuoteItems(const ICodeID& code, const std::list<IDepthMarketData>& ticks,
                                 int flags) override;
  ResultStatus publishQuoteItems2(const ICodeID& code, const std::list<IKLine>& bars,
                                  int flags) override;
  ResultStatus publishOp5(const std::string& key, const std::string& text, int flags) override;
  ResultStatus publishOp6(const std::string& key, const std::string& text, int flags) override;
  ResultStatus publishOp7(const std::string& key, const std::string& text, int flags) override;
  ResultStatus publishOp8(const std::string& key, const std::string& text, int flags) override;

 private:
  void keep(const std::list<IDepthMarketData>& quotes);
  void keep(const std::list<IKLine>& bars);

  CallLog& calls_;
  Published& published_;
};

}  // namespace orvane::support
