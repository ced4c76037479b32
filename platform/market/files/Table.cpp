#include "platform/market/files/Table.h"

#include <algorithm>

#include "platform/market/files/DataFiles.h"

namespace orvane::detail {
namespace {

constexpr std::size_t kHeadSamples = 1000;
constexpr std::size_t kTailSampleBytes = 16 * 1024;

std::vector<std::string> copied(const std::vector<std::string_view>& fields) {
  return {fields.begin(), fields.end()};
}

bool looksLikeData(std::string_view text) {
  MomentText moment;
  return !text.empty() &&
         (isNumber(text) || parseMoment(text, DateOrder::Unknown, moment) != DateResult::Bad);
}

bool anyData(const std::vector<std::string>& row) {
  return std::any_of(row.begin(), row.end(), [](const auto& text) { return looksLikeData(text); });
}

/// A field as a message shows it.
std::string shown(std::string_view text) {
  std::string out = "\"" + std::string(text.substr(0, 60));
  return out + (text.size() > 60 ? "...\"" : "\"");
}

}  // namespace

Table::Table(const std::string& path, const Description& description, bool bars)
    : path_(path),
      description_(description),
      text_(readFileText(path, description.encoding)),
      facts_(factsOfFileName(path)) {
  notes_ = std::move(text_.notes);
  delimiter_ = description.delimiter ? description.delimiter : detectDelimiter(text_.text);
  findHeader();
  sample();
  understand(bars);
  findOrder();
}

std::string Table::place() const { return path_ + ":" + std::to_string(rows_->line()); }

double Table::share() const {
  return static_cast<double>(rows_->offset()) / static_cast<double>(text_.text.size());
}

std::size_t Table::rowsLeft() const {
  constexpr std::size_t kMost = std::size_t{1} << 22;  // What is reserved unseen has a bound.
  return std::min(kMost, (text_.text.size() - rows_->offset()) / rowBytes_ + 2);
}

void Table::findHeader() {
  rows_ = std::make_unique<CsvRows>(path_, text_.text, delimiter_);
  rows_->skipLines(description_.skipLines);
  if (!rows_->next()) throw DataFileError(path_ + ": has no rows");
  header_ = copied(rows_->fields());
  headerLine_ = rows_->line();
  hasHeader_ = description_.header.value_or(!anyData(header_));
  if (!hasHeader_) {
    // Some writers hide the header in a comment: "#date,open,...".
    const std::string comment(rows_->commentBefore());
    CsvRows inside(path_, comment, delimiter_);
    std::vector<std::string> names;
    if (!description_.header && inside.next()) names = copied(inside.fields());
    const bool named = names.size() == header_.size() && names.size() > 2 &&
                       std::count_if(names.begin(), names.end(), [](const auto& name) {
                         return roleOfName(name).has_value();
                       }) >= 3;
    pending_ = true;
    width_ = header_.size();
    header_ = named ? names : std::vector<std::string>();
    hasHeader_ = named;
  } else {
    width_ = header_.size();
    if (!rows_->next()) throw DataFileError(path_ + ": has a header but no rows");
    pending_ = true;
  }
  firstRow_ = copied(rows_->fields());
  firstLine_ = rows_->line();
}

/// Copies some rows from both ends. Rows of another width are passed over: they are reported when
/// they are read.
void Table::sample() {
  // A header that leaves its index column out is one name short.
  if (hasHeader_ && firstRow_.size() == width_ + 1 && !firstRow_.back().empty() &&
      !header_.front().empty()) {
    std::int64_t first = 0;
    std::int64_t second = 0;
    CsvRows ahead = *rows_;
    if (wholeNumber(firstRow_.front(), first) && ahead.next() &&
        ahead.fields().size() == width_ + 1 && wholeNumber(ahead.fields().front(), second) &&
        (second == first + 1 || second == first - 1)) {
      header_.insert(header_.begin(), "");
      ++width_;
    }
  }
  const auto take = [&](CsvRows& rows) {
    if (rows.fields().size() >= width_) {
      samples_.push_back(copied(rows.fields()));
      samples_.back().resize(width_);
    }
  };
  CsvRows head = *rows_;
  do {
    take(head);
  } while (samples_.size() < kHeadSamples && head.next());
  rowBytes_ = std::max<std::size_t>(
      1, (head.offset() - rows_->offset()) / std::max<std::size_t>(1, samples_.size()));
  const std::size_t size = text_.text.size();
  if (head.offset() >= size) return;
  std::size_t from = std::max(head.offset(), size - std::min(size, kTailSampleBytes));
  if (from > head.offset()) from = std::min(text_.text.find('\n', from), size - 1) + 1;
  CsvRows tail(path_, std::string_view(text_.text).substr(from), delimiter_);
  try {
    while (tail.next()) take(tail);
  } catch (const DataFileError&) {
    // It will be met again, with its true line.
  }
}

void Table::cannotRecognise(bool bars) const {
  std::string row;
  for (const std::string& field : firstRow_) {
    if (row.size() > 200) break;
    row += (row.empty() ? "" : std::string(1, delimiter_)) + field;
  }
  throw DataFileError(
      path_ + ":" + std::to_string(firstLine_) + ": no header, and the columns of \"" + row +
      "\" are of no known shape; name them in a description, such as \"columns\": " +
      (bars ? R"(["date", "time", "open", "high", "low", "close", "volume"])"
            : R"(["datetime", "lastPrice", "volume", "bidPrice1", "bidSize1"])") +
      ", with \"-\" for one to pass over");
}

void Table::applyColumnMap(std::vector<NamedRole>& roles) const {
  // Who names one column of the time names them all.
  const auto isTime = [](const NamedRole& named) {
    return named.role >= Role::DateTime && named.role <= Role::Millis &&
           named.role != Role::TradingDay;
  };
  if (std::any_of(description_.columnMap.begin(), description_.columnMap.end(),
                  [&](const auto& named) { return isTime(named.role); }))
    std::replace_if(roles.begin(), roles.end(), isTime, NamedRole{});
  for (const Description::Named& named : description_.columnMap) {
    std::size_t column = static_cast<std::size_t>(named.position) - 1;
    if (named.position == 0) {
      const auto found = std::find(header_.begin(), header_.end(), named.header);
      if (found == header_.end())
        throw DataFileError(
            path_ + ":" + std::to_string(headerLine_) + ": the description names a column \"" +
            named.header + "\", which is not there" +
            (header_.empty() ? ""
                             : "; did you mean \"" + nearestName(named.header, header_) + "\"?"));
      column = static_cast<std::size_t>(found - header_.begin());
    }
    if (column >= roles.size())
      throw DataFileError(path_ + ":" + std::to_string(headerLine_) +
                          ": the description names column " + std::to_string(column + 1) +
                          ", but there are " + std::to_string(roles.size()));
    std::replace(roles.begin(), roles.end(), named.role, NamedRole{});
    roles[column] = named.role;
  }
}

std::vector<NamedRole> Table::roles(bool bars) {
  if (!description_.columnList.empty()) {
    std::vector<NamedRole> given = description_.columnList;
    if (given.size() > width_)
      throw DataFileError(path_ + ":" + std::to_string(headerLine_) + ": " +
                          std::to_string(width_) + " fields, but \"columns\" names " +
                          std::to_string(given.size()));
    given.resize(width_);
    return given;
  }
  std::vector<NamedRole> found;
  if (hasHeader_) {
    found = rolesOfHeader(header_);
    const bool timed = std::any_of(found.begin(), found.end(), [](const NamedRole& named) {
      return named.role >= Role::DateTime && named.role <= Role::Millis;
    });
    const int moment = timed || !description_.columnMap.empty() ? -1 : momentColumn(samples_);
    if (moment >= 0) {
      found[static_cast<std::size_t>(moment)] = {Role::DateTime};
      notes_.push_back("the column \"" + header_[static_cast<std::size_t>(moment)] +
                       "\" is taken for the time");
    }
  } else {
    if (description_.columnMap.empty()) {
      std::vector<std::string> guesses;
      found = rolesOfContents(samples_, bars, description_.numbers, guesses);
      if (found.empty()) cannotRecognise(bars);
      notes_.insert(notes_.end(), guesses.begin(), guesses.end());
    }
    found.resize(width_);
  }
  applyColumnMap(found);
  return found;
}

void Table::understand(bool bars) {
  const std::vector<NamedRole> found = roles(bars);
  names_ = header_;
  names_.resize(width_);
  for (std::size_t i = 0; i < width_; ++i) {
    if (!names_[i].empty()) continue;
    names_[i] = std::to_string(i + 1);
    if (found[i].role != Role::None)
      names_[i] += " (" + ourName(found[i].role, found[i].level) + ")";
  }
  std::string unused;
  for (std::size_t i = 0; hasHeader_ && description_.columnList.empty() && i < width_; ++i)
    if (found[i].role == Role::None && !header_[i].empty() && unused.size() < 200)
      unused += (unused.empty() ? "" : ", ") + header_[i];
  if (!unused.empty()) notes_.push_back("columns that are not used: " + unused);
  const std::string place = path_ + ":" + std::to_string(headerLine_);
  map_ = bars ? bindBars(place, found, names_) : bindTicks(place, found, names_);
  times_ = std::make_unique<TimeParser>(path_, map_.time, description_, facts_.day, samples_,
                                        names_, notes_);
}

/// Compares the first row's time with the last one's; rows in between are checked as they come.
void Table::findOrder() {
  if (description_.order != RowOrder::Auto) {
    newestFirst_ = description_.order == RowOrder::Descending;
    return;
  }
  if (samples_.size() < 2) return;
  const auto timeOf = [&](const std::vector<std::string>& row, RowTime& out) {
    const std::vector<std::string_view> fields(row.begin(), row.end());
    return times_->parse(fields, INT64_MIN, out);
  };
  RowTime first;
  RowTime last;
  if (!timeOf(samples_.front(), first) || !timeOf(samples_.back(), last)) return;
  newestFirst_ = last.utcMs < first.utcMs;
}

bool Table::next() {
  if (pending_)
    pending_ = false;
  else if (!rows_->next())
    return false;
  const auto& fields = rows_->fields();
  if (fields.size() == width_) return true;
  if (fields.size() < width_)
    throw DataFileError(place() + ": " + std::to_string(fields.size()) + " fields, but " +
                        std::to_string(width_) + " are needed; column \"" + names_[fields.size()] +
                        "\" is missing");
  // A delimiter at the end of the line.
  if (fields.size() == width_ + 1 && fields.back().empty()) return true;
  throw DataFileError(place() + ": " + std::to_string(fields.size()) + " fields, but there are " +
                      std::to_string(width_) + " columns; " + shown(fields[width_]) +
                      " is too much");
}

RowTime Table::time(std::int64_t notBefore) {
  RowTime out;
  if (!times_->parse(rows_->fields(), notBefore, out))
    fail(times_->errorColumn(), times_->errorText());
  return out;
}

double Table::number(const NumberParser& parser, int column) {
  const std::string_view text = field(column);
  if (text.empty()) return 0;
  double value = 0;
  if (!parser.parse(text, value)) {
    const bool comma = text.find(',') != text.npos;
    fail(column, comma ? "is not a number; \"thousands\" or \"decimalPoint\" of a description "
                         "tells what the comma is"
                       : "is not a number");
  }
  return value;
}

std::string Table::code() const {
  if (map_.code < 0) return {};
  std::string code(field(map_.code));
  if (code.empty()) fail(map_.code, "is empty");
  if (code.size() > 100) fail(map_.code, "is too long for a code");
  if (map_.market >= 0 && code.find('.') == std::string::npos && !field(map_.market).empty())
    code += "." + std::string(field(map_.market));
  return code;
}

void Table::fail(int column, const std::string& what) const {
  std::string text = place();
  if (column >= 0) {
    text += ": column \"" + names_[static_cast<std::size_t>(column)] + "\"";
    const std::string_view value = field(column);
    text += value.empty() ? " " : ": " + shown(value) + " ";
  } else {
    text += ": ";
  }
  throw DataFileError(text + what);
}

}  // namespace orvane::detail
