#include "shared/TextForms.h"

#include "shared/BaseInformation.h"
#include "shared/CodeTables.h"

namespace orvane {

std::shared_ptr<const BaseInformationMap> gBaseInformationMap;

namespace {

const std::string& nameIn(const std::map<int, BaseInformationItem>& table, int key) {
  static const std::string none;
  const auto it = table.find(key);
  return it == table.end() ? none : it->second.name;
}

template <std::size_t N>
const char* nameAt(const std::array<const char*, N>& table, int index) {
  return index >= 0 && index < static_cast<int>(N) ? table[index] : "";
}

}  // namespace

std::string codeText(const ICodeID& code) {
  std::string text = code.code + ".";
  if (gBaseInformationMap) text += nameIn(gBaseInformationMap->markets, code.market);
  return text;
}

std::string accountText(const TradingAccountID& account) {
  std::string text = account.text1 + "@" + account.account + "@";
  text += nameAt(currencyNames, account.currency);
  text += "@";
  if (gBaseInformationMap) text += nameIn(gBaseInformationMap->infoNames, account.infoKey);
  text += "@";
  text += nameAt(hedgeFlagNames, account.hedgeFlag);
  return text;
}

}  // namespace orvane
