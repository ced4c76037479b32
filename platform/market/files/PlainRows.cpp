#include "platform/market/files/PlainRows.h"

#include "platform/market/files/CsvRows.h"
#include "platform/market/files/ShortDecimal.h"
#include "platform/market/files/Table.h"

namespace orvane::detail {
namespace {

/// Those that no number, date or time of day has in it.
bool isUsualDelimiter(char c) { return c == ',' || c == ';' || c == '\t' || c == '|'; }

/// The end of a field that nobody reads; null if it has a quote.
const char* passOver(const char* at, const char* end, char delimiter) {
  for (; at != end && *at != delimiter && *at != '\n' && *at != '\r'; ++at)
    if (*at == '"') return nullptr;
  return at;
}

}  // namespace

PlainRows::PlainRows(const Table& table,
                     std::initializer_list<std::pair<int, const NumberParser*>> numberColumns)
    : delimiter_(table.delimiter()) {
  const ColumnMap& map = table.map();
  const int moment = table.times().plainColumn();
  if (map.isWhole || map.code >= 0 || moment < 0 || !isUsualDelimiter(delimiter_)) return;
  std::vector<Column> columns(table.names().size());
  columns[static_cast<std::size_t>(moment)].kind = Kind::Moment;
  std::vector<const NumberParser*> parsers(columns.size(), nullptr);
  for (const auto& [at, parser] : numberColumns) {
    if (at < 0) continue;
    Column& column = columns[static_cast<std::size_t>(at)];
    const NumberParser*& before = parsers[static_cast<std::size_t>(at)];
    if (column.kind == Kind::Moment || (before != nullptr && before != parser)) return;
    before = parser;
    column = {Kind::Number, *parser};
  }
  columns_.swap(columns);
  numbers_.resize(columns_.size());
}

std::size_t PlainRows::take(std::string_view text, TimeParser& times, std::int64_t notBefore,
                            RowTime& time) {
  const std::size_t length = look(text, times, notBefore, time);
  ++(length == 0 ? missed_ : taken_);
  return length;
}

std::size_t PlainRows::look(std::string_view text, TimeParser& times, std::int64_t notBefore,
                            RowTime& time) {
  const char* at = text.data();
  const char* const end = at + text.size();
  // Lines that are no rows begin like that.
  if (at == end || *at == '#' || *at == ' ' || *at == '\t') return 0;
  const std::size_t last = columns_.size() - 1;
  for (std::size_t i = 0; i < last; ++i) {
    at = takeField(i, at, end, times, notBefore, time);
    if (at == nullptr || at == end || *at != delimiter_) return 0;
    ++at;
  }
  at = takeField(last, at, end, times, notBefore, time);
  if (at == nullptr) return 0;
  // One more may stand at the end of the line.
  if (at != end && *at == delimiter_) ++at;
  if (at != end && *at == '\r') ++at;
  if (at == end || *at != '\n') return 0;
  return static_cast<std::size_t>(at + 1 - text.data());
}

/// Answers where the field ends; null if it is not plain. What stands behind it is the caller's to
/// look at.
inline const char* PlainRows::takeField(std::size_t at, const char* begin, const char* end,
                                        TimeParser& times, std::int64_t notBefore, RowTime& time) {
  const Column& column = columns_[at];
  if (column.kind == Kind::Number) {
    // Whatever stands behind a number ends it, also where the line does.
    ShortDecimal number;
    const char* const next = takeShortDecimal(begin, end, end, number);
    return column.parser.parse(number, numbers_[at]) ? next : nullptr;
  }
  if (column.kind == Kind::Moment) return times.takePlain(begin, end, delimiter_, notBefore, time);
  return passOver(begin, end, delimiter_);
}

}  // namespace orvane::detail
