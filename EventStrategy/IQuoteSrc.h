#pragma once

#include <list>
#include <map>
#include <string>
#include <vector>

#include "shared/CodeProperty.h"
#include "shared/Export.h"
#include "shared/MarketRecords.h"

namespace orvane {

/// A strategy's door to market data queries, codes and the publication of quotes. Owned by its
/// event strategy; any thread may call it. The order of the operations is fixed.
///
/// A failed look-up or a refusal is the service's status, unchanged. A text that names no code
/// gives the status of the look-up.
class ORVANE_API IQuoteSrc {
 public:
  IQuoteSrc();
  IQuoteSrc(const IQuoteSrc&) = delete;
  IQuoteSrc& operator=(const IQuoteSrc&) = delete;
  virtual ~IQuoteSrc();

  /// The last quote of a code.
  virtual ResultStatus getQuote(const ICodeID& code, IDepthMarketData& quote, int flags) = 0;
  /// The last quotes of several codes, in their order; a code that has none is left out.
  virtual std::vector<IDepthMarketData> getQuotes(const std::vector<ICodeID>& codes, int flags) = 0;

  virtual ResultStatus codeNameOf(const ICodeID& code, std::string& name) = 0;
  virtual ResultStatus codeIdOf(const std::string& text, ICodeID& code) = 0;
  virtual ResultStatus codeQueryA(int kind, std::list<ICodeID>& codes) = 0;
  virtual ResultStatus codeQueryB(int kind, int market, int limit, std::list<ICodeID>& codes) = 0;
  virtual ResultStatus codeQueryC(int kind, int market, std::list<ICodeID>& codes) = 0;
  virtual ResultStatus codeRangeQuery(const std::string& prefix, int first, int limit,
                                      std::list<ICodeID>& codes) = 0;
  virtual ResultStatus codeQueryD(const int& market, std::string& name) = 0;
  virtual ResultStatus codeQueryE(const std::string& name, int& market) = 0;
  virtual ResultStatus codeServiceQuery(const std::string& text, ICodeID& code, int flags) = 0;

  virtual ResultStatus currentCodeProperty(const ICodeID& code, ICodeProperty& property,
                                           int64 time) = 0;
  /// The properties at `time`, or the present ones if it is `kUnsetTime`.
  virtual ResultStatus codeProperty(const std::string& text, ICodeProperty& property,
                                    int64 time) = 0;
  virtual ResultStatus codeProperty(const ICodeID& code, ICodeProperty& property, int64 time) = 0;
  virtual ResultStatus historyCodeProperties(const std::string& text,
                                             std::vector<ITimeCodeProp>& properties, int flags) = 0;
  virtual ResultStatus historyCodeProperties(const ICodeID& code,
                                             std::vector<ITimeCodeProp>& properties, int flags) = 0;
  virtual ResultStatus codeQueryF(int market, std::list<ICodeProperty>& properties) = 0;

  /// The present properties of the dominant contract, of the underlying, of the continuous code,
  /// and of the continuous code of the underlying.
  virtual ResultStatus resolvedCodeProperty(const ICodeID& code, ICodeProperty& property) = 0;
  virtual ResultStatus resolvedCodeProperty2(const ICodeID& code, ICodeProperty& property) = 0;
  virtual ResultStatus resolvedCodeProperty3(const ICodeID& code, ICodeProperty& property) = 0;
  virtual ResultStatus resolvedCodeProperty4(const ICodeID& code, ICodeProperty& property) = 0;

  /// Appends the categories of all markets of kind 1 and of kind 7; a market that fails is
  /// skipped.
  virtual ResultStatus categories(std::vector<ICategoryID>& categories) = 0;
  /// The codes of a category. Code -1 "未知错误" for a text that names none.
  virtual ResultStatus categoryQuery(const std::string& text, int flags,
                                     std::list<ICodeID>& codes) = 0;
  virtual ResultStatus setUserCodeProperty(const ICodeProperty& property) = 0;

  /// Blocks for the bars of each range, until all are there or `timeoutMs` of real time have
  /// passed. Answers, code by code, what came: a range that was refused or is late leaves no entry,
  /// and of two ranges of one code the later answer is kept. Of a history in several batches only
  /// the last counts; see docs/services.md for how to have it in one. Not to be called on a thread
  /// of the service. It may be called inside a strategy's call-back.
  virtual std::map<ICodeID, std::vector<IKLine>> fetchBarsSync(const std::list<OVDataRange>& ranges,
                                                               int64 timeoutMs) = 0;
  /// Has the platform put a code's stored data of a frequency in order, and blocks for the outcome,
  /// `timeoutMs` of real time at most; without an answer by then code 0. What `value` means is the
  /// platform's. A bad frequency takes the whole time, and then gives its status.
  virtual ResultStatus maintainDataSync(const ICodeID& code, const std::string& frequency,
                                        int64 value, int64 timeoutMs) = 0;

  /// The period of a frequency text in milliseconds; `extraFlag` adds 256 to a query's flags.
  virtual ResultStatus freqToTerm(const std::string& frequency, int64& term, bool& extraFlag) = 0;

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

  /// A fresh request id.
  virtual int generateRequestId() = 0;
};

}  // namespace orvane
