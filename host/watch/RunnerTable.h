#pragma once

#include <array>
#include <string>
#include <vector>

#include "host/watch/Glance.h"
#include "host/watch/Picture.h"

namespace orvane {

/// The lines of the runners: which columns there are and how wide each is, alike for all runners,
/// so that nothing jumps while one scrolls.
class RunnerTable {
 public:
  RunnerTable(const std::vector<RunnerGlance>& runners, int columns);

  std::vector<Span> heading() const;
  std::vector<Span> line(std::size_t runner) const;

 private:
  enum Column { kName, kStatus, kCalls, kRate, kEquity, kChange, kShare, kHoldings, kNote, kCount };
  using Cells = std::array<Span, kCount>;

  static Cells cellsOf(const RunnerGlance& runner);
  int widthOf(Column column) const;
  void chooseColumns(int columns);
  std::vector<Span> laidOut(const Cells& cells) const;

  std::vector<Cells> rows_;
  std::array<int, kCount> widths_{};  ///< 0: not shown.
};

}  // namespace orvane
