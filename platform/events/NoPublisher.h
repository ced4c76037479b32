#pragma once

#include <memory>
#include <utility>

#include "platform/core/NotSupported.h"
#include "platform/events/PublisherBook.h"
#include "services/ov.publisher/IPublisher.h"

namespace orvane::detail {

/// A publisher without a channel.
class NoPublisher final : public IPublisher {
 public:
  /// Stands in `book` as long as it lives.
  explicit NoPublisher(std::shared_ptr<PublisherBook> book) : book_(std::move(book)) {
    book_->add(this);
  }
  ~NoPublisher() override { book_->remove(this); }
  NoPublisher(const NoPublisher&) = delete;
  NoPublisher& operator=(const NoPublisher&) = delete;

  ResultStatus publisherOp1(const std::string&, const std::string&, int64, int64,
                            const std::string&, std::int32_t, int) override {
    return notSupported();
  }
  ResultStatus publisherOp2(const std::string&, const std::string&, int64, int64,
                            const std::string&, std::int32_t, int) override {
    return notSupported();
  }
  ResultStatus publisherOp3(const std::string&, const std::string&, int64, int64,
                            const std::string&, std::int32_t, int) override {
    return notSupported();
  }
  ResultStatus publisherOp4(const std::string&, const std::string&, int64, int64,
                            const std::string&, std::int32_t, int) override {
    return notSupported();
  }
  ResultStatus publisherOp5(const std::string&, const std::string&, int64, int64,
                            const std::string&, std::int32_t, int) override {
    return notSupported();
  }
  ResultStatus publisherOp6(const std::string&, const std::string&, int64, int64,
                            const std::string&, std::int32_t, int) override {
    return notSupported();
  }
  ResultStatus publisherOp7(const std::string&, const std::string&, int64, int64,
                            const std::string&, std::int32_t, int) override {
    return notSupported();
  }
  ResultStatus publisherOp8(const std::string&, const std::string&, int64, int64,
                            const std::string&, std::int32_t, int) override {
    return notSupported();
  }
  ResultStatus publisherOp9(const std::string&, const std::string&, int64, int64,
                            const std::string&, std::int32_t, int) override {
    return notSupported();
  }
  ResultStatus publisherOp10(const std::string&, const std::string&, int64, int64,
                             const std::string&, std::int32_t, int) override {
    return notSupported();
  }
  ResultStatus publisherOp11(const std::string&, const std::string&, int64, int64,
                             const std::string&, std::int32_t, int) override {
    return notSupported();
  }
  ResultStatus publisherOp12(const std::string&, const std::string&, int64, int64,
                             const std::string&, std::int32_t, int) override {
    return notSupported();
  }
  ResultStatus publishRecords(const std::string&, const std::string&, int, const std::list<Record>&,
                              int, int64) override {
    return notSupported();
  }
  ResultStatus requestRange(const DataReq&, int64) override { return notSupported(); }
  ResultStatus publishQuoteList(const std::list<IDepthMarketData>&, int) override {
    return notSupported();
  }
  ResultStatus publishQuoteSeries(const ICodeID&, const std::list<IKLine>&, int, int) override {
    return notSupported();
  }
  ResultStatus publishQuoteItems(const ICodeID&, const std::list<IDepthMarketData>&, int) override {
    return notSupported();
  }
  ResultStatus publishQuoteItems2(const ICodeID&, const std::list<IKLine>&, int) override {
    return notSupported();
  }
  ResultStatus publishOp5(const std::string&, const std::string&, int) override {
    return notSupported();
  }
  ResultStatus publishOp6(const std::string&, const std::string&, int) override {
    return notSupported();
  }
  ResultStatus publishOp7(const std::string&, const std::string&, int) override {
    return notSupported();
  }
  ResultStatus publishOp8(const std::string&, const std::string&, int) override {
    return notSupported();
  }

 private:
  const std::shared_ptr<PublisherBook> book_;
};

}  // namespace orvane::detail
