#include "platform/market/files/Table.h"

#include <algorithm>
#include <utility>

#include "platform/market/files/DataFiles.h"

namespace orvane::detail {
namespace {

constexpr std::size_t kHeadSamples = 1000;
constexpr std::size_t kTailSampleBytes = 16 * 1024;

std::vector<std::string> copied(std::span<const CsvField> fields) {
  std::vector<std::string> texts;
  texts.reserve(fields.size());
  for (const CsvField& field : fields) texts.emplace_back(field.text);
  return texts;
}

/// The fields of a row that was copied.
std::vector<CsvField> fieldsOf(const std::vector<std::string>& texts) {
  std::vector<CsvField> fields;
  fields.reserve(texts.size());
  for (const std::string& text : texts) fields.push_back({text, {}});
  return fields;
}

bool looksLikeData(std::string_view text) {
  MomentText moment;
  return !text.empty() &&
         (isNumber(text) || parseMoment(text, DateOrder::Unknown, moment) != DateResult::Bad);
}

bool anyData(const std::vector<std::string>& row) {
  return std::any_of(row.begin(), row.end(), [](const auto& text) { return looksLikeData(text); });
}

}  // namespace

Table::Table(const std::string& path, const Description& description, bool bars, int threads)
    : path_(path),
      description_(description),
      text_(readFileText(path, description.encoding, threads)),
      facts_(factsOfFileName(path)) {
  notes_ = std::move(text_.notes);
  if (description.skipLines == 0) refuseOtherForms();
  delimiter_ = description.delimiter ? description.delimiter : detectDelimiter(text_.text);
  findHeader();
  sample();
  understand(bars);
  findOrder();
}

/// What is said of the columns of such a file helps nobody.
void Table::refuseOtherForms() const {
  const std::string_view text = text_.text;
  const std::size_t begin = std::min(text.find_first_not_of(" \t\r\n"), text.size());
  std::string start(text.substr(begin, 16));
  for (char& c : start) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  const bool isJson = start.starts_with('{') || start.starts_with("[{") ||
                      start.starts_with("[[") || start.starts_with("[\n") ||
                      start.starts_with("[\r\n") || start == "[]";
  const bool isHtml = start.starts_with("<!doctype") || start.starts_with("<html") ||
                      start.starts_with("<?xml") || start.starts_with("<head");
  if (isJson || isHtml)
    throw DataFileError(path_ + ": looks like " + (isJson ? "JSON" : "HTML") + ", not a table");
}

void Table::findHeader() {
  rows_ = std::make_unique<CsvRows>(path_, text_.text, delimiter_);
  rows_->skipLines(description_.skipLines);
  const auto dataBeginHere = [this] {
    dataOffset_ = rows_->offset();
    linesBeforeData_ = rows_->line();
  };
  dataBeginHere();
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
    width_ = header_.size();
    header_ = named ? names : std::vector<std::string>();
    hasHeader_ = named;
  } else {
    width_ = header_.size();
    dataBeginHere();
    if (!rows_->next()) throw DataFileError(path_ + ": has a header but no rows");
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
        ahead.fields().size() == width_ + 1 && wholeNumber(ahead.fields().front().text, second) &&
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
  const std::size_t size = text_.text.size();
  if (head.offset() >= size) return;
  std::size_t from = std::max(head.offset(), size - std::min(size, kTailSampleBytes));
  if (from > head.offset()) from = std::min(text_.text.find('\n', from), size - 1) + 1;
  CsvRows tail(path_, text_.text.substr(from), delimiter_);
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

/// Columns that say everything go together; a few of them alone are no better than others.
void Table::keepWhole(std::vector<NamedRole>& roles, bool bars) const {
  const auto has = [&](Role role) {
    return std::any_of(roles.begin(), roles.end(),
                       [role](const NamedRole& named) { return named.role == role; });
  };
  const bool isWhole =
      has(Role::TimeZone) && has(Role::TradingDay) &&
      (bars ? has(Role::OpenTime) && has(Role::Until) && has(Role::Period) : has(Role::DateTime));
  if (isWhole) return;
  for (NamedRole& named : roles)
    if (named.role >= Role::Until) named = {};
}

/// What a description says of rows that tell it themselves.
void Table::noteIdleKeys() {
  std::string keys;
  for (const auto& [isGiven, key] : {std::pair(description_.stampIsEnd.has_value(), "stamp"),
                                     {description_.date.has_value(), "date"},
                                     {description_.priceTick.mantissa != 0, "priceTick"}})
    if (isGiven) keys += (keys.empty() ? "\"" : ", \"") + std::string(key) + "\"";
  if (!keys.empty())
    notes_.push_back(path_ + ": " + keys +
                     " changes nothing here, since the rows hold what was read already");
}

/// Takes what the first row says of all rows.
void Table::hear() {
  if (!map_.isWhole) return;
  const auto first = [this](int column) {
    const auto at = static_cast<std::size_t>(column);
    return at < firstRow_.size() ? firstRow_[at] : std::string();
  };
  own_.timeZone = first(map_.timeZone);
  const std::string place = path_ + ":" + std::to_string(firstLine_) + ": column ";
  if (own_.timeZone.empty() || !ZoneClock(own_.timeZone).ok())
    throw DataFileError(place + "\"" + names_[static_cast<std::size_t>(map_.timeZone)] + "\": \"" +
                        own_.timeZone + "\" is no time zone");
  const std::string zone = ZoneClock(own_.timeZone).name();
  if (!description_.timeZone.empty() && ZoneClock(description_.timeZone).name() != zone)
    throw DataFileError(path_ + ": the file tells the zone \"" + own_.timeZone + "\", not \"" +
                        description_.timeZone + "\"; leave \"timeZone\" out");
  if (description_.priceShift != 0 || description_.volumeShift != 0 ||
      description_.turnoverShift != 0)
    throw DataFileError(path_ +
                        ": the file holds what was read already, and no scale can change "
                        "it; leave \"priceScale\" and its like out");
  noteIdleKeys();
  if (map_.period < 0) return;
  own_.period = first(map_.period);
  own_.periodMs = parsePeriod(own_.period);
  if (own_.periodMs == 0)
    throw DataFileError(place + "\"" + names_[static_cast<std::size_t>(map_.period)] + "\": \"" +
                        own_.period + "\" is no period such as 5m, 30s, 1h, day or week");
  if (description_.periodMs != 0 && description_.periodMs != own_.periodMs)
    throw DataFileError(path_ + ": the file tells a period of " + own_.period +
                        "; leave \"period\" out");
}

void Table::refuseTicks(const std::vector<NamedRole>& roles) const {
  std::string shown;
  for (std::size_t i = 0; i < roles.size() && hasHeader_; ++i)
    if (const Role role = roles[i].role;
        role == Role::LastPrice || (role >= Role::BidPrice && role <= Role::AskSize))
      if (shown.size() < 60) shown += (shown.empty() ? "" : ", ") + names_[i];
  throw OtherKindError(path_ + ": is a file of ticks" +
                       (shown.empty() ? "" : ", by its columns " + shown) +
                       "; use --ticks for it, or say \"kind\": \"bars\" if it is one of bars");
}

std::vector<std::string> Table::meanings() const {
  std::vector<std::string> result;
  for (const NamedRole& named : roles_)
    result.push_back(named.role == Role::None ? "" : ourName(named.role, named.level));
  return result;
}

void Table::understand(bool bars) {
  const bool mayBeTicks = bars && description_.kind.empty();
  if (mayBeTicks && !hasHeader_ && description_.columnList.empty() &&
      description_.columnMap.empty() && contentsAreTicks(samples_, description_.numbers))
    refuseTicks({});
  std::vector<NamedRole> found = roles(bars);
  keepWhole(found, bars);
  roles_ = found;
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
  const TickLook look = mayBeTicks ? looksLikeTicks(found) : TickLook::No;
  if (look == TickLook::Yes) refuseTicks(found);
  map_ = bars ? bindBars(place, found, names_) : bindTicks(place, found, names_);
  hear();
  Description mine = description_;
  if (mine.timeZone.empty()) mine.timeZone = own_.timeZone;
  times_ =
      std::make_unique<TimeParser>(path_, map_.time, mine, facts_.day, samples_, names_, notes_);
  if (look != TickLook::IfTimed || samples_.empty()) return;
  RowTime first;
  if (times_->parse(fieldsOf(samples_.front()), INT64_MIN, first) && !first.dateOnly)
    refuseTicks(found);
}

/// Compares the first row's time with the last one's; rows in between are checked as they come.
void Table::findOrder() {
  if (description_.order != RowOrder::Auto) {
    newestFirst_ = description_.order == RowOrder::Descending;
    return;
  }
  if (samples_.size() < 2) return;
  const auto timeOf = [&](const std::vector<std::string>& row, RowTime& out) {
    return times_->parse(fieldsOf(row), INT64_MIN, out);
  };
  RowTime first;
  RowTime last;
  if (!timeOf(samples_.front(), first) || !timeOf(samples_.back(), last)) return;
  newestFirst_ = last.utcMs < first.utcMs;
}

}  // namespace orvane::detail
