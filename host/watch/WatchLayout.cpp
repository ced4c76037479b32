#include "host/watch/WatchLayout.h"

#include <fmt/core.h>

#include <QString>
#include <algorithm>
#include <cmath>
#include <utility>

#include "host/watch/RunnerTable.h"
#include "host/watch/ScreenText.h"

namespace orvane {
namespace {

constexpr int kRowsForAll = 12, kRowsForLog = 10, kRowsForHeading = 7, kRowsForKeys = 6;
constexpr std::size_t kDateEnd = 10, kMinuteEnd = 16, kYearEnd = 5;

struct KeyHelp {
  const wchar_t* keys;
  const wchar_t* text;
};
constexpr KeyHelp kHelp[] = {
    {L"q, Ctrl-C", L"stop all in order; Ctrl-C again ends at once"},
    {L"up, down", L"move through the runners by one line"},
    {L"PgUp, PgDn", L"move by as many as are seen"},
    {L"Home, End", L"go to the first, or the last"},
    {L"p", L"hold the picture, or let go; the run goes on"},
    {L"Ctrl-Z", L"suspend the command"},
    {L"?", L"this help, and back"},
};
constexpr const wchar_t* kTableHelp =
    L"CALL-BACKS are those of the strategy so far. EQUITY is the account's start and what this "
    L"runner made of it, at the last prices; CHANGE is what it made of it.";
constexpr int kKeyColumns = 12, kLeastHelpText = 16, kMostHelpColumns = 80;

int columnsOfLine(const std::vector<Span>& line) {
  int columns = 0;
  for (const Span& span : line) columns += columnsOf(span.text);
  return columns;
}

std::wstring percent(double share) { return screenText(fmt::format("{:.1f}%", share * 100)); }

/// A bar of whole and eighth blocks.
std::vector<Span> bar(double share, int columns) {
  const int eighths = static_cast<int>(std::floor(std::clamp(share, 0.0, 1.0) * columns * 8));
  std::wstring done(static_cast<std::size_t>(eighths / 8), L'\u2588');
  if (eighths % 8 != 0) done += static_cast<wchar_t>(L'\u2590' - eighths % 8);
  const std::wstring rest(static_cast<std::size_t>(columns) - done.size(), L'\u2591');
  return {{done, Tint::Accent}, {rest, Tint::Faint}};
}

double changeOf(const Glance& glance) {
  double sum = 0;
  for (const RunnerGlance& runner : glance.runners) sum += runner.equity - runner.startBalance;
  return sum;
}

Span badge(const std::string& phase) {
  return {L" " + screenText(QString::fromStdString(phase).toUpper().toStdString()) + L" ",
          Tint::Badge};
}

/// Log lines that tell of something wrong stand out; the level is one of a line's first words.
Tint tintOfLog(const std::string& line) {
  const std::string_view begin = std::string_view(line).substr(0, 60);
  if (begin.find("ERROR") != begin.npos || begin.find("FATAL") != begin.npos) return Tint::Bad;
  return begin.find("WARN") != begin.npos ? Tint::Warning : Tint::Plain;
}

}  // namespace

WatchLayout::Share WatchLayout::share(const Glance& glance) const {
  Share share;
  share.head = rows_ >= kRowsForAll ? 4 : rows_ >= kRowsForHeading ? 2 : 1;
  share.heading = rows_ >= kRowsForHeading ? 1 : 0;
  share.keys = rows_ >= kRowsForKeys ? 1 : 0;
  const int room = std::max(rows_ - share.head - share.heading - share.keys, 0);
  const int all = static_cast<int>(std::min<std::size_t>(glance.runners.size(), 10'000));
  if (rows_ >= kRowsForLog && !glance.log.empty())
    // A line above it parts it from the runners.
    share.log = std::max(room - all - 1, std::max(rows_ / 4, 3));
  share.runners = std::min(all, room - (share.log > 0 ? share.log + 1 : 0));
  share.runners = std::max(share.runners, 0);
  return share;
}

std::size_t WatchLayout::runnersSeen(const Glance& glance) const {
  const auto lines = static_cast<std::size_t>(share(glance).runners);
  return lines >= glance.runners.size() || lines == 0 ? lines : lines - 1;
}

std::size_t WatchLayout::firstSeen(const Glance& glance, const ViewChoice& choice) const {
  return std::min(choice.first, glance.runners.size() - runnersSeen(glance));
}

WatchLayout::Line WatchLayout::spread(Line left, Line right) const {
  constexpr int kLeastBlank = 2;
  int rightColumns = columnsOfLine(right);
  if (rightColumns + kLeastBlank + 8 > columns_) {
    right.clear();
    rightColumns = 0;
  }
  int room = columns_ - rightColumns - (right.empty() ? 0 : kLeastBlank);
  while (left.size() > 1 && columnsOfLine(left) > room) left.pop_back();
  Line line;
  for (Span& span : left) {
    span.text = clipped(span.text, room);
    room -= columnsOf(span.text);
    if (!span.text.empty()) line.push_back(std::move(span));
  }
  if (right.empty()) return line;
  line.push_back({std::wstring(static_cast<std::size_t>(room + kLeastBlank), L' ')});
  line.insert(line.end(), right.begin(), right.end());
  return line;
}

WatchLayout::Line WatchLayout::compactHead(const Glance& glance, const ViewChoice& choice) const {
  const std::string phase = choice.isPaused ? "paused" : glance.phase;
  const std::wstring share = percent(glance.share());
  const std::wstring time = screenText(glance.time.substr(0, kMinuteEnd));
  // The year, and the date after it, are known to the user.
  for (const std::size_t from : {std::size_t{0}, kYearEnd, kDateEnd + 1}) {
    const std::wstring text =
        share + L" " + (time.size() > from ? time.substr(from) : std::wstring());
    const int room = columns_ - columnsOf(text) - 1;
    if (room >= static_cast<int>(phase.size()))
      return {{text + L" ", Tint::Strong}, {screenText(phase), Tint::Accent}};
  }
  return {{clipped(share + L" " + screenText(phase), columns_), Tint::Strong}};
}

WatchLayout::Line WatchLayout::titleLine(const Glance& glance, const ViewChoice& choice) const {
  Line left = {badge(glance.phase)};
  if (choice.isPaused) {
    left.push_back({L" "});
    left.push_back({L" PICTURE PAUSED ", Tint::Badge});
  }
  left.push_back({L"  " + screenText(glance.title), Tint::Strong});
  std::wstring times = duration(glance.elapsedSeconds) + L" elapsed";
  if (glance.leftSeconds >= 0) times += L", about " + duration(glance.leftSeconds) + L" left";
  return spread(std::move(left), {{times, Tint::Faint}});
}

WatchLayout::Line WatchLayout::progressLine(const Glance& glance) const {
  constexpr int kLeastBar = 5, kMostBar = 60;
  Line after = {{L" " + percent(glance.share()), Tint::Strong},
                {L"  " + screenText(glance.time), Tint::Plain},
                {L" " + screenText(glance.timeZone), Tint::Faint}};
  while (after.size() > 1 && columnsOfLine(after) + kLeastBar > columns_) after.pop_back();
  const int room = std::min(columns_ - columnsOfLine(after), kMostBar);
  Line line = room >= kLeastBar ? bar(glance.share(), room) : Line();
  line.insert(line.end(), after.begin(), after.end());
  return spread(std::move(line), {});
}

WatchLayout::Line WatchLayout::figuresLine(const Glance& glance) const {
  std::uint64_t calls = 0;
  double callsPerSecond = 0;
  for (const RunnerGlance& runner : glance.runners) {
    calls += runner.calls;
    callsPerSecond += runner.callsPerSecond;
  }
  const double change = changeOf(glance);
  Line left = {{grouped(glance.delivered) + L" of " + grouped(glance.total) + L" records"},
               {L"  " + shortRate(glance.recordsPerSecond) + L"/s", Tint::Faint},
               {L"   " + grouped(calls) + L" call-backs"},
               {L"  " + shortRate(callsPerSecond) + L"/s", Tint::Faint}};
  Line right = {{L"in all ", Tint::Faint},
                {money(change, true), change > 0   ? Tint::Good
                                      : change < 0 ? Tint::Bad
                                                   : Tint::Plain}};
  return spread(std::move(left), std::move(right));
}

void WatchLayout::addHead(const Glance& glance, const ViewChoice& choice, int lines,
                          Picture& picture) const {
  if (lines == 1) {
    picture.push_back(compactHead(glance, choice));
    return;
  }
  picture.push_back(titleLine(glance, choice));
  picture.push_back(progressLine(glance));
  if (lines == 2) return;
  picture.push_back(figuresLine(glance));
  picture.emplace_back();
}

void WatchLayout::addRunners(const Glance& glance, const ViewChoice& choice, const Share& share,
                             Picture& picture) const {
  const RunnerTable table(glance.runners, columns_);
  if (share.heading > 0) picture.push_back(table.heading());
  const std::size_t first = firstSeen(glance, choice), seen = runnersSeen(glance);
  for (std::size_t i = first; i < first + seen; ++i) picture.push_back(table.line(i));
  if (seen >= static_cast<std::size_t>(share.runners)) return;
  const std::size_t after = glance.runners.size() - first - seen;
  const std::string text = first == 0   ? fmt::format("and {} more", after)
                           : after == 0 ? fmt::format("{} above", first)
                                        : fmt::format("{} above, {} more", first, after);
  picture.push_back({{clipped(screenText(text), columns_), Tint::Faint}});
}

void WatchLayout::addLog(const Glance& glance, int lines, Picture& picture) const {
  std::wstring rule = L"\u2500\u2500 last lines ";
  const int more = columns_ - columnsOf(rule);
  if (more > 0) rule += std::wstring(static_cast<std::size_t>(more), L'\u2500');
  picture.push_back({{clipped(rule, columns_), Tint::Faint}});
  const std::size_t count = std::min(glance.log.size(), static_cast<std::size_t>(lines));
  for (std::size_t i = glance.log.size() - count; i < glance.log.size(); ++i)
    picture.push_back({{clipped(screenText(glance.log[i]), columns_), tintOfLog(glance.log[i])}});
}

Picture WatchLayout::help() const {
  const int columns = std::min(columns_, kMostHelpColumns);
  const bool isNarrow = columns < kKeyColumns + kLeastHelpText;
  Picture picture;
  for (const auto& [keys, text] : kHelp) {
    // Where there is no room beside the keys, what they do stands below them.
    const int indent = isNarrow ? std::min(2, columns - 1) : kKeyColumns;
    std::wstring before = isNarrow ? std::wstring() : padded(keys, indent);
    if (isNarrow) picture.push_back({{clipped(keys, columns), Tint::Strong}});
    for (std::wstring& line : wrapped(text, columns - indent)) {
      if (before.empty()) before = std::wstring(static_cast<std::size_t>(indent), L' ');
      picture.push_back({{std::exchange(before, L""), Tint::Strong}, {std::move(line)}});
    }
  }
  picture.emplace_back();
  for (std::wstring& line : wrapped(kTableHelp, columns)) picture.push_back({{std::move(line)}});
  return picture;
}

WatchLayout::Line WatchLayout::keyLine() const {
  for (const wchar_t* keys : {L"q stop   p pause   \u2191\u2193 PgUp PgDn scroll   ? help",
                              L"q stop  p pause  \u2191\u2193 scroll  ? help"})
    if (columnsOf(keys) <= columns_) return {{keys, Tint::Faint}};
  return {{clipped(L"q stop  ? help", columns_), Tint::Faint}};
}

Picture WatchLayout::picture(const Glance& glance, const ViewChoice& choice) const {
  const Share parts = share(glance);
  Picture picture;
  const auto keysAt = static_cast<std::size_t>(rows_ - parts.keys);
  if (choice.showsHelp) {
    const Picture lines = help();
    const bool isLow = lines.size() + static_cast<std::size_t>(parts.head) > keysAt;
    addHead(glance, choice, isLow ? 1 : parts.head, picture);
    const std::size_t room = std::min(lines.size(), keysAt - std::min(picture.size(), keysAt));
    picture.insert(picture.end(), lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(room));
  } else {
    addHead(glance, choice, parts.head, picture);
    addRunners(glance, choice, parts, picture);
    if (parts.log > 0) addLog(glance, parts.log, picture);
  }
  if (parts.keys == 0) return picture;
  picture.resize(keysAt);
  picture.push_back(keyLine());
  return picture;
}

}  // namespace orvane
