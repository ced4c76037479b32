#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// Text in the columns of a terminal. Every function gives and takes text of which each character
/// can be shown: `screenText` makes it so.

/// The characters of a UTF-8 text. A tab becomes a blank, whatever else cannot be shown U+FFFD, so
/// that no text can move the cursor.
std::wstring screenText(std::string_view utf8);

/// How many columns a text takes: two for a Chinese character.
int columnsOf(std::wstring_view text);

/// The text, or as much of it as fits with an ellipsis at its end.
std::wstring clipped(std::wstring_view text, int columns);

/// The text in lines of at most so many columns, broken at blanks; a longer word is clipped.
std::vector<std::wstring> wrapped(std::wstring_view text, int columns);

/// The text in exactly so many columns: clipped, or with blanks after it or, if it is to stand on
/// the right, before it.
std::wstring padded(std::wstring_view text, int columns, bool isRight = false);

/// A count with a comma between its thousands.
std::wstring grouped(std::uint64_t count);

/// An amount with two decimals and commas; with "+" before one above 0 if `isChange`.
std::wstring money(double amount, bool isChange = false);

/// A change in as few characters as tell it: "+950", "-12.3k", "+4.56M".
std::wstring shortChange(double amount);

/// A rate in as few characters as tell it: "950", "12.3k", "4.56M".
std::wstring shortRate(double perSecond);

/// A duration as "0:07", "12:34" or "1:02:03".
std::wstring duration(double seconds);

}  // namespace orvane
