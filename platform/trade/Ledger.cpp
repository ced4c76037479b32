#include "platform/trade/Ledger.h"

#include <algorithm>
#include <bit>

#include "platform/fields/CapitalView.h"
#include "platform/fields/PositionView.h"

namespace orvane::detail {
namespace {

constexpr int kNoMoney = 21;
constexpr int kNoPosition = 38;
constexpr int kOutOfRange = -2;
/// 10^14: money reaches 1.7 x 10^16, so sums stay in range while prices rise a hundredfold.
constexpr Money kMostTurnover{Int128{1'000'000'000'000'000'000} * 1'000'000'000'000'000'000};

Word word(double value) { return std::bit_cast<Word>(value); }

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
  const auto byLot = chargeOf(terms.feePerLot, volume);
  const auto byTurnover = shareOf(*turnover, terms.feeRate);
  if (!margin || !byLot || !byTurnover) return std::nullopt;
  Money fee;
  if (__builtin_add_overflow(byLot->units, byTurnover->units, &fee.units)) return std::nullopt;
  return Need{*turnover, *margin, fee};
}

PositionSide& Ledger::sideOf(SourceBook& book, const Claim& claim) {
  return isAboutLong(claim) ? book.longSide : book.shortSide;
}

std::optional<Refusal> Ledger::freeze(const Claim& claim) {
  auto refusal = opens(claim) ? freezeMoney(claim) : freezeVolume(claim);
  return refusal;
}

std::optional<Refusal> Ledger::freezeMoney(const Claim& claim) {
  const auto need = needOf(*claim.terms, claim.price, claim.volume);
  if (!need || need->turnover > kMostTurnover - committed_ ||
      std::max(need->margin, need->fee) > kMostTurnover)
    return Refusal{kOutOfRange, "too large: " + text(claim.volume) + " at " + text(claim.price)};
  const Money wanted = need->margin + need->fee;
  if (wanted.isPositive() && wanted > available())
    return Refusal{kNoMoney,
                   "not enough money: needs " + text(wanted) + ", available " + text(available())};
  holds_[claim.orderId] = {claim, claim.volume, wanted, need->turnover};
  frozen_ += wanted;
  committed_ += need->turnover;
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
  holds_[claim.orderId] = {claim, claim.volume, {}, {}};
  return std::nullopt;
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
  } else {
    sideOf(bookOf(hold.claim), hold.claim).unfreeze(hold.left, closesToday(hold.claim));
  }
  holds_.erase(at);
}

Money Ledger::frozenOf(int64 orderId) const {
  const auto at = holds_.find(orderId);
  return at == holds_.end() ? Money{} : at->second.money;
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
  booking.fee = needOf(terms, price, volume).value_or(Need{}).fee;

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
    hold.turnover = rest.turnover;
    side.open(terms, price, volume);
  } else {
    side.unfreeze(volume, closesToday(hold.claim));
    const Money cost = side.close(terms, volume, closesToday(hold.claim));
    booking.profit = isAboutLong(hold.claim) ? booking.turnover - cost : cost - booking.turnover;
  }
  margin_ += side.margin() - marginBefore;
  committed_ += side.openTurnover() - turnoverBefore;
  book.closedProfit += booking.profit;
  book.fees += booking.fee;
  closedProfit_ += booking.profit;
  fees_ += booking.fee;
  if (!hold.left.isPositive()) holds_.erase(at);

  CodeBook& code = codes_[terms.code.id];
  if (!code.markPrice) code.markPrice = price;
  revalue(code);
  return booking;
}

void Ledger::revalue(CodeBook& code) {
  code.isHeld = false;
  for (auto& [name, book] : code.sources) {
    const Money now = book.longSide.floating(*code.terms, *code.markPrice) +
                      book.shortSide.floating(*code.terms, *code.markPrice);
    floating_ += now - book.floating;
    book.floating = now;
    code.isHeld = code.isHeld || !book.longSide.isEmpty() || !book.shortSide.isEmpty();
  }
}

