#include "host/watch/ScreenText.h"

#include <fmt/core.h>
#include <wchar.h>

#include <QString>
#include <algorithm>
#include <cmath>

#include "host/watch/FixedLocale.h"

namespace orvane {
namespace {

constexpr wchar_t kUnknown = L'\uFFFD';
constexpr wchar_t kEllipsis = L'\u2026';

bool isPlain(wchar_t character) { return character >= L' ' && character < 0x7F; }

/// What the system says, or 1 where it knows nothing of it.
int widthOf(wchar_t character) { return isPlain(character) ? 1 : std::max(wcwidth(character), 0); }

std::wstring wide(const std::string& text) { return {text.begin(), text.end()}; }

std::string withCommas(std::string digits) {
  for (std::size_t at = digits.size(); at > 3;) digits.insert(at -= 3, 1, ',');
  return digits;
}

}  // namespace

std::wstring screenText(std::string_view utf8) {
  const FixedLocale locale;
  std::wstring text =
      QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size())).toStdWString();
  for (wchar_t& character : text) {
    if (character == L'\t') character = L' ';
    if (!isPlain(character) && wcwidth(character) < 0) character = kUnknown;
  }
  return text;
}

int columnsOf(std::wstring_view text) {
  const FixedLocale locale;
  int columns = 0;
  for (const wchar_t character : text) columns += widthOf(character);
  return columns;
}

std::wstring clipped(std::wstring_view text, int columns) {
  if (columns <= 0) return {};
  if (columnsOf(text) <= columns) return std::wstring(text);
  const FixedLocale locale;
  int taken = 0;
  std::size_t count = 0;
  while (taken + widthOf(text[count]) < columns) taken += widthOf(text[count++]);
  return std::wstring(text.substr(0, count)) + kEllipsis;
}

std::vector<std::wstring> wrapped(std::wstring_view text, int columns) {
  std::vector<std::wstring> lines;
  while (!text.empty()) {
    const std::wstring_view word = text.substr(0, text.find(L' '));
    text.remove_prefix(std::min(word.size() + 1, text.size()));
    if (word.empty()) continue;
    if (!lines.empty() && columnsOf(lines.back()) + 1 + columnsOf(word) <= columns)
      lines.back().append(L" ").append(word);
    else
      lines.push_back(clipped(word, columns));
  }
  return lines;
}

std::wstring padded(std::wstring_view text, int columns, bool isRight) {
  std::wstring result = clipped(text, columns);
  const std::wstring blanks(static_cast<std::size_t>(std::max(columns - columnsOf(result), 0)),
                            L' ');
  return isRight ? blanks + result : result + blanks;
}

std::wstring grouped(std::uint64_t count) { return wide(withCommas(std::to_string(count))); }

std::wstring money(double amount, bool isChange) {
  const std::string digits = fmt::format("{:.2f}", std::abs(amount));
  const std::size_t point = digits.find('.');
  if (point == std::string::npos) return wide(digits);
  const bool isZero = digits.find_first_not_of("0.") == std::string::npos;
  const char* sign = isZero ? "" : amount < 0 ? "-" : isChange ? "+" : "";
  return wide(sign + withCommas(digits.substr(0, point)) + digits.substr(point));
}

std::wstring shortRate(double perSecond) {
  struct Scale {
    double unit;
    const char* name;
  };
  for (const Scale scale : {Scale{1e9, "G"}, Scale{1e6, "M"}, Scale{1e3, "k"}}) {
    if (perSecond < scale.unit * 0.9995) continue;
    const double value = perSecond / scale.unit;
    const int decimals = value < 9.995 ? 2 : value < 99.95 ? 1 : 0;
    return wide(fmt::format("{:.{}f}{}", value, decimals, scale.name));
  }
  return wide(fmt::format("{:.0f}", perSecond));
}

std::wstring shortChange(double amount) {
  const std::wstring size = shortRate(std::abs(amount));
  return size == L"0" ? size : (amount < 0 ? L"-" : L"+") + size;
}

std::wstring duration(double seconds) {
  const auto whole = static_cast<std::uint64_t>(std::max(seconds, 0.0));
  const std::uint64_t hours = whole / 3600, minutes = whole / 60 % 60;
  return wide(hours == 0 ? fmt::format("{}:{:02}", minutes, whole % 60)
                         : fmt::format("{}:{:02}:{:02}", hours, minutes, whole % 60));
}

}  // namespace orvane
