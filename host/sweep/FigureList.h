#pragma once

#include <array>
#include <optional>
#include <string>

#include "host/Figures.h"

namespace orvane {

/// One of the figures that a sweep's tables have.
struct FigureColumn {
  const char* name;   ///< As in a report's `figures`.
  const char* title;  ///< For people.
  bool isBestLow;     ///< Whether a small one is better than a large one.
  bool isShare;       ///< Shown in percent.
  std::optional<double> (*of)(const Figures&);
};

inline constexpr std::size_t kFigureColumns = 19;
using FigureValues = std::array<std::optional<double>, kFigureColumns>;

/// All of them, in the order of the tables.
const std::array<FigureColumn, kFigureColumns>& figureColumns();

FigureValues figureValues(const Figures& figures);

/// The names of all figures, in their order.
std::vector<std::string> figureNames();

/// The place of a figure in the list. Throws `InputError`, which begins with `option` and lists
/// all names, if there is none of that name.
std::size_t figureNamed(const std::string& name, const std::string& option);

/// Whether one figure ranks before another. One that is not there ranks after all that are.
bool ranksBefore(std::size_t figure, const std::optional<double>& one,
                 const std::optional<double>& other);

}  // namespace orvane
