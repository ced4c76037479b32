#include "platform/market/files/PlainRows.h"

#include "platform/market/files/CsvRows.h"
#include "platform/market/files/ShortDecimal.h"
#include "platform/market/files/Table.h"

namespace orvane::detail {
namespace {

/// Those that no number, date or time of day has in it.
bool isUsualDelimiter(char c) { return c == ',' || c == ';' || c == '\t' || c == '|'; }

// These answer where a field ends, and null if it is not plain. What stands behind it is the
// caller's to look at.

/// Whatever stands behind a number ends it, also where the line does.
inline const char* takeNumber(const NumberParser& parser, const char* at, const char* end,
                              double& value) {
  ShortDecimal number;
  const char* const next = takeShortDecimal(at, end, end, number);
  return parser.parse(number, value) ? next : nullptr;
}

/// A field that nobody reads; one with a quote is not plain.
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
    column.kind = parser->isPlainest() ? Kind::ShapedNumber : Kind::Number;
    column.parser = *parser;
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
  double* number = numbers_.data();
  for (auto column = columns_.begin();;) {
    if (column->kind == Kind::ShapedNumber) {
      const char* const next = column->shape.take(at, end, *number);
      at = next != nullptr ? next : takeNewShape(*column, at, end, *number);
    } else if (column->kind == Kind::Number) {
      at = takeNumber(column->parser, at, end, *number);
    } else if (column->kind == Kind::Moment) {
      at = times.takePlain(at, end, delimiter_, notBefore, time);
    } else {
      at = passOver(at, end, delimiter_);
    }
    if (at == nullptr) return 0;
    if (++column == columns_.end()) break;
    if (at == end || *at != delimiter_) return 0;
    ++at;
    ++number;
  }
  // One more may stand at the end of the line.
  if (at != end && *at == delimiter_) ++at;
  if (at != end && *at == '\r') ++at;
  if (at == end || *at != '\n') return 0;
  return static_cast<std::size_t>(at + 1 - text.data());
}

const char* PlainRows::takeNewShape(Column& column, const char* at, const char* end,
                                    double& value) const {
  ShortDecimal number;
  const bool isNegative = at != end && *at == '-';
  const char* const next = takeLongerDecimal(at, at + (isNegative ? 1 : 0), end, number);
  if (!column.parser.parse(number, value)) return nullptr;
  column.shape.learn(at, next, end, number);
  // Where the shape changes all the time, or there is none, a number is read faster without a
  // guess.
  if (++column.newShapes > kMostMissed + taken_ / 3) column.kind = Kind::Number;
  return next;
}

}  // namespace orvane::detail
