#include "tests/support/FakeCodeService.h"

#include "shared/CodeTables.h"

namespace orvane::support {
namespace {

std::string numbers(int64 a) { return std::to_string(a); }
std::string numbers(int64 a, int64 b) { return numbers(a) + " " + numbers(b); }
std::string numbers(int64 a, int64 b, int64 c) { return numbers(a, b) + " " + numbers(c); }

const ICodeID& anyCode() {
  static const ICodeID code{1, 1, 1, "any"};
  return code;
}

}  // namespace

ResultStatus FakeCodeService::codeNameOf(const ICodeID& code, std::string& name) {
  name = "name of " + numbers(code.id);
  return calls_.record("code.codeNameOf", numbers(code.id));
}

ResultStatus FakeCodeService::codeIdOf(const std::string& codeText, ICodeID& code) {
  const ResultStatus status = calls_.record("code.codeIdOf", codeText);
  if (status.code != 0) return status;
  const auto it = codes.find(codeText);
  if (it == codes.end()) return {22, statusMessage(22)};
  code = it->second;
  return {};
}

ResultStatus FakeCodeService::codeQueryA(int kind, std::list<ICodeID>& found) {
  found.push_back(anyCode());
  return calls_.record("code.codeQueryA", numbers(kind));
}

ResultStatus FakeCodeService::codeQueryB(int kind, int market, int limit,
                                         std::list<ICodeID>& found) {
  found.push_back(anyCode());
  return calls_.record("code.codeQueryB", numbers(kind, market, limit));
}

ResultStatus FakeCodeService::codeQueryC(int kind, int market, std::list<ICodeID>& found) {
  found.push_back(anyCode());
  return calls_.record("code.codeQueryC", numbers(kind, market));
}

ResultStatus FakeCodeService::codeRangeQuery(const std::string& prefix, int first, int limit,
                                             std::list<ICodeID>& found, int flags) {
  found.push_back(anyCode());
  return calls_.record("code.codeRangeQuery", prefix + " " + numbers(first, limit, flags));
}

ResultStatus FakeCodeService::codeQueryD(const int& market, std::string& name) {
  name = "market " + numbers(market);
  return calls_.record("code.codeQueryD", numbers(market));
}

ResultStatus FakeCodeService::codeQueryE(const std::string& name, int& market) {
  market = 9;
  return calls_.record("code.codeQueryE", name);
}

ResultStatus FakeCodeService::codeServiceQuery(const std::string& codeText, ICodeID& code,
                                               int flags) {
  code = anyCode();
  return calls_.record("code.codeServiceQuery", codeText + " " + numbers(flags));
}

ResultStatus FakeCodeService::currentCodeProperty(const ICodeID& code, ICodeProperty& out,
                                                  int64 time) {
  out = property;
  out.code = code;
  return calls_.record("code.currentCodeProperty", numbers(code.id, time));
}

ResultStatus FakeCodeService::codePropertyAt(int64 codeId, ICodeProperty& out, int64 time) {
  out = property;
  out.code.id = codeId;
  return calls_.record("code.codePropertyAt", numbers(codeId, time));
}

ResultStatus FakeCodeService::codeQueryF(int market, std::list<ICodeProperty>& properties,
                                         int64 time) {
  properties.push_back(property);
  return calls_.record("code.codeQueryF", numbers(market, time));
}

ResultStatus FakeCodeService::resolve(const char* operation, const ICodeID& code, int64 offset,
                                      ICodeID& resolved) {
  resolved = code;
  resolved.id += offset;
  return calls_.record(operation, numbers(code.id));
}

ResultStatus FakeCodeService::resolveDominant(const ICodeID& code, ICodeID& resolved) {
  return resolve("code.resolveDominant", code, dominantOffset, resolved);
}

ResultStatus FakeCodeService::resolveUnderlying(const ICodeID& code, ICodeID& resolved) {
  return resolve("code.resolveUnderlying", code, underlyingOffset, resolved);
}

ResultStatus FakeCodeService::resolveContinuous(const ICodeID& code, ICodeID& resolved) {
  return resolve("code.resolveContinuous", code, continuousOffset, resolved);
}

ResultStatus FakeCodeService::markets(int kind, std::list<int>& found) {
  if (const auto it = marketsOfKind.find(kind); it != marketsOfKind.end()) found = it->second;
  return calls_.record("code.markets", numbers(kind));
}

ResultStatus FakeCodeService::categoriesOf(int market, int kind, std::vector<ICategoryID>& found) {
  const ResultStatus status = calls_.record("code.categoriesOf", numbers(market, kind));
  const auto it = categoriesOfMarket.find({market, kind});
  if (it == categoriesOfMarket.end()) return {22, statusMessage(22)};
  found = it->second;
  return status;
}

ResultStatus FakeCodeService::categoryQuery(const ICategoryID& category, int flags,
                                            std::list<ICodeID>& found) {
  found.push_back(anyCode());
  return calls_.record("code.categoryQuery", numbers(category.first, flags));
}

ResultStatus FakeCodeService::setUserCodeProperties(const std::vector<ICodeProperty>& properties) {
  std::string arguments = numbers(static_cast<int64>(properties.size()));
  for (const ICodeProperty& each : properties) arguments += " " + each.name;
  return calls_.record("code.setUserCodeProperties", arguments);
}

bool FakeCodeService::getCategoryID(const std::string& categoryText, ICategoryID& category) {
  calls_.record("code.getCategoryID", categoryText);
  const auto it = categories.find(categoryText);
  if (it == categories.end()) return false;
  category = it->second;
  return true;
}

ResultStatus FakeCodeService::historyCodeProperties(const ICodeID& code,
                                                    std::vector<ITimeCodeProp>& properties,
                                                    int flags) {
  properties.emplace_back();
  return calls_.record("code.historyCodeProperties", numbers(code.id, flags));
}

ResultStatus FakeCodeService::correctUserProp(ICodeProperty& corrected) {
  const ResultStatus status = calls_.record("code.correctUserProp", corrected.name);
  if (status.code == 0) corrected.name += " corrected";
  return status;
}

}  // namespace orvane::support
