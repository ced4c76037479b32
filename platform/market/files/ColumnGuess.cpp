// Recognises the columns of a file without a header by their number and contents.

#include <algorithm>
#include <cmath>

#include "platform/market/files/ColumnMap.h"

namespace orvane::detail {
namespace {

class Guess {
 public:
  Guess(const SampleRows& samples, bool bars, const NumberFormat& numbers,
        std::vector<std::string>& notes)
      : samples_(samples),
        bars_(bars),
        numbers_(numbers, 0, {}),
        notes_(notes),
        width_(samples.front().size()) {}

  std::vector<NamedRole> run() {
    roles_.assign(width_, {});
    if (!takeTime()) return {};
    return bars_ ? takeBar() : takeTick();
  }

  /// Whether half of the rows, at the least, begin with four prices of a bar in one order, and of
  /// one magnitude: sizes behind a bid and an ask are none.
  bool isMostlyBars() const {
    if (numbersFrom(at_) < 4) return false;
    const auto fits = [this](std::size_t high, std::size_t low, std::size_t close) {
      std::size_t good = 0;
      for (const auto& row : samples_)
        if (isBar(row, 0, high, low, close) && value(row, at_ + low) * 10 >= value(row, at_ + high))
          ++good;
      return good * 2 >= samples_.size();
    };
    return fits(1, 2, 3) || fits(2, 3, 1);
  }

 private:
  template <typename Test>
  bool all(std::size_t column, Test test) const {
    if (column >= width_) return false;
    return std::all_of(samples_.begin(), samples_.end(),
                       [&](const auto& row) { return test(row[column]); });
  }

  /// A number, or a word for none: that is met again, and refused, when the row is read.
  bool isNumeral(const std::string& text) const {
    double number = 0;
    return numbers_.parse(text, number) || text == "nan" || text == "NaN" || text == "null";
  }

  bool isNumeric(std::size_t column) const {
    return all(column, [&](const std::string& text) { return text.empty() || isNumeral(text); });
  }

  bool isText(std::size_t column) const {
    return all(column, [&](const std::string& text) {
      MomentText moment;
      return !text.empty() && !isNumeral(text) &&
             parseMoment(text, DateOrder::Unknown, moment) == DateResult::Bad;
    });
  }

  bool isMoment(std::size_t column, bool& hasDate, bool& hasTime) const {
    hasDate = hasTime = false;
    return all(column, [&](const std::string& text) {
      MomentText moment;
      if (parseMoment(text, DateOrder::Unknown, moment) == DateResult::Bad) return false;
      hasDate = hasDate || moment.hasDate;
      hasTime = hasTime || moment.hasTime;
      return true;
    });
  }

  bool isWhole(std::size_t column) const {
    return all(column, [](const std::string& text) {
      std::int64_t value = 0;
      return wholeNumber(text, value);
    });
  }

  bool repeats(std::size_t column) const {
    return std::adjacent_find(samples_.begin(), samples_.end(), [&](const auto& a, const auto& b) {
             return a[column] == b[column];
           }) != samples_.end();
  }

  std::size_t numbersFrom(std::size_t column) const {
    std::size_t count = 0;
    while (isNumeric(column + count)) ++count;
    return count;
  }

  double value(const std::vector<std::string>& row, std::size_t column) const {
    double number = 0;
    return numbers_.parse(row[column], number) ? number : 0;
  }

  /// The time columns, and a code before or behind them.
  bool takeTime() {
    bool hasDate = false;
    bool hasTime = false;
    if (isText(0) && width_ > 1) roles_[at_++] = {Role::Code};
    if (isMoment(at_, hasDate, hasTime)) {
      bool otherDate = false;
      bool otherTime = false;
      const bool clockNext = isMoment(at_ + 1, otherDate, otherTime) && otherTime && !otherDate;
      const bool digitsNext = repeats(at_) && isWhole(at_ + 1);
      if (hasDate && !hasTime && (clockNext || digitsNext)) {
        roles_[at_++] = {Role::Date};
        roles_[at_++] = {Role::Time};
      } else {
        roles_[at_++] = {Role::DateTime};
      }
    } else if (isNumeric(at_) && all(at_, [](const std::string& text) { return !text.empty(); })) {
      roles_[at_++] = {Role::DateTime};  // A counter: since 1970 or since midnight.
    } else {
      return false;
    }
    if (at_ < width_ && find(Role::Code) == width_ && isText(at_)) roles_[at_++] = {Role::Code};
    return at_ < width_;
  }

