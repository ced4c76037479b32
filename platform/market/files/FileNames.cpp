#include "platform/market/files/FileNames.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "platform/market/files/DataFiles.h"
#include "platform/market/files/Description.h"

namespace orvane::detail {
namespace {

constexpr std::string_view kSeparators = "_- .@";

std::string lowered(std::string_view text) {
  std::string small(text);
  for (char& c : small)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  return small;
}

std::string_view lastPart(std::string_view path) {
  const std::size_t slash = path.find_last_of('/');
  return slash == path.npos ? path : path.substr(slash + 1);
}

std::string_view stemOf(std::string_view name) {
  static constexpr std::string_view kEndings[] = {".gz",  ".csv", ".txt", ".tsv",
                                                  ".dat", ".log", ".prn"};
  for (bool again = true; again;) {
    again = false;
    const std::string small = lowered(name);
    for (const std::string_view ending : kEndings) {
      if (!small.ends_with(ending) || small.size() == ending.size()) continue;
      name.remove_suffix(ending.size());
      again = true;
      break;
    }
  }
  return name;
}

bool isDigits(std::string_view text, std::size_t count) {
  return text.size() == count && text.find_first_not_of("0123456789") == text.npos;
}

/// A run of exactly eight digits in a word, which is a date.
std::optional<std::int64_t> dayIn(std::string_view word) {
  std::size_t at = 0;
  while (at < word.size()) {
    const std::size_t begin = word.find_first_of("0123456789", at);
    if (begin == word.npos) return std::nullopt;
    const std::size_t end = std::min(word.find_first_not_of("0123456789", begin), word.size());
    std::int64_t value = 0;
    std::int64_t day = 0;
    if (end - begin == 8 && wholeNumber(word.substr(begin, 8), value) && dayOfNumber(value, day))
      return day;
    at = end;
  }
  return std::nullopt;
}

bool isKindWord(const std::string& word) {
  static constexpr std::string_view kWords[] = {
      "tick",   "ticks", "trade",  "trades",    "quote",     "quotes", "bar",
      "bars",   "kline", "klines", "candle",    "candles",   "ohlc",   "ohlcv",
      "bidask", "bbo",   "depth",  "aggtrades", "bookticker"};
  return std::find(std::begin(kWords), std::end(kWords), word) != std::end(kWords);
}

/// Hints are whole words; a single letter, or a letter before its count ("m5"), may as well be a
/// part of a code and counts only behind another word.
std::int64_t periodOf(const std::string& word, bool isFirst) {
  const bool bare = word.size() == 1;
  const bool letterFirst = word.size() > 1 && word.find_first_of("0123456789") == 1;
  if (isFirst && (bare || letterFirst)) return 0;
  if (bare && word != "d" && word != "w") return 0;
  if (word == "ms" || word == "s" || word == "t") return 0;
  return parsePeriod(word);
}

struct NameWord {
  std::string_view text;
  std::size_t begin;
};

std::vector<NameWord> wordsOf(std::string_view stem) {
  std::vector<NameWord> words;
  std::size_t at = 0;
  while (at < stem.size()) {
    const std::size_t begin = stem.find_first_not_of(kSeparators, at);
    if (begin == stem.npos) break;
    const std::size_t end = std::min(stem.find_first_of(kSeparators, begin), stem.size());
    words.push_back({stem.substr(begin, end - begin), begin});
    at = end;
  }
  return words;
}

bool isYear(std::string_view word) {
  return isDigits(word, 4) && (word.starts_with("19") || word.starts_with("20"));
}

std::string upper(std::string_view text) {
  std::string big(text);
  for (char& c : big)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
  return big;
}

std::string folderOf(std::string_view path) {
  const std::size_t slash = path.find_last_of('/');
  if (slash == path.npos) return {};
  const std::string_view folder = lastPart(path.substr(0, slash));
  return folder == "." || folder == ".." ? std::string() : std::string(folder);
}

}  // namespace

FileNameFacts factsOfFileName(const std::string& path) {
  FileNameFacts facts;
  const std::string_view stem = stemOf(lastPart(path));
  const std::vector<NameWord> words = wordsOf(stem);
  std::size_t codeEnd = stem.size();
  std::size_t codeWords = words.size();
  const auto endCodeAt = [&](std::size_t index) {
    if (codeWords <= index) return;
    codeWords = index;
    codeEnd = words[index].begin;
  };
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string word = lowered(words[i].text);
    if (const auto day = dayIn(word)) {
      if (!facts.day) facts.day = day;
      endCodeAt(i);
    } else if (isYear(word) && i + 2 < words.size() && isDigits(words[i + 1].text, 2) &&
               isDigits(words[i + 2].text, 2)) {
      const auto spelled =
          dayIn(word + std::string(words[i + 1].text) + std::string(words[i + 2].text));
      if (!spelled) continue;
      if (!facts.day) facts.day = spelled;
      endCodeAt(i);
    } else if (const std::int64_t period = periodOf(word, i == 0); period != 0) {
      if (facts.periodMs == 0) facts.periodMs = period;
      endCodeAt(i);
    } else if (isKindWord(word)) {
      endCodeAt(i);
    }
  }
  while (codeWords > 1 && isYear(words[codeWords - 1].text)) endCodeAt(codeWords - 1);
  std::string_view code = stem.substr(0, codeEnd);
  while (!code.empty() && kSeparators.find(code.back()) != code.npos) code.remove_suffix(1);
  while (!code.empty() && kSeparators.find(code.front()) != code.npos) code.remove_prefix(1);
  facts.code = upper(code);
  if (facts.code.empty()) facts.code = upper(folderOf(path));
  if (facts.code.empty()) facts.code = upper(stem);
  if (facts.code.empty()) facts.code = "UNNAMED";
  return facts;
}

}  // namespace orvane::detail

namespace orvane {

std::string codeFromFileName(const std::string& path) { return detail::factsOfFileName(path).code; }

}  // namespace orvane
