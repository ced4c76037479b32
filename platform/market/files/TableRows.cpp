#include "platform/market/files/TableRows.h"

#include "platform/market/files/DataFiles.h"
#include "platform/market/files/Table.h"

namespace orvane::detail {
namespace {

/// A field as a message shows it.
std::string shown(std::string_view text) {
  std::string out = "\"" + std::string(text.substr(0, 60));
  return out + (text.size() > 60 ? "...\"" : "\"");
}

}  // namespace

TableRows::TableRows(const Table& table, std::string_view text, std::size_t linesBefore)
    : table_(table),
      rows_(table.path(), text, table.delimiter(), linesBefore),
      times_(table.times()) {}

std::string TableRows::place() const { return table_.path() + ":" + std::to_string(line()); }

bool TableRows::next() {
  if (!rows_.next()) return false;
  const auto& fields = rows_.fields();
  const std::size_t width = table_.names().size();
  if (fields.size() == width) return true;
  if (fields.size() < width)
    throw DataFileError(place() + ": " + std::to_string(fields.size()) + " fields, but " +
                        std::to_string(width) + " are needed; column \"" +
                        table_.names()[fields.size()] + "\" is missing");
  // A delimiter at the end of the line.
  if (fields.size() == width + 1 && fields.back().text.empty()) return true;
  throw DataFileError(place() + ": " + std::to_string(fields.size()) + " fields, but there are " +
                      std::to_string(width) + " columns; " + shown(fields[width].text) +
                      " is too much");
}

RowTime TableRows::time(std::int64_t notBefore) {
  RowTime out;
  if (!times_.parse(rows_.fields(), notBefore, out)) fail(times_.errorColumn(), times_.errorText());
  return out;
}

double TableRows::numberOfText(const NumberParser& parser, int column) const {
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

void TableRows::checkOwnWords() const {
  const ColumnMap& map = table_.map();
  if (!map.isWhole) return;
  const OwnWords& own = table_.ownWords();
  if (field(map.timeZone) != own.timeZone)
    fail(map.timeZone, "is another zone than " + shown(own.timeZone) + " of the first row");
  if (map.period >= 0 && field(map.period) != own.period)
    fail(map.period, "is another period than " + shown(own.period) + " of the first row");
}

std::string TableRows::code() const {
  const ColumnMap& map = table_.map();
  if (map.code < 0) return {};
  std::string code(field(map.code));
  if (code.empty()) fail(map.code, "is empty");
  if (code.size() > 100) fail(map.code, "is too long for a code");
  if (map.market >= 0 && code.find('.') == std::string::npos && !field(map.market).empty())
    code += "." + std::string(field(map.market));
  return code;
}

void TableRows::fail(int column, const std::string& what) const {
  std::string text = place();
  if (column >= 0) {
    text += ": column \"" + table_.names()[static_cast<std::size_t>(column)] + "\"";
    const std::string_view value = field(column);
    text += value.empty() ? " " : ": " + shown(value) + " ";
  } else {
    text += ": ";
  }
  throw DataFileError(text + what);
}

}  // namespace orvane::detail
