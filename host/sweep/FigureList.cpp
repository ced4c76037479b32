#include "host/sweep/FigureList.h"

#include <fmt/format.h>

#include "host/InputError.h"
#include "shared/NearText.h"

namespace orvane {
namespace {

using Value = std::optional<double>;

Value whole(std::size_t count) { return static_cast<double>(count); }

}  // namespace

const std::array<FigureColumn, kFigureColumns>& figureColumns() {
  static constexpr std::array<FigureColumn, kFigureColumns> kColumns = {{
      {"profit", "Profit", false, false, [](const Figures& f) -> Value { return f.profit; }},
      {"return", "Return", false, true, [](const Figures& f) -> Value { return f.totalReturn; }},
      {"annualReturn", "Annual return", false, true,
       [](const Figures& f) -> Value { return f.annualReturn; }},
      {"annualVolatility", "Annual volatility", true, true,
       [](const Figures& f) -> Value { return f.annualVolatility; }},
      {"sharpe", "Sharpe", false, false, [](const Figures& f) -> Value { return f.sharpe; }},
      {"sortino", "Sortino", false, false, [](const Figures& f) -> Value { return f.sortino; }},
      {"maxDrawdown.amount", "Max drawdown (amount)", true, false,
       [](const Figures& f) -> Value { return f.drawdown.amount; }},
      {"maxDrawdown.share", "Max drawdown", true, true,
       [](const Figures& f) -> Value { return f.drawdown.share; }},
      {"fills", "Fills", false, false, [](const Figures& f) -> Value { return whole(f.fills); }},
      {"closings", "Closings", false, false,
       [](const Figures& f) -> Value { return whole(f.closings); }},
      {"winRate", "Win rate", false, true, [](const Figures& f) -> Value { return f.winRate; }},
      {"profitFactor", "Profit factor", false, false,
       [](const Figures& f) -> Value { return f.profitFactor; }},
      {"meanWin", "Mean win", false, false, [](const Figures& f) -> Value { return f.meanWin; }},
      {"meanLoss", "Mean loss", false, false, [](const Figures& f) -> Value { return f.meanLoss; }},
      {"turnover", "Turnover", false, false, [](const Figures& f) -> Value { return f.turnover; }},
      {"fees", "Fees", true, false, [](const Figures& f) -> Value { return f.fees; }},
      {"exposure", "Exposure", true, true, [](const Figures& f) -> Value { return f.exposure; }},
      {"startBalance", "Start balance", false, false,
       [](const Figures& f) -> Value { return f.startBalance; }},
      {"finalEquity", "Final equity", false, false,
       [](const Figures& f) -> Value { return f.finalEquity; }},
  }};
  return kColumns;
}

FigureValues figureValues(const Figures& figures) {
  FigureValues values;
  for (std::size_t i = 0; i < kFigureColumns; ++i) values[i] = figureColumns()[i].of(figures);
  return values;
}

std::vector<std::string> figureNames() {
  std::vector<std::string> names;
  for (const FigureColumn& column : figureColumns()) names.emplace_back(column.name);
  return names;
}

std::size_t figureNamed(const std::string& name, const std::string& option) {
  for (std::size_t i = 0; i < kFigureColumns; ++i)
    if (name == figureColumns()[i].name) return i;
  const std::vector<std::string> names = figureNames();
  const std::string* const meant = textMeant(names, name);
  throw InputError(fmt::format("{}: \"{}\" is not a figure; {}there are {}", option, name,
                               meant == nullptr ? "" : fmt::format("is \"{}\" meant? ", *meant),
                               fmt::join(names, ", ")));
}

bool ranksBefore(std::size_t figure, const std::optional<double>& one,
                 const std::optional<double>& other) {
  if (!one || !other) return one.has_value() && !other.has_value();
  return figureColumns()[figure].isBestLow ? *one < *other : *one > *other;
}

}  // namespace orvane
