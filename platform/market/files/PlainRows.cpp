#include "platform/market/files/PlainRows.h"

#include "platform/market/files/CsvRows.h"
#include "platform/market/files/ShortDecimal.h"
#include "platform/market/files/Table.h"

namespace orvane::detail {
namespace {

/// The end of a field that nobody reads; null if it is not plain.
const char* passOver(const char* at, const char* end, char behind) {
  for (; at != end && *at != behind; ++at)
    if (*at == '"' || *at == '\n' || *at == '\r') return nullptr;
  return at;
}

}  // namespace

PlainRows::PlainRows(const Table& table,
                     std::initializer_list<std::pair<int, const NumberParser*>> numberColumns)
    : delimiter_(table.delimiter()) {
  const ColumnMap& map = table.map();
  if (map.isWhole || map.code >= 0 || delimiter_ == ' ' || !delimitsNumbers(delimiter_) ||
      !table.times().mayBePlain())
    return;
  std::vector<Column> columns(table.names().size());
  columns[static_cast<std::size_t>(map.time.moment)].kind = Kind::Moment;
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
  const char* at = text.data();
  const char* const end = at + text.size();
  const std::size_t last = columns_.size() - 1;
  for (std::size_t i = 0; i < last; ++i) {
    at = takeField(i, at, end, delimiter_, times, notBefore, time);
    if (at == nullptr || at == end || *at != delimiter_) return 0;
    ++at;
  }
  at = takeField(last, at, end, '\n', times, notBefore, time);
  if (at == nullptr || at == end) return 0;
  if (*at == '\r') ++at;
  if (at == end || *at != '\n') return 0;
  return static_cast<std::size_t>(at + 1 - text.data());
}

/// Answers where the field ends; null if it is not plain.
inline const char* PlainRows::takeField(std::size_t at, const char* begin, const char* end,
                                        char behind, TimeParser& times, std::int64_t notBefore,
                                        RowTime& time) {
  const Column& column = columns_[at];
  if (column.kind == Kind::Number) {
    // Whatever stands behind a number ends it, also where the line does.
    ShortDecimal number;
    const char* const next = takeShortDecimal(begin, end, end, number);
    return column.parser.parse(number, numbers_[at]) ? next : nullptr;
  }
  if (column.kind == Kind::Moment) return times.takePlain(begin, end, behind, notBefore, time);
  return passOver(begin, end, behind);
}

}  // namespace orvane::detail
