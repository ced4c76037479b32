#include "platform/reference/CodeService.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <set>
#include <tuple>
#include <utility>

#include "platform/core/Periods.h"
#include "platform/core/ZoneRules.h"
#include "platform/reference/InstrumentFile.h"
#include "shared/BaseInformation.h"
#include "shared/CodeTables.h"
#include "shared/GbkLiteral.h"
#include "shared/TextCodec.h"

namespace orvane::detail {
namespace {

double numberOf(const std::string& decimal, double otherwise) {
  double value = otherwise;
  std::from_chars(decimal.data(), decimal.data() + decimal.size(), value);
  return value;
}

int decimalsOf(const std::string& decimal) {
  const std::size_t point = decimal.find('.');
  if (point == std::string::npos) return 0;
  const std::size_t last = decimal.find_last_not_of('0');
  return static_cast<int>(last - point);
}

bool isCurrency(const std::string& name) {
  return name.empty() ||
         std::find(currencyNames.begin(), currencyNames.end(), name) != currencyNames.end();
}

/// What users can change of a code's properties.
constexpr std::tuple kUserFields{
    &ICodeProperty::name,     &ICodeProperty::timeZone,   &ICodeProperty::sessions,
    &ICodeProperty::currency, &ICodeProperty::priceTick,  &ICodeProperty::multiplier,
    &ICodeProperty::lotSize,  &ICodeProperty::marginRate, &ICodeProperty::feePerLot,
    &ICodeProperty::feeRate,  &ICodeProperty::decimals};

template <typename Visit>
void eachUserField(Visit visit) {
  std::apply([&](auto... field) { (visit(field), ...); }, kUserFields);
}

auto orderOf(const ICodeProperty& property) {
  return std::apply([&](auto... field) { return std::tuple(property.code.id, property.*field...); },
                    kUserFields);
}

bool isAlike(const ICodeProperty& a, const ICodeProperty& b) {
  bool same = true;
  eachUserField([&](auto field) { same = same && a.*field == b.*field; });
  return same;
}

/// The first of the numbers that is none at all; null if all are some. Such a one would be new each
/// time, and has no place in an order.
const char* endlessFieldOf(const ICodeProperty& property) {
  for (const auto& [field, value] : {std::pair{"priceTick", property.priceTick},
                                     {"multiplier", property.multiplier},
                                     {"lotSize", property.lotSize},
                                     {"marginRate", property.marginRate},
                                     {"feePerLot", property.feePerLot},
                                     {"feeRate", property.feeRate}})
    if (!std::isfinite(value)) return field;
  return nullptr;
}

/// A text that was not found.
ResultStatus missing(const std::string& text) { return statusWith(22, text); }

}  // namespace

ICodeID CodeService::add(const Instrument& instrument) {
  checkInstrument(instrument);
  ICodeID code;
  {
    const std::lock_guard lock(mutex_);
    code.kind = kKind;
    code.market = marketOf(instrument.market);
    code.code = instrument.code;
    code.id = instrument.id;
    for (const auto& [id, entry] : entries_)
      if (entry.code.code == code.code && entry.code.market == code.market) code.id = id;
    if (code.id == 0) code.id = entries_.empty() ? 1 : entries_.rbegin()->first + 1;
    const auto taken = entries_.find(code.id);
    if (taken != entries_.end() &&
        (taken->second.code.code != code.code || taken->second.code.market != code.market))
      throw std::invalid_argument("id: " + std::to_string(code.id) + " is taken by \"" +
                                  gbkToUtf8(taken->second.code.code) + "\"");
    Entry& entry = entries_[code.id];
    entry.code = code;
    entry.instrument = instrument;
    entry.history = {{0, propertyOf(entry)}};
    entry.held = {entry.history[0].property};
  }
  publishMarkets();
  return code;
}

int CodeService::marketOf(const std::string& name) {
  const auto at = std::find(markets_.begin(), markets_.end(), name);
  const int market = static_cast<int>(at - markets_.begin()) + 1;
  if (at == markets_.end()) markets_.push_back(name);
  return market;
}

void CodeService::publishMarkets() const {
  auto fresh = gBaseInformationMap != nullptr
                   ? std::make_shared<BaseInformationMap>(*gBaseInformationMap)
                   : std::make_shared<BaseInformationMap>();
  fresh->markets.clear();
  {
    const std::lock_guard lock(mutex_);
    for (std::size_t i = 0; i < markets_.size(); ++i)
      fresh->markets[static_cast<int>(i) + 1] = {markets_[i]};
  }
  gBaseInformationMap = std::move(fresh);
}

ICodeProperty CodeService::propertyOf(const Entry& entry) const {
  const Instrument& from = entry.instrument;
  ICodeProperty property;
  property.code = entry.code;
  property.name = from.name.empty() ? from.code : from.name;
  property.timeZone = from.timeZone.empty() ? timeZone_ : from.timeZone;
  property.sessions = from.sessions;
  property.currency = from.currency;
  property.priceTick = numberOf(from.priceTick, 0);
  property.multiplier = numberOf(from.multiplier, 1);
  property.lotSize = numberOf(from.lotSize, 1);
  property.marginRate = numberOf(from.marginRate, 0);
  property.feePerLot = numberOf(from.feePerLot, 0);
  property.feeRate = numberOf(from.feeRate, 0);
  property.decimals = decimalsOf(from.priceTick);
  return property;
}

// Codes.

ResultStatus CodeService::codeNameOf(const ICodeID& code, std::string& name) {
  const std::lock_guard lock(mutex_);
  const auto at = entries_.find(code.id);
  if (at == entries_.end()) return missing(code.code);
  name = at->second.history.back().property.name;
  return {};
}

ResultStatus CodeService::codeIdOf(const std::string& text, ICodeID& code) {
  const std::lock_guard lock(mutex_);
  return findLocked(text, code);
}

ResultStatus CodeService::findLocked(const std::string& text, ICodeID& code) const {
  // The last point parts the market off, but a code may itself hold points.
  const std::size_t point = text.rfind('.');
  const Entry* found = nullptr;
  int count = 0;
  for (const auto& [id, entry] : entries_) {
    const std::string& market = markets_[static_cast<std::size_t>(entry.code.market) - 1];
    if (point != std::string::npos && text.compare(0, point, entry.code.code) == 0 &&
        text.compare(point + 1, std::string::npos, market) == 0) {
      code = entry.code;
      return {};
    }
    if (entry.code.code == text) {
      found = &entry;
      ++count;
    }
  }
  if (count > 1) return missing(text + " " + "多个市场"_gbk);
  if (found == nullptr) return missing(text);
  code = found->code;
  return {};
}

std::list<ICodeID> CodeService::codesWhere(const std::function<bool(const Entry&)>& wanted) const {
  const std::lock_guard lock(mutex_);
  std::list<ICodeID> codes;
  for (const auto& [id, entry] : entries_)
    if (wanted(entry)) codes.push_back(entry.code);
  return codes;
}

ResultStatus CodeService::codeQueryA(int kind, std::list<ICodeID>& codes) {
  codes = codesWhere([&](const Entry& entry) { return entry.code.kind == kind; });
  return {};
}

ResultStatus CodeService::codeQueryB(int kind, int market, int limit, std::list<ICodeID>& codes) {
  ResultStatus status = codeQueryC(kind, market, codes);
  if (codes.size() > static_cast<std::size_t>(std::max(0, limit)))
    codes.resize(static_cast<std::size_t>(std::max(0, limit)));
  return status;
}

ResultStatus CodeService::codeQueryC(int kind, int market, std::list<ICodeID>& codes) {
  std::string name;
  if (ResultStatus status = codeQueryD(market, name); status.code != 0) return status;
  codes = codesWhere(
      [&](const Entry& entry) { return entry.code.kind == kind && entry.code.market == market; });
  return {};
}

ResultStatus CodeService::codeRangeQuery(const std::string& prefix, int first, int limit,
                                         std::list<ICodeID>& codes, int /*flags*/) {
  codes.clear();
  std::list<ICodeID> all = codesWhere(
      [&](const Entry& entry) { return entry.code.code.compare(0, prefix.size(), prefix) == 0; });
  int at = 0;
  for (ICodeID& code : all) {
    const int place = at++;
    if (place >= first && static_cast<int64>(place) - first < limit)
      codes.push_back(std::move(code));
  }
  return {};
}

ResultStatus CodeService::codeQueryD(const int& market, std::string& name) {
  const std::lock_guard lock(mutex_);
  if (market < 1 || static_cast<std::size_t>(market) > markets_.size())
    return missing(std::to_string(market));
  name = markets_[static_cast<std::size_t>(market) - 1];
  return {};
}

ResultStatus CodeService::codeQueryE(const std::string& name, int& market) {
  const std::lock_guard lock(mutex_);
  const auto at = std::find(markets_.begin(), markets_.end(), name);
  if (at == markets_.end()) return missing(name);
  market = static_cast<int>(at - markets_.begin()) + 1;
  return {};
}

ResultStatus CodeService::codeServiceQuery(const std::string& text, ICodeID& code, int /*flags*/) {
  return codeIdOf(text, code);
}

// Properties.

ResultStatus CodeService::currentCodeProperty(const ICodeID& code, ICodeProperty& property,
                                              int64 time) {
  const std::lock_guard lock(mutex_);
  const auto at = entries_.find(code.id);
  return at == entries_.end() ? missing(code.code) : propertyLocked(at->second, property, time);
}

ResultStatus CodeService::codePropertyAt(int64 codeId, ICodeProperty& property, int64 time) {
  const std::lock_guard lock(mutex_);
  const auto at = entries_.find(codeId);
  return at == entries_.end() ? missing(std::to_string(codeId))
                              : propertyLocked(at->second, property, time);
}

ResultStatus CodeService::propertyLocked(const Entry& entry, ICodeProperty& property,
                                         int64 time) const {
  const bool present = time == kUnsetTime;
  property = entry.history.front().property;
  for (const ITimeCodeProp& change : entry.history)
    if (present || change.time <= time) property = change.property;
  property.time = present ? 0 : time;
  return {};
}

ResultStatus CodeService::codeQueryF(int market, std::list<ICodeProperty>& properties, int64 time) {
  std::string name;
  if (ResultStatus status = codeQueryD(market, name); status.code != 0) return status;
  properties.clear();
  const std::lock_guard lock(mutex_);
  for (const auto& [id, entry] : entries_)
    if (entry.code.market == market) propertyLocked(entry, properties.emplace_back(), time);
  return {};
}

ResultStatus CodeService::historyCodeProperties(const ICodeID& code,
                                                std::vector<ITimeCodeProp>& properties,
                                                int /*flags*/) {
  const std::lock_guard lock(mutex_);
  const auto at = entries_.find(code.id);
  if (at == entries_.end()) return missing(code.code);
  properties = at->second.history;
  return {};
}

ResultStatus CodeService::correctUserProp(ICodeProperty& property) {
  const auto wrong = [](const char* field) { return statusWith(-2, field); };
  const std::lock_guard lock(mutex_);
  auto at = entries_.find(property.code.id);
  if (at == entries_.end()) {
    ICodeID found;
    if (ResultStatus status = findLocked(property.code.code, found); status.code != 0)
      return status;
    at = entries_.find(found.id);
  }
  if (const char* field = endlessFieldOf(property)) return wrong(field);
  if (!(property.priceTick >= 0)) return wrong("priceTick");
  if (!(property.multiplier > 0)) return wrong("multiplier");
  if (!(property.lotSize > 0)) return wrong("lotSize");
  if (!(property.marginRate >= 0)) return wrong("marginRate");
  if (!(property.feePerLot >= 0)) return wrong("feePerLot");
  if (!(property.feeRate >= 0)) return wrong("feeRate");
  if (!isCurrency(property.currency)) return wrong("currency");
  if (!property.timeZone.empty() && ZoneRules::find(property.timeZone) == nullptr)
    return wrong("timeZone");
  const ICodeProperty& known = at->second.history.back().property;
  property.code = known.code;
  if (property.name.empty()) property.name = known.name;
  if (property.timeZone.empty()) property.timeZone = known.timeZone;
  if (property.sessions.empty()) property.sessions = known.sessions;
  if (property.currency.empty()) property.currency = known.currency;
  if (property.priceTick == known.priceTick) property.decimals = known.decimals;
  return {};
}

void CodeService::change(Entry& entry, const ICodeProperty& wanted, int64 time) {
  // Whoever changes one property hands in all, the others as he once read them. So what held
  // before is not meant, if something else in it is new.
  ICodeProperty changed = entry.history.back().property;
  const auto heldBefore = [&](auto field) {
    return std::any_of(entry.held.begin(), entry.held.end(),
                       [&](const ICodeProperty& held) { return held.*field == wanted.*field; });
  };
  bool anyNew = false;
  eachUserField([&](auto field) { anyNew = anyNew || !heldBefore(field); });
  eachUserField([&](auto field) {
    if (!anyNew || !heldBefore(field)) changed.*field = wanted.*field;
  });
  if (isAlike(changed, entry.history.back().property)) return;
  changed.time = time;
  // A change at the time of the last one takes its place.
  if (entry.history.size() > 1 && entry.history.back().time == time) entry.history.pop_back();
  entry.history.push_back({time, changed});
  const auto isIt = [&](const ICodeProperty& held) { return isAlike(held, changed); };
  if (std::none_of(entry.held.begin(), entry.held.end(), isIt))
    entry.held.push_back(std::move(changed));
}

ResultStatus CodeService::setUserCodeProperties(const std::vector<ICodeProperty>& properties) {
  const int64 time = now_();
  for (const ICodeProperty& property : properties)
    if (const char* field = endlessFieldOf(property)) return statusWith(-2, field);
  {
    const std::lock_guard lock(mutex_);
    for (const ICodeProperty& property : properties)
      if (entries_.count(property.code.id) == 0) return missing(property.code.code);
    if (onChangeWaiting_ == nullptr) {
      for (const ICodeProperty& property : properties)
        change(entries_[property.code.id], property, time);
      return {};
    }
    changes_.insert(changes_.end(), properties.begin(), properties.end());
    changesWaiting_.store(true);
  }
  onChangeWaiting_();
  return {};
}

void CodeService::takeChanges() {
  if (!changesWaiting_.load()) return;
  const int64 time = now_();
  const std::lock_guard lock(mutex_);
  changesWaiting_.store(false);
  std::stable_sort(
      changes_.begin(), changes_.end(),
      [](const ICodeProperty& a, const ICodeProperty& b) { return orderOf(a) < orderOf(b); });
  for (const ICodeProperty& wanted : changes_) change(entries_[wanted.code.id], wanted, time);
  changes_.clear();
}

void CodeService::dropChanges() {
  const std::lock_guard lock(mutex_);
  changesWaiting_.store(false);
  changes_.clear();
}

void CodeService::forgetChanges() {
  const std::lock_guard lock(mutex_);
  for (auto& [id, entry] : entries_) {
    entry.history.resize(1);
    entry.held.resize(1);
  }
}

// Links, markets and categories.

ResultStatus CodeService::resolve(const ICodeID& code, ICodeID& resolved, Link link) {
  const std::lock_guard lock(mutex_);
  const auto at = entries_.find(code.id);
  if (at == entries_.end()) return missing(code.code);
  const std::string& target = at->second.instrument.*link;
  if (!target.empty()) return findLocked(target, resolved);
  resolved = at->second.code;
  return {};
}

ResultStatus CodeService::resolveDominant(const ICodeID& code, ICodeID& resolved) {
  return resolve(code, resolved, &Instrument::dominant);
}

ResultStatus CodeService::resolveUnderlying(const ICodeID& code, ICodeID& resolved) {
  return resolve(code, resolved, &Instrument::underlying);
}

ResultStatus CodeService::resolveContinuous(const ICodeID& code, ICodeID& resolved) {
  return resolve(code, resolved, &Instrument::continuous);
}

ResultStatus CodeService::markets(int kind, std::list<int>& markets) {
  markets.clear();
  if (kind != kKind) return {};
  const std::lock_guard lock(mutex_);
  for (std::size_t i = 0; i < markets_.size(); ++i) markets.push_back(static_cast<int>(i) + 1);
  return {};
}

ResultStatus CodeService::categoriesOf(int market, int kind, std::vector<ICategoryID>& categories) {
  std::string name;
  if (ResultStatus status = codeQueryD(market, name); status.code != 0) return status;
  categories.clear();
  if (kind != kKind) return {};
  std::set<std::string> names;
  const std::lock_guard lock(mutex_);
  for (const auto& [id, entry] : entries_)
    if (entry.code.market == market)
      names.insert(entry.instrument.categories.begin(), entry.instrument.categories.end());
  for (const std::string& category : names) categories.push_back({market, name, category});
  return {};
}

ResultStatus CodeService::categoryQuery(const ICategoryID& category, int /*flags*/,
                                        std::list<ICodeID>& codes) {
  codes = codesWhere([&](const Entry& entry) {
    const auto& names = entry.instrument.categories;
    return (category.first < 0 || category.first == entry.code.market) &&
           std::find(names.begin(), names.end(), category.third) != names.end();
  });
  return codes.empty() ? missing(category.third) : ResultStatus();
}

bool CodeService::getCategoryID(const std::string& text, ICategoryID& category) {
  // "NAME" over all markets, or "NAME.MARKET".
  std::list<int> all;
  markets(kKind, all);
  std::vector<ICategoryID> found;
  for (const int market : all) {
    std::vector<ICategoryID> here;
    categoriesOf(market, kKind, here);
    for (ICategoryID& one : here) {
      if (one.third + "." + one.second == text) {
        category = std::move(one);
        return true;
      }
      if (one.third == text) found.push_back(std::move(one));
    }
  }
  if (found.empty()) return false;
  category = found.size() == 1 ? found.front() : ICategoryID{-1, "", text};
  return true;
}

}  // namespace orvane::detail