  std::size_t find(Role role) const {
    const auto found = std::find_if(roles_.begin(), roles_.end(),
                                    [&](const NamedRole& named) { return named.role == role; });
    return static_cast<std::size_t>(found - roles_.begin());
  }

  std::vector<NamedRole> assign(std::initializer_list<NamedRole> roles) {
    std::size_t column = at_;
    for (const NamedRole& role : roles) roles_[column++] = role;
    return roles_;
  }

  /// Whether four columns can be a bar's open, high, low and close in an order.
  bool isBar(std::size_t open, std::size_t high, std::size_t low, std::size_t close) const {
    return std::all_of(samples_.begin(), samples_.end(),
                       [&](const auto& row) { return isBar(row, open, high, low, close); });
  }

  bool isBar(const std::vector<std::string>& row, std::size_t open, std::size_t high,
             std::size_t low, std::size_t close) const {
    const double o = value(row, at_ + open);
    const double h = value(row, at_ + high);
    const double l = value(row, at_ + low);
    const double c = value(row, at_ + close);
    return l <= std::min(o, c) && std::max(o, c) <= h;
  }

  std::vector<NamedRole> takeBar() {
    const std::size_t numbers = numbersFrom(at_);
    const std::size_t rest = width_ - at_;
    if (numbers == 10 && rest == 10) {
      return assign({{Role::BidOpen},
                     {Role::BidHigh},
                     {Role::BidLow},
                     {Role::BidClose},
                     {Role::BidSize},
                     {Role::AskOpen},
                     {Role::AskHigh},
                     {Role::AskLow},
                     {Role::AskClose},
                     {Role::AskSize}});
    }
    if (numbers < 4) return {};
    const bool counted = rest == 4 || rest == 5;
    const bool withCloseTime = rest >= 6 && isMomentCounter(at_ + 5);
    if (!counted && !withCloseTime && numbers != 4 && numbers != 5) return {};
    const bool closeSecond = samples_.size() >= 3 && !isBar(0, 1, 2, 3) && isBar(0, 2, 3, 1);
    if (closeSecond) {
      assign({{Role::Open}, {Role::Close}, {Role::High}, {Role::Low}});
      notes_.push_back("without a header, read as open, close, high, low: no other order fits");
    } else {
      assign({{Role::Open}, {Role::High}, {Role::Low}, {Role::Close}});
    }
    if (rest > 4) roles_[at_ + 4] = {Role::Volume};
    if (withCloseTime) {
      roles_[at_ + 5] = {Role::CloseTime};
      if (rest > 6) roles_[at_ + 6] = {Role::Turnover};
    }
    return roles_;
  }

  /// Whether a column counts from 1970, as the time column does.
  bool isMomentCounter(std::size_t column) const {
    return all(column, [](const std::string& text) {
      std::int64_t value = 0;
      return text.size() >= 10 && wholeNumber(text, value) && value > 315'532'800;
    });
  }

  /// Whether two columns are a bid and an ask: near each other, the ask not below the bid.
  bool isSpread(std::size_t bid, std::size_t ask) const {
    bool any = false;
    const bool fits = std::all_of(samples_.begin(), samples_.end(), [&](const auto& row) {
      const double b = value(row, at_ + bid);
      const double a = value(row, at_ + ask);
      if (b == 0 || a == 0) return true;
      any = true;
      return b > 0 && a >= b && a <= b * 1.1;
    });
    return fits && any;
  }

  /// The mean distance of two columns, as a share, where both are there.
  double gap(std::size_t first, std::size_t second) const {
    double sum = 0;
    int count = 0;
    for (const auto& row : samples_) {
      const double a = value(row, at_ + first);
      const double b = value(row, at_ + second);
      if (a <= 0 || b <= 0) continue;
      sum += std::abs(b - a) / a;
      ++count;
    }
    return count > 0 ? sum / count : INFINITY;
  }

