#pragma once

#include <functional>
#include <memory>

#include "platform/dictionary/DictionaryWriter.h"
#include "platform/events/Publications.h"
#include "platform/events/PublisherBook.h"
#include "services/ov.publisher/IPublisher.h"

namespace orvane {
class ICodeService;
class IGeneralEventManager;
}  // namespace orvane

namespace orvane::detail {

/// Publishes into the platform itself: what it takes, the platform's own services tell. Any thread
/// may call it. What its operations mean stands in docs/services.md.
class Publisher final : public IPublisher {
 public:
  struct Parts {
    std::shared_ptr<PublisherBook> book;
    Publications& market;
    ICodeService& codes;
    IGeneralEventManager& events;
    DictionaryService& dictionary;
    std::function<int64()> now;
  };
  /// Stands in the book as long as it lives.
  explicit Publisher(Parts parts);
  ~Publisher() override;
  Publisher(const Publisher&) = delete;
  Publisher& operator=(const Publisher&) = delete;

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
  ResultStatus announce(const std::string& codeText, const std::string& frequency);
  ResultStatus publishPrice(const std::string& codeText, const std::string& price, double volume);

  const Parts parts_;
  const int number_;
  DictionaryWriter dictionary_;
};

}  // namespace orvane::detail
