#include "platform/trade/Ledger.h"

#include <algorithm>

#include "platform/fields/CapitalView.h"
#include "platform/fields/PositionView.h"
#include "shared/StatusCodes.h"

namespace orvane::detail {
namespace {

using status::kNoMoney;
using status::kNoPosition;
constexpr int kOutOfRange = -2;
/// So that volumes of an account can be added up, and prices can rise.
constexpr Volume kMostVolume{1'000'000'000'000'000'000};
constexpr Money kMostTurnover{Ledger::kMostStart.units / 10};
/// Closed and floating profit are cash that came and went and the value of what is held, so both
/// are in range when these are; settlements move money between the two.
constexpr Money kMostTraded{Ledger::kMostStart.units / 2 * 5};
constexpr Money kMostValue = kMostTraded;
constexpr Money kMostMargin = Ledger::kMostStart;
constexpr Money kMostFees = Ledger::kMostStart;

bool opens(const Claim& claim) { return claim.offset == order::Offset::Open; }
bool closesToday(const Claim& claim) { return claim.offset == order::Offset::CloseToday; }

/// Whether an order is about the long side: buying opens it, selling closes it.
bool isAboutLong(const Claim& claim) {
  return (claim.direction == order::Direction::Buy) == opens(claim);
}

}  // namespace

Ledger::Ledger(TradingAccountID account, Money start)
    : account_(std::move(account)), start_(start) {}

std::optional<Ledger::Need> Ledger::needOf(const ContractTerms& terms, Price price, Volume volume) {
  const auto turnover = turnoverOf(price, volume, terms.multiplier);
  if (!turnover) return std::nullopt;
  const auto margin = shareOf(*turnover, terms.marginRate);
  const auto fee = feeOf(terms, *turnover, volume);
  if (!margin || !fee) return std::nullopt;
  return Need{*turnover, *margin, *fee};
}

std::optional<Money> Ledger::feeOf(const ContractTerms& terms, Money turnover, Volume volume) {
  const auto byLot = chargeOf(terms.feePerLot, volume);
  const auto byTurnover = shareOf(turnover, terms.feeRate);
  if (!byLot || !byTurnover) return std::nullopt;
  return cappedSum(*byLot, *byTurnover);
}

PositionSide& Ledger::sideOf(SourceBook& book, const Claim& claim) {
  return isAboutLong(claim) ? book.longSide : book.shortSide;
}

std::optional<Refusal> Ledger::freeze(const Claim& claim) {
  auto refusal = opens(claim) ? freezeMoney(claim) : freezeVolume(claim);
  return refusal;
}

std::optional<Refusal> Ledger::freezeMoney(const Claim& claim) {
  if (claim.volume > kMostVolume - committedVolume_)
    return Refusal{kOutOfRange, "too much volume: asked for " + text(claim.volume) +
                                    ", the account holds and awaits " + text(committedVolume_) +
                                    " of at most " + text(kMostVolume)};
  const auto need = needOf(*claim.terms, claim.price, claim.volume);
  if (!need || need->turnover > kMostTurnover - committed_ ||
      std::max(need->margin, need->fee) > kMostTurnover)
    return Refusal{kOutOfRange, "too large: " + text(claim.volume) + " at " + text(claim.price)};
  const Money wanted = need->margin + need->fee;
  if (wanted.isPositive() && wanted > available())
    return Refusal{kNoMoney,
                   "not enough money: needs " + text(wanted) + ", available " + text(available())};
  hold(claim, wanted, need->turnover);
  frozen_ += wanted;
  committed_ += need->turnover;
  committedVolume_ += claim.volume;
  return std::nullopt;
}

std::optional<Refusal> Ledger::freezeVolume(const Claim& claim) {
  Volume closable;
  const auto code = codes_.find(claim.terms->code.id);
  if (code != codes_.end()) {
    const auto book = code->second.sources.find(claim.source.createSource);
    if (book != code->second.sources.end())
      closable = sideOf(book->second, claim).closable(closesToday(claim));
  }
  if (claim.volume > closable)
    return Refusal{kNoPosition, std::string("not enough position to close: ") +
                                    (closesToday(claim) ? "of today's " : "") +
                                    (isAboutLong(claim) ? "long" : "short") + " volume " +
                                    text(closable) + " is free, asked for " + text(claim.volume)};
  sideOf(bookOf(claim), claim).freeze(claim.volume, closesToday(claim));
  hold(claim, {}, {});
  return std::nullopt;
}

void Ledger::hold(const Claim& claim, Money money, Money turnover) {
  holds_.insert_or_assign(claim.orderId, Hold{claim, claim.volume, money, turnover});
}

Ledger::SourceBook& Ledger::bookOf(const Claim& claim) {
  CodeBook& code = codes_[claim.terms->code.id];
  code.terms = claim.terms;
  const auto [at, isNew] = code.sources.try_emplace(claim.source.createSource);
  if (isNew) at->second.source = claim.source;
  return at->second;
}

void Ledger::release(int64 orderId) {
  const auto at = holds_.find(orderId);
  if (at == holds_.end()) return;
  const Hold& hold = at->second;
  if (opens(hold.claim)) {
    frozen_ -= hold.money;
    committed_ -= hold.turnover;
    committedVolume_ -= hold.left;
  } else {
    sideOf(bookOf(hold.claim), hold.claim).unfreeze(hold.left, closesToday(hold.claim));
  }
  holds_.erase(at);
}

Money Ledger::frozenOf(int64 orderId) const {
  const auto at = holds_.find(orderId);
  return at == holds_.end() ? Money{} : at->second.money;
}

std::optional<Refusal> Ledger::checkFills(int64 orderId, std::span<const FillPiece> pieces) const {
  const auto at = holds_.find(orderId);
  if (at == holds_.end()) return std::nullopt;
  const Claim& claim = at->second.claim;
  const auto code = codes_.find(claim.terms->code.id);
  const bool isMarked = code != codes_.end() && code->second.markPrice;
  Money traded = traded_, fees = fees_, margin = margin_, value = value_;
  for (const auto& [price, volume] : pieces) {
    const Price mark = isMarked ? *code->second.markPrice : pieces.front().price;
    const auto turnover = turnoverOf(price, volume, claim.terms->multiplier);
    const auto fee = turnover ? feeOf(*claim.terms, *turnover, volume) : std::nullopt;
    bool fits = fee && *turnover <= kMostTraded - traded && *fee <= kMostFees - fees;
    if (fits && opens(claim)) {
      const auto need = shareOf(*turnover, claim.terms->marginRate);
      const auto worth = turnoverOf(mark, volume, claim.terms->multiplier);
      fits = need && *need <= kMostMargin - margin && worth && *worth <= kMostValue - value;
      if (fits) margin += *need;
      if (fits) value += *worth;
    }
    if (!fits) return Refusal{kOutOfRange, "too large: " + text(volume) + " at " + text(price)};
    traded += *turnover;
    fees += *fee;
  }
  return std::nullopt;
}

Booking Ledger::fill(int64 orderId, Price price, Volume volume) {
  const auto at = holds_.find(orderId);
  if (at == holds_.end()) return {};
  Hold& hold = at->second;
  const ContractTerms& terms = *hold.claim.terms;
  SourceBook& book = bookOf(hold.claim);
  PositionSide& side = sideOf(book, hold.claim);

  Booking booking;
  booking.turnover = turnoverOf(price, volume, terms.multiplier).value_or(Money{});
  booking.fee = feeOf(terms, booking.turnover, volume).value_or(Money{});

  hold.left -= volume;
  const Money marginBefore = side.margin();
  const Money turnoverBefore = side.openTurnover();
  if (opens(hold.claim)) {
    // What the rest would need is kept, so that the last fill frees all that is left.
    const Need rest = needOf(terms, hold.claim.price, hold.left).value_or(Need{});
    const Money kept = hold.left.isPositive() ? rest.margin + rest.fee : Money{};
    frozen_ += kept - hold.money;
    hold.money = kept;
    committed_ += rest.turnover - hold.turnover;
    // The volume is held now, and was awaited before.
    hold.turnover = rest.turnover;
    side.open(terms, price, volume);
  } else {
    side.unfreeze(volume, closesToday(hold.claim));
    committedVolume_ -= volume;
    const Money cost = side.close(terms, volume, closesToday(hold.claim));
    booking.profit = isAboutLong(hold.claim) ? booking.turnover - cost : cost - booking.turnover;
  }
  margin_ += side.margin() - marginBefore;
  committed_ += side.openTurnover() - turnoverBefore;
  book.closedProfit += booking.profit;
  book.fees += booking.fee;
  closedProfit_ += booking.profit;
  fees_ += booking.fee;
  traded_ += booking.turnover;
  if (!hold.left.isPositive()) holds_.erase(at);

  CodeBook& code = codes_[terms.code.id];
  if (!code.markPrice) code.markPrice = price;
  recount(code);
  return booking;
}

void Ledger::recount(CodeBook& code) {
  code.held = {};
  code.soleHolder = nullptr;
  code.soleSide = nullptr;
  for (auto& [name, book] : code.sources) {
    for (const PositionSide* side : {&book.longSide, &book.shortSide}) {
      if (side->isEmpty()) continue;
      const bool isFirst = code.held.isZero();
      code.soleHolder = isFirst ? &book : nullptr;
      code.soleSide = isFirst ? side : nullptr;
      code.held += side->volume();
    }
    if (book.isEmpty()) setFloating(book, {});
  }
  const auto value = turnoverOf(*code.markPrice, code.held, code.terms->multiplier);
  if (!value) code.soleSide = nullptr;
  revalue(code, value.value_or(Money{}));
}

void Ledger::revalue(CodeBook& code, Money value) {
  value_ += value - code.value;
  code.value = value;
  if (code.soleSide != nullptr)
    return setFloating(*code.soleHolder, code.soleSide->floatingAt(value));
  for (auto& [name, book] : code.sources) {
    Money now;
    for (const PositionSide* side : {&book.longSide, &book.shortSide})
      if (!side->isEmpty()) now += side->floating(*code.terms, *code.markPrice);
    setFloating(book, now);
  }
}

void Ledger::setFloating(SourceBook& book, Money floating) {
  floating_ += floating - book.floating;
  book.floating = floating;
}

void Ledger::mark(int64 codeId, Price price) {
  const auto at = codes_.find(codeId);
  if (at == codes_.end() || at->second.markPrice == price) return;
  CodeBook& code = at->second;
  if (!code.isHeld()) {
    code.markPrice = price;
    return;
  }
  const auto value = turnoverOf(price, code.held, code.terms->multiplier);
  if (!value || *value > kMostValue - (value_ - code.value)) return;
  code.markPrice = price;
  revalue(code, *value);
}

std::optional<PriceRun> Ledger::priceRun(int64 codeId) const {
  const auto at = codes_.find(codeId);
  if (at == codes_.end() || at->second.soleSide == nullptr) return std::nullopt;
  const CodeBook& code = at->second;
  // Under new terms it is worth what it was until the price moves.
  if (turnoverOf(*code.markPrice, code.held, code.terms->multiplier) != code.value)
    return std::nullopt;
  return PriceRun({.side = code.soleSide,
                   .multiplier = code.terms->multiplier,
                   .price = *code.markPrice,
                   .value = code.value,
                   .most = kMostValue - (value_ - code.value),
                   .others = equity() - code.soleHolder->floating});
}

bool Ledger::settlementFits(const CodeBook& code) const {
  Money margin = margin_;
  for (const auto& [name, book] : code.sources) {
    for (const PositionSide* side : {&book.longSide, &book.shortSide}) {
      const auto turnover = turnoverOf(*code.markPrice, side->volume(), code.terms->multiplier);
      const auto restated = turnover ? shareOf(*turnover, code.terms->marginRate) : std::nullopt;
      if (!restated) return false;
      margin = cappedSum(margin, *restated - side->margin());
    }
  }
  return margin <= kMostMargin;
}

bool Ledger::beginDay(int64 codeId, bool settles) {
  const auto at = codes_.find(codeId);
  if (at == codes_.end() || !at->second.isHeld()) return false;
  CodeBook& code = at->second;
  settles = settles && code.markPrice && settlementFits(code);
  bool isChanged = false;
  for (auto& [name, book] : code.sources) {
    for (PositionSide* side : {&book.longSide, &book.shortSide}) {
      isChanged = isChanged || side->today().isPositive() || (settles && !side->isEmpty());
      if (settles) {
        const Money marginBefore = side->margin();
        const Money turnoverBefore = side->openTurnover();
        const Money profit = side->settle(*code.terms, *code.markPrice);
        margin_ += side->margin() - marginBefore;
        committed_ += side->openTurnover() - turnoverBefore;
        book.closedProfit += profit;
        closedProfit_ += profit;
      }
      side->beginDay();
    }
  }
  recount(code);
  return isChanged;
}

Money Ledger::balance() const { return start_ + closedProfit_ - fees_; }
Money Ledger::equity() const { return balance() + floating_; }
Money Ledger::available() const { return equity() - margin_ - frozen_; }
Money Ledger::frozen() const { return frozen_; }
Money Ledger::margin() const { return margin_; }
Money Ledger::fees() const { return fees_; }
Money Ledger::closedProfit() const { return closedProfit_; }
Money Ledger::floatingProfit() const { return floating_; }

Money Ledger::resultOf(const std::string& source) const {
  Money result;
  for (const auto& [codeId, code] : codes_) {
    const auto at = code.sources.find(source);
    if (at != code.sources.end())
      result += at->second.closedProfit + at->second.floating - at->second.fees;
  }
  return result;
}

Volume Ledger::volumeOf(const std::string& source, int64 codeId, bool isLong) const {
  Volume result;
  const auto code = codes_.find(codeId);
  if (code == codes_.end()) return result;
  for (const auto& [name, book] : code->second.sources)
    if (source.empty() || name == source)
      result += (isLong ? book.longSide : book.shortSide).volume();
  return result;
}

double Ledger::exposureOf(const std::string& source, int64 codeId) const {
  if (source.empty()) return exposureOf(codeId);
  const auto code = codes_.find(codeId);
  if (code == codes_.end()) return 0;
  const auto book = code->second.sources.find(source);
  if (book == code->second.sources.end()) return 0;
  return exposureOf(code->second, book->second.longSide.volume() + book->second.shortSide.volume());
}

double Ledger::exposureOf(int64 codeId) const {
  const auto code = codes_.find(codeId);
  return code == codes_.end() ? 0 : exposureOf(code->second, code->second.held);
}

double Ledger::exposureOf(const CodeBook& code, Volume volume) {
  if (volume.isZero()) return 0;
  const double mark = code.markPrice ? toDouble(*code.markPrice) : 0;
  return toDouble(volume) * mark * toDouble(code.terms->multiplier);
}

bool Ledger::holds(const std::string& source, int64 codeId) const {
  const auto code = codes_.find(codeId);
  if (code == codes_.end()) return false;
  if (source.empty()) return code->second.isHeld();
  const auto book = code->second.sources.find(source);
  return book != code->second.sources.end() && !book->second.isEmpty();
}

TradingAccount Ledger::capitalRecord(int64 time) const {
  TradingAccount record{.account = account_, .value = time};
  const auto set = [&record](capital::Block1 at, Money money) {
    record.block1[at] = wordOf(toDouble(money));
  };
  set(capital::StartBalance, start_);
  set(capital::Balance, balance());
  set(capital::Available, available());
  set(capital::Frozen, frozen_);
  set(capital::Margin, margin_);
  set(capital::Fee, fees_);
  set(capital::ClosedProfit, closedProfit_);
  set(capital::FloatingProfit, floating_);
  set(capital::Equity, equity());
  return record;
}

template <typename Visit>
void Ledger::eachBook(const CodeBook& code, const SourceBook* only, Visit visit) {
  if (only != nullptr) return visit(*only);
  for (const auto& [name, book] : code.sources) visit(book);
}

void Ledger::fillSide(Position& position, const CodeBook& code, const SourceBook* only,
                      bool isLong) {
  Volume volume, today, frozen;
  Money margin, floating, openTurnover;
  eachBook(code, only, [&](const SourceBook& book) {
    const PositionSide& side = isLong ? book.longSide : book.shortSide;
    volume += side.volume();
    today += side.today();
    frozen += side.frozen();
    margin += side.margin();
    openTurnover += side.openTurnover();
    if (code.markPrice) floating += side.floating(*code.terms, *code.markPrice);
  });
  if (volume.isZero()) return;  // Nor is anything of it frozen, or worth anything.
  auto& block = isLong ? position.block1 : position.block2;
  block[position::Volume] = wordOf(toDouble(volume));
  block[position::TodayVolume] = wordOf(toDouble(today));
  block[position::YesterdayVolume] = wordOf(toDouble(volume - today));
  block[position::FrozenVolume] = wordOf(toDouble(frozen));
  block[position::Margin] = wordOf(toDouble(margin));
  block[position::FloatingProfit] = wordOf(toDouble(floating));
  block[position::OpenTurnover] = wordOf(toDouble(openTurnover));
  const double units = toDouble(volume) * toDouble(code.terms->multiplier);
  (isLong ? position.value1 : position.value2) = units > 0 ? toDouble(openTurnover) / units : 0;
}

void Ledger::fillRecord(int64 codeId, const CodeBook& code, const SourceBook* only,
                        Position& position) const {
  position.account = account_;
  position.code = code.terms->code;
  position.code.id = codeId;
  fillSide(position, code, only, true);
  fillSide(position, code, only, false);
  Money closed, fees;
  eachBook(code, only, [&](const SourceBook& book) {
    closed += book.closedProfit;
    fees += book.fees;
  });
  const double mark = code.markPrice ? toDouble(*code.markPrice) : 0;
  position.block3[position::MarkPrice] = wordOf(mark);
  position.block3[position::ClosedProfit] = wordOf(toDouble(closed));
  position.block3[position::Fee] = wordOf(toDouble(fees));
  position.block3[position::Multiplier] = wordOf(toDouble(code.terms->multiplier));
}

bool Ledger::positionRecord(int64 codeId, Position& position) const {
  const auto code = codes_.find(codeId);
  if (code == codes_.end()) return false;
  fillRecord(codeId, code->second, nullptr, position);
  return true;
}

bool Ledger::sourcePositionRecord(int64 codeId, const std::string& source,
                                  SourcePosition& position) const {
  const auto code = codes_.find(codeId);
  if (code == codes_.end()) return false;
  const auto book = code->second.sources.find(source);
  if (book == code->second.sources.end()) return false;
  fillRecord(codeId, code->second, &book->second, position);
  position.sourceType = book->second.source.sourceType;
  position.createSource = book->second.source.createSource;
  position.sourceText = book->second.source.sourceText;
  return true;
}

std::vector<int64> Ledger::codes() const {
  std::vector<int64> result;
  result.reserve(codes_.size());
  for (const auto& [codeId, code] : codes_) result.push_back(codeId);
  return result;
}

std::vector<std::string> Ledger::sources(int64 codeId) const {
  std::vector<std::string> result;
  const auto code = codes_.find(codeId);
  if (code == codes_.end()) return result;
  result.reserve(code->second.sources.size());
  for (const auto& [name, book] : code->second.sources) result.push_back(name);
  return result;
}

std::vector<SourceGlance> Ledger::sourceGlances() const {
  std::map<std::string, SourceGlance> byName;
  for (const auto& [codeId, code] : codes_) {
    for (const auto& [name, book] : code.sources) {
      SourceGlance& glance = byName[name];
      const Volume held = book.longSide.volume(), owed = book.shortSide.volume();
      if (held.isZero() && owed.isZero()) continue;
      PositionGlance& position = glance.positions.emplace_back();
      position.code = code.terms->code;
      position.longVolume = toDouble(held);
      position.shortVolume = toDouble(owed);
    }
  }
  std::vector<SourceGlance> result;
  result.reserve(byName.size());
  for (auto& [name, glance] : byName) {
    glance.source = name;
    glance.result = toDouble(resultOf(name));
    result.push_back(std::move(glance));
  }
  return result;
}

}  // namespace orvane::detail
