#pragma once

#include <list>
#include <string>

#include "shared/DictionaryRecords.h"
#include "shared/Export.h"
#include "shared/MarketRecords.h"
#include "shared/ResultStatus.h"

namespace orvane {

/// The arguments of the first twelve operations: four texts and two ints around a count.
/// They are passed through; their meaning is the publisher's.
#define ORVANE_PUBLISHER_OP_ARGS                                                  \
  const std::string &text1, const std::string &text2, int64 value1, int64 value2, \
      const std::string &text3, std::int32_t count, int flags

/// Publishes market and dictionary data. Made by `create` and owned by the caller; any thread may
/// call it. The order of the operations is fixed.
class ORVANE_API IPublisher {
 public:
  virtual ~IPublisher();

  /// A new publisher of the installed platform. `mode` is 2, 4 or 0.
  static IPublisher* create(RunnerModeFlag mode);

  virtual ResultStatus publisherOp1(ORVANE_PUBLISHER_OP_ARGS) = 0;
  virtual ResultStatus publisherOp2(ORVANE_PUBLISHER_OP_ARGS) = 0;
  virtual ResultStatus publisherOp3(ORVANE_PUBLISHER_OP_ARGS) = 0;
  virtual ResultStatus publisherOp4(ORVANE_PUBLISHER_OP_ARGS) = 0;
  virtual ResultStatus publisherOp5(ORVANE_PUBLISHER_OP_ARGS) = 0;
  virtual ResultStatus publisherOp6(ORVANE_PUBLISHER_OP_ARGS) = 0;
  virtual ResultStatus publisherOp7(ORVANE_PUBLISHER_OP_ARGS) = 0;
  virtual ResultStatus publisherOp8(ORVANE_PUBLISHER_OP_ARGS) = 0;
  virtual ResultStatus publisherOp9(ORVANE_PUBLISHER_OP_ARGS) = 0;
  virtual ResultStatus publisherOp10(ORVANE_PUBLISHER_OP_ARGS) = 0;
  virtual ResultStatus publisherOp11(ORVANE_PUBLISHER_OP_ARGS) = 0;
  virtual ResultStatus publisherOp12(ORVANE_PUBLISHER_OP_ARGS) = 0;

  /// Publishes records that are sorted by key. On success the message is the depth of the queue.
  virtual ResultStatus publishRecords(const std::string& name, const std::string& target,
                                      int valueType, const std::list<Record>& records, int flags,
                                      int64 tag) = 0;
  virtual ResultStatus requestRange(const DataReq& request, int64 tag) = 0;

  virtual ResultStatus publishQuoteList(const std::list<IDepthMarketData>& quotes, int flags) = 0;
  virtual ResultStatus publishQuoteSeries(const ICodeID& code, const std::list<IKLine>& bars,
                                          int term, int flags) = 0;
  virtual ResultStatus publishQuoteItems(const ICodeID& code,
                                         const std::list<IDepthMarketData>& ticks, int flags) = 0;
  virtual ResultStatus publishQuoteItems2(const ICodeID& code, const std::list<IKLine>& bars,
                                          int flags) = 0;
  virtual ResultStatus publishOp5(const std::string& key, const std::string& text, int flags) = 0;
  virtual ResultStatus publishOp6(const std::string& key, const std::string& text, int flags) = 0;
  virtual ResultStatus publishOp7(const std::string& key, const std::string& text, int flags) = 0;
  virtual ResultStatus publishOp8(const std::string& key, const std::string& text, int flags) = 0;
};

}  // namespace orvane
