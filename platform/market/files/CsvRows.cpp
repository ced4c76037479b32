#include "platform/market/files/CsvRows.h"

#include <algorithm>
#include <cstring>

#include "platform/market/files/DataFiles.h"
#include "platform/market/files/ShortDecimal.h"

namespace orvane::detail {
namespace {

bool isBlank(char c) { return c == ' ' || c == '\t'; }

std::vector<std::string_view> firstLines(std::string_view text, std::size_t most) {
  std::vector<std::string_view> lines;
  while (!text.empty() && lines.size() < most) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    const std::string_view content = trimmed(line);
    if (!content.empty() && content.front() != '#') lines.push_back(line);
  }
  return lines;
}

std::size_t countOutsideQuotes(std::string_view line, char wanted) {
  std::size_t count = 0;
  bool quoted = false;
  for (const char c : line) {
    if (c == '"') quoted = !quoted;
    if (c == wanted && !quoted) ++count;
  }
  return count;
}

}  // namespace

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && (isBlank(text.back()) || text.back() == '\r')) text.remove_suffix(1);
  return text;
}

char detectDelimiter(std::string_view text) {
  const std::vector<std::string_view> lines = firstLines(text, 20);
  char best = 0;
  std::size_t bestScore = 0;
  for (const char candidate : {'\t', ';', '|', ','}) {
    std::size_t least = static_cast<std::size_t>(-1);
    std::size_t most = 0;
    for (const std::string_view line : lines) {
      const std::size_t count = countOutsideQuotes(line, candidate);
      least = std::min(least, count);
      most = std::max(most, count);
    }
    if (lines.empty() || most == 0) continue;
    // A delimiter stands in every line, and as often in each; one that does not is a last resort.
    const std::size_t score = least == 0 ? 1 : (least == most ? 1000 + least : 100 + least);
    if (score > bestScore) {
      bestScore = score;
      best = candidate;
    }
  }
  if (best != 0) return best;
  const bool blanks = !lines.empty() && std::all_of(lines.begin(), lines.end(), [](auto line) {
    return trimmed(line).find(' ') != std::string_view::npos;
  });
  return blanks ? ' ' : ',';
}

CsvRows::CsvRows(const std::string& file, std::string_view text, char delimiter,
                 std::size_t linesBefore)
    : file_(file),
      text_(text),
      delimiter_(delimiter),
      delimitsNumbers_(std::string_view("0123456789.-").find(delimiter) == std::string_view::npos),
      line_(linesBefore) {}

bool CsvRows::takeLine(std::string_view& line) {
  if (offset_ >= text_.size()) return false;
  const char* begin = text_.data() + offset_;
  const std::size_t left = text_.size() - offset_;
  const auto* end = static_cast<const char*>(std::memchr(begin, '\n', left));
  const std::size_t length = end ? static_cast<std::size_t>(end - begin) : left;
  line = {begin, length};
  offset_ += end ? length + 1 : length;
  ++line_;
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return true;
}

void CsvRows::skipLines(int count) {
  std::string_view line;
  while (count-- > 0 && takeLine(line)) continue;
}

bool CsvRows::next() {
  comment_ = {};
  std::string_view line;
  while (takeLine(line)) {
    std::size_t at = 0;
    while (at < line.size() && isBlank(line[at])) ++at;
    if (at == line.size()) continue;
    if (line[at] == '#') {
      comment_ = trimmed(line.substr(at + 1));
      continue;
    }
    split(line);
    return true;
  }
  return false;
}

void CsvRows::split(std::string_view line) {
  count_ = 0;
  if (!unquoted_.empty()) unquoted_.clear();
  if (delimiter_ == ' ') return splitBlanks(line);
  const char* at = line.data();
  const char* const end = at + line.size();
  for (;;) {
    if (delimitsNumbers_) {
      at = takeNumbers(at, end);
      if (at == nullptr) return;
    }
    while (at != end && isBlank(*at) && *at != delimiter_) ++at;
    if (at != end && *at == '"') {
      at = line.data() + takeQuoted(line, static_cast<std::size_t>(at - line.data()));
    } else {
      const auto left = static_cast<std::size_t>(end - at);
      const void* const found = left == 0 ? nullptr : std::memchr(at, delimiter_, left);
      const char* const next = found == nullptr ? end : static_cast<const char*>(found);
      const char* behind = next;
      while (behind != at && isBlank(behind[-1])) --behind;
      add({at, behind});
      at = next;
    }
    if (at == end) return;
    ++at;  // The delimiter.
  }
}

/// Adds fields as long as they are short numbers. Answers where the first that is none begins; null
/// if the line is over.
const char* CsvRows::takeNumbers(const char* at, const char* const end) {
  // What ends a line ends a number, so that what stands behind it may be looked at.
  const char* const readable = text_.data() + text_.size();
  const char delimiter = delimiter_;
  for (std::size_t count = count_;; ++count) {
    const std::uint64_t column = count < 64 ? std::uint64_t{1} << count : 0;
    if ((hasTexts_ & column) != 0) return at;
    if (count == slots_.size()) slots_.emplace_back();
    CsvField& field = slots_[count];
    const char* const behind = takeShortDecimal(at, end, readable, field.number);
    if (field.number.digits == 0) return at;
    const bool isLast = behind == end;
    if (!isLast && *behind != delimiter) {
      hasTexts_ |= column;
      return at;
    }
    field.text = {at, behind};
    count_ = count + 1;
    if (isLast) return nullptr;
    at = behind + 1;
  }
}

void CsvRows::splitBlanks(std::string_view line) {
  std::size_t at = 0;
  for (;;) {
    while (at < line.size() && isBlank(line[at])) ++at;
    if (at >= line.size()) return;
    if (line[at] == '"') {
      at = takeQuoted(line, at);
      continue;
    }
    const std::size_t begin = at;
    while (at < line.size() && !isBlank(line[at])) ++at;
    add(line.substr(begin, at - begin));
  }
}

std::size_t CsvRows::takeQuoted(std::string_view line, std::size_t at) {
  const std::size_t begin = ++at;
  std::string* copy = nullptr;
  std::size_t copied = begin;
  for (;;) {
    at = line.find('"', at);
    if (at == line.npos)
      throw DataFileError(file_ + ":" + std::to_string(line_) + ": a quote is not closed");
    if (at + 1 >= line.size() || line[at + 1] != '"') break;
    if (!copy) copy = &unquoted_.emplace_back();
    copy->append(line.substr(copied, at + 1 - copied));
    at += 2;
    copied = at;
  }
  if (copy) copy->append(line.substr(copied, at - copied));
  add(trimmed(copy ? std::string_view(*copy) : line.substr(begin, at - begin)));
  ++at;
  while (at < line.size() && isBlank(line[at]) && line[at] != delimiter_) ++at;
  if (at < line.size() && line[at] != delimiter_)
    throw DataFileError(file_ + ":" + std::to_string(line_) + ": text after a closing quote");
  return at;
}

}  // namespace orvane::detail
