#pragma once

#include <list>
#include <string>
#include <vector>

#include "shared/CodeProperty.h"
#include "shared/Export.h"
#include "shared/ICodeID.h"
#include "shared/ResultStatus.h"

namespace orvane {

/// The code tables of a platform. Owned by the platform; any thread may call it; nothing blocks.
/// Texts are GBK. A code that is not there gives code 22.
class ORVANE_API ICodeService {
 public:
  virtual ~ICodeService();

  /// The display name of a code.
  virtual ResultStatus codeNameOf(const ICodeID& code, std::string& name) = 0;
  /// A code by its text, "CODE.MARKET", or "CODE" where only one market has it.
  virtual ResultStatus codeIdOf(const std::string& text, ICodeID& code) = 0;
  /// All codes of a kind.
  virtual ResultStatus codeQueryA(int kind, std::list<ICodeID>& codes) = 0;
  /// The codes of a kind in a market, at most `limit` of them.
  virtual ResultStatus codeQueryB(int kind, int market, int limit, std::list<ICodeID>& codes) = 0;
  /// All codes of a kind in a market.
  virtual ResultStatus codeQueryC(int kind, int market, std::list<ICodeID>& codes) = 0;
  /// The codes whose text begins with `prefix`: at most `limit` from the `first`-th on.
  virtual ResultStatus codeRangeQuery(const std::string& prefix, int first, int limit,
                                      std::list<ICodeID>& codes, int flags) = 0;
  /// The name of a market.
  virtual ResultStatus codeQueryD(const int& market, std::string& name) = 0;
  /// The markets, by name.
  virtual ResultStatus codeQueryE(const std::string& name, int& market) = 0;
  /// A code by its text; the form that strategies reach. `flags` is reserved.
  virtual ResultStatus codeServiceQuery(const std::string& text, ICodeID& code, int flags) = 0;
  /// The properties of the code with this id that hold now, or at `time` where it is set.
  virtual ResultStatus currentCodeProperty(const ICodeID& code, ICodeProperty& property,
                                           int64 time) = 0;
  /// The properties that held at `time` (UTC milliseconds).
  virtual ResultStatus codePropertyAt(int64 codeId, ICodeProperty& property, int64 time) = 0;
  /// The properties of all codes of a market at `time`.
  virtual ResultStatus codeQueryF(int market, std::list<ICodeProperty>& properties, int64 time) = 0;

  /// The dominant contract behind a continuous code; a plain contract resolves to itself.
  virtual ResultStatus resolveDominant(const ICodeID& code, ICodeID& resolved) = 0;
  /// The underlying of a derivative; a code without one resolves to itself.
  virtual ResultStatus resolveUnderlying(const ICodeID& code, ICodeID& resolved) = 0;
  /// The continuous code of a contract; a code without one resolves to itself.
  virtual ResultStatus resolveContinuous(const ICodeID& code, ICodeID& resolved) = 0;

  /// The markets of a kind: 1 exchanges, 7 index providers.
  virtual ResultStatus markets(int kind, std::list<int>& markets) = 0;
  virtual ResultStatus categoriesOf(int market, int kind, std::vector<ICategoryID>& categories) = 0;
  /// The codes of a category.
  virtual ResultStatus categoryQuery(const ICategoryID& category, int flags,
                                     std::list<ICodeID>& codes) = 0;
  /// Stores properties that a user corrected.
  virtual ResultStatus setUserCodeProperties(const std::vector<ICodeProperty>& properties) = 0;

  // What stands behind the static operations of `CodePropertyUtils`.
  virtual bool getCategoryID(const std::string& text, ICategoryID& category) = 0;
  virtual ResultStatus historyCodeProperties(const ICodeID& code,
                                             std::vector<ITimeCodeProp>& properties, int flags) = 0;
  virtual ResultStatus correctUserProp(ICodeProperty& property) = 0;
};

}  // namespace orvane
