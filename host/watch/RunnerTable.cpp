#include "host/watch/RunnerTable.h"

#include <fmt/core.h>

#include <algorithm>

#include "host/watch/ScreenText.h"

namespace orvane {
namespace {

constexpr int kGap = 2;
constexpr int kLeastName = 8;
constexpr int kMostHoldings = 36;
constexpr int kLeastNote = 12;

std::wstring volumeText(double volume) {
  return screenText(fmt::format("{}{}", volume > 0 ? "+" : "", volume));
}

Tint tintOf(double change) {
  return change > 0 ? Tint::Good : change < 0 ? Tint::Bad : Tint::Plain;
}

}  // namespace

RunnerTable::Cells RunnerTable::cellsOf(const RunnerGlance& runner) {
  Cells cells;
  cells[kName] = {screenText(runner.name), Tint::Strong};
  const bool isRunning = runner.status == "Running";
  cells[kStatus] = {screenText(runner.status), runner.isError             ? Tint::Bad
                                               : !runner.callback.empty() ? Tint::Warning
                                               : isRunning                ? Tint::Accent
                                                                          : Tint::Faint};
  cells[kCalls] = {grouped(runner.calls)};
  cells[kRate] = {shortRate(runner.callsPerSecond), Tint::Faint};
  cells[kEquity] = {money(runner.equity)};
  const double change = runner.equity - runner.startBalance;
  cells[kChange] = {money(change, true), tintOf(change)};
  if (runner.startBalance != 0) {
    const double percent = change / runner.startBalance * 100;
    cells[kShare] = {screenText(fmt::format("{:+.2f}%", percent)), tintOf(change)};
  }
  std::wstring& holdings = cells[kHoldings].text;
  for (const HoldingGlance& holding : runner.holdings)
    holdings += (holdings.empty() ? L"" : L", ") + screenText(holding.code) + L" " +
                volumeText(holding.volume);
  if (holdings.empty()) cells[kHoldings] = {L"-", Tint::Faint};
  if (!runner.message.empty())
    cells[kNote] = {screenText(runner.message), runner.isError ? Tint::Bad : Tint::Faint};
  else if (!runner.callback.empty())
    cells[kNote] = {L"in " + screenText(runner.callback), Tint::Warning};
  return cells;
}

namespace {

constexpr const wchar_t* kHeadings[] = {L"RUNNER", L"STATUS", L"CALL-BACKS", L"PER S", L"EQUITY",
                                        L"CHANGE", L"%",      L"POSITION",   L""};

bool isRight(int column) { return column >= 2 && column <= 6; }

}  // namespace

RunnerTable::RunnerTable(const std::vector<RunnerGlance>& runners, int columns) {
  rows_.reserve(runners.size());
  for (const RunnerGlance& runner : runners) rows_.push_back(cellsOf(runner));
  if (widthOf(kChange) + kGap + std::min(widthOf(kName), kLeastName) > columns)
    for (std::size_t i = 0; i < rows_.size(); ++i)
      rows_[i][kChange].text = shortChange(runners[i].equity - runners[i].startBalance);
  chooseColumns(columns);
}

int RunnerTable::widthOf(Column column) const {
  int width = columnsOf(kHeadings[column]);
  for (const Cells& cells : rows_) width = std::max(width, columnsOf(cells[column].text));
  return width;
}

void RunnerTable::chooseColumns(int columns) {
  std::array<int, kCount> wanted{};
  for (int column = 0; column < kCount; ++column)
    wanted[column] = widthOf(static_cast<Column>(column));
  wanted[kHoldings] = std::min(wanted[kHoldings], kMostHoldings);
  int left = columns;
  widths_[kName] = std::min({wanted[kName], kLeastName, left});
  left -= widths_[kName];
  // The most important first; what has no room is left out, and what is narrower may still have it.
  for (const Column column : {kChange, kStatus, kEquity, kHoldings, kCalls, kShare, kRate}) {
    if (wanted[column] + kGap > left) continue;
    widths_[column] = wanted[column];
    left -= wanted[column] + kGap;
  }
  const int more = std::clamp(wanted[kName] - widths_[kName], 0, left);
  widths_[kName] += more;
  left -= more + kGap;
  if (wanted[kNote] > 0 && left >= kLeastNote) widths_[kNote] = std::min(wanted[kNote], left);
}

std::vector<Span> RunnerTable::laidOut(const Cells& cells) const {
  std::vector<Span> line;
  for (int column = 0; column < kCount; ++column) {
    if (widths_[column] == 0) continue;
    if (!line.empty()) line.push_back({std::wstring(kGap, L' ')});
    line.push_back(
        {padded(cells[column].text, widths_[column], isRight(column)), cells[column].tint});
  }
  return line;
}

std::vector<Span> RunnerTable::heading() const {
  Cells cells;
  for (int column = 0; column < kCount; ++column) cells[column] = {kHeadings[column], Tint::Faint};
  return laidOut(cells);
}

std::vector<Span> RunnerTable::line(std::size_t runner) const { return laidOut(rows_[runner]); }

}  // namespace orvane
