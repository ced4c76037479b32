#pragma once

#include <map>
#include <string>

#include "services/Common/ICodeService.h"
#include "tests/support/CallLog.h"

namespace orvane::support {

/// The code tables of a fake platform. It notes every call as "code.<operation>" and answers as
/// scripted; texts that a test put into `codes` resolve, all others give code 22. Fill the tables
/// before other threads use it.
class FakeCodeService final : public ICodeService {
 public:
  explicit FakeCodeService(CallLog& calls) : calls_(calls) {}

  std::map<std::string, ICodeID> codes;
  std::map<std::string, ICategoryID> categories;
  std::map<int, std::list<int>> marketsOfKind;
  std::map<std::pair<int, int>, std::vector<ICategoryID>> categoriesOfMarket;
  ICodeProperty property;  ///< What property queries answer; `code` is filled with the asked one.
  int64 dominantOffset = 100;    ///< Added to a code's id by `resolveDominant`.
  int64 underlyingOffset = 200;  ///< Added by `resolveUnderlying`.
  int64 continuousOffset = 300;  ///< Added by `resolveContinuous`.

  ResultStatus codeNameOf(const ICodeID& code, std::string& name) override;
  ResultStatus codeIdOf(const std::string& text, ICodeID& code) override;
  ResultStatus codeQueryA(int kind, std::list<ICodeID>& found) override;
  ResultStatus codeQueryB(int kind, int market, int limit, std::list<ICodeID>& found) override;
  ResultStatus codeQueryC(int kind, int market, std::list<ICodeID>& found) override;
  ResultStatus codeRangeQuery(const std::string& prefix, int first, int limit,
                              std::list<ICodeID>& found, int flags) override;
  ResultStatus codeQueryD(const int& market, std::string& name) override;
  ResultStatus codeQueryE(const std::string& name, int& market) override;
  ResultStatus codeServiceQuery(const std::string& text, ICodeID& code, int flags) override;
  ResultStatus currentCodeProperty(const ICodeID& code, ICodeProperty& out, int64 time) override;
  ResultStatus codePropertyAt(int64 codeId, ICodeProperty& out, int64 time) override;
  ResultStatus codeQueryF(int market, std::list<ICodeProperty>& properties, int64 time) override;
  ResultStatus resolveDominant(const ICodeID& code, ICodeID& resolved) override;
  ResultStatus resolveUnderlying(const ICodeID& code, ICodeID& resolved) override;
  ResultStatus resolveContinuous(const ICodeID& code, ICodeID& resolved) override;
  ResultStatus markets(int kind, std::list<int>& found) override;
  ResultStatus categoriesOf(int market, int kind, std::vector<ICategoryID>& found) override;
  ResultStatus categoryQuery(const ICategoryID& category, int flags,
                             std::list<ICodeID>& found) override;
  ResultStatus setUserCodeProperties(const std::vector<ICodeProperty>& properties) override;
  bool getCategoryID(const std::string& text, ICategoryID& category) override;
  ResultStatus historyCodeProperties(const ICodeID& code, std::vector<ITimeCodeProp>& properties,
                                     int flags) override;
  ResultStatus correctUserProp(ICodeProperty& corrected) override;

 private:
  ResultStatus resolve(const char* operation, const ICodeID& code, int64 offset, ICodeID& resolved);

  CallLog& calls_;
};

}  // namespace orvane::support