  /// Whether four columns are price and size of a bid and of an ask, either of which may be
  /// missing: sizes are missing with their price, and the prices are of one magnitude.
  bool isQuote() const {
    double least = INFINITY;
    double most = 0;
    const bool fits = std::all_of(samples_.begin(), samples_.end(), [&](const auto& row) {
      for (const std::size_t side : {0, 2}) {
        const double price = value(row, at_ + side);
        const double size = value(row, at_ + side + 1);
        if (price < 0 || size < 0 || (price == 0 && size != 0)) return false;
        if (price > 0) least = std::min(least, price);
        most = std::max(most, price);
      }
      const double bid = value(row, at_);
      const double ask = value(row, at_ + 2);
      return bid == 0 || ask == 0 || ask > bid * 0.9;
    });
    const auto hasPrice = [&](std::size_t column) {
      return std::any_of(samples_.begin(), samples_.end(),
                         [&](const auto& row) { return value(row, at_ + column) > 0; });
    };
    return fits && hasPrice(2) && most > 0 && most <= least * 3;
  }

  std::vector<NamedRole> takeTick() {
    const std::size_t numbers = numbersFrom(at_);
    if (numbers == 0) return {};
    const bool spread = numbers >= 2 && isSpread(0, 1);
    const bool quote = numbers >= 4 && isQuote();
    if (quote && (!spread || gap(0, 2) <= gap(0, 1))) {
      notes_.push_back("without a header, read as time, bid, bid size, ask, ask size");
      return assign({{Role::BidPrice, 1, true},
                     {Role::BidSize, 1, true},
                     {Role::AskPrice, 1, true},
                     {Role::AskSize, 1, true}});
    }
    if (spread) {
      assign({{Role::BidPrice, 1, true}, {Role::AskPrice, 1, true}});
      if (numbers == 4 && width_ == at_ + 4) {
        roles_[at_ + 2] = {Role::BidSize, 1, true};
        roles_[at_ + 3] = {Role::AskSize, 1, true};
      }
      notes_.push_back(numbers == 4 ? "without a header, read as time, bid, ask, bid size, ask size"
                                    : "without a header, read as time, bid, ask");
      return roles_;
    }
    if (numbers == 1 && width_ - at_ > 1) return {};
    if (numbers > 3 && width_ - at_ == numbers) return {};
    notes_.push_back("without a header, read as time, price, size");
    roles_[at_] = {Role::LastPrice};
    if (numbers > 1) roles_[at_ + 1] = {Role::Volume};
    return roles_;
  }

  const SampleRows& samples_;
  bool bars_;
  NumberParser numbers_;
  std::vector<std::string>& notes_;
  std::size_t width_;
  std::size_t at_ = 0;
  std::vector<NamedRole> roles_;
};

}  // namespace

std::vector<NamedRole> rolesOfContents(const SampleRows& samples, bool bars,
                                       const NumberFormat& numbers,
                                       std::vector<std::string>& notes) {
  if (samples.empty() || samples.front().size() < 2) return {};
  return Guess(samples, bars, numbers, notes).run();
}

bool contentsAreTicks(const SampleRows& samples, const NumberFormat& numbers) {
  if (samples.empty() || samples.front().size() < 2) return false;
  std::vector<std::string> notes;
  if (Guess(samples, false, numbers, notes).run().empty()) return false;
  Guess bars(samples, true, numbers, notes);
  bars.run();
  return !bars.isMostlyBars();
}

int momentColumn(const SampleRows& samples) {
  const auto isMoment = [](const std::string& text) {
    MomentText moment;
    if (parseMoment(text, DateOrder::Unknown, moment) == DateResult::Good) return moment.hasDate;
    std::int64_t count = 0;
    return text.size() >= 10 && wholeNumber(text, count) && count > 315'532'800;
  };
  for (std::size_t column = 0; !samples.empty() && column < samples.front().size(); ++column)
    if (std::all_of(samples.begin(), samples.end(),
                    [&](const auto& row) { return isMoment(row[column]); }))
      return static_cast<int>(column);
  return -1;
}

}  // namespace orvane::detail