void Ledger::mark(int64 codeId, Price price) {
  const auto at = codes_.find(codeId);
  if (at == codes_.end() || at->second.markPrice == price) return;
  at->second.markPrice = price;
  if (at->second.isHeld) revalue(at->second);
}

bool Ledger::beginDay(int64 codeId, bool settles) {
  const auto at = codes_.find(codeId);
  if (at == codes_.end() || !at->second.isHeld) return false;
  CodeBook& code = at->second;
  bool isChanged = false;
  for (auto& [name, book] : code.sources) {
    for (PositionSide* side : {&book.longSide, &book.shortSide}) {
      isChanged = isChanged || side->today().isPositive() || (settles && !side->isEmpty());
      if (settles && code.markPrice) {
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
  revalue(code);
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

TradingAccount Ledger::capitalRecord(int64 time) const {
  TradingAccount record;
  record.account = account_;
  record.value = time;
  const auto set = [&record](capital::Block1 at, Money money) {
    record.block1[at] = word(toDouble(money));
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

void Ledger::fillSide(Position& position, const CodeBook& code,
                      const std::vector<const SourceBook*>& of, bool isLong) const {
  Volume volume, today, frozen;
  Money margin, floating, openTurnover;
  for (const SourceBook* book : of) {
    const PositionSide& side = isLong ? book->longSide : book->shortSide;
    volume += side.volume();
    today += side.today();
    frozen += side.frozen();
    margin += side.margin();
    openTurnover += side.openTurnover();
    if (code.markPrice) floating += side.floating(*code.terms, *code.markPrice);
  }
  auto& block = isLong ? position.block1 : position.block2;
  block[position::Volume] = word(toDouble(volume));
  block[position::TodayVolume] = word(toDouble(today));
  block[position::YesterdayVolume] = word(toDouble(volume - today));
  block[position::FrozenVolume] = word(toDouble(frozen));
  block[position::Margin] = word(toDouble(margin));
  block[position::FloatingProfit] = word(toDouble(floating));
  block[position::OpenTurnover] = word(toDouble(openTurnover));
  const double units = toDouble(volume) * toDouble(code.terms->multiplier);
  (isLong ? position.value1 : position.value2) = units > 0 ? toDouble(openTurnover) / units : 0;
}

void Ledger::fillRecord(int64 codeId, const CodeBook& code,
                        const std::vector<const SourceBook*>& of, Position& position) const {
  position = {};
  position.account = account_;
  position.code = code.terms->code;
  position.code.id = codeId;
  fillSide(position, code, of, true);
  fillSide(position, code, of, false);
  Money closed, fees;
  for (const SourceBook* book : of) {
    closed += book->closedProfit;
    fees += book->fees;
  }
  const double mark = code.markPrice ? toDouble(*code.markPrice) : 0;
  position.block3[position::MarkPrice] = word(mark);
  position.block3[position::ClosedProfit] = word(toDouble(closed));
  position.block3[position::Fee] = word(toDouble(fees));
  position.block3[position::Multiplier] = word(toDouble(code.terms->multiplier));
}

bool Ledger::positionRecord(int64 codeId, Position& position) const {
  const auto code = codes_.find(codeId);
  if (code == codes_.end()) return false;
  std::vector<const SourceBook*> all;
  all.reserve(code->second.sources.size());
  for (const auto& [name, book] : code->second.sources) all.push_back(&book);
  fillRecord(codeId, code->second, all, position);
  return true;
}

bool Ledger::sourcePositionRecord(int64 codeId, const std::string& source,
                                  SourcePosition& position) const {
  const auto code = codes_.find(codeId);
  if (code == codes_.end()) return false;
  const auto book = code->second.sources.find(source);
  if (book == code->second.sources.end()) return false;
  fillRecord(codeId, code->second, {&book->second}, position);
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

}  // namespace orvane::detail
