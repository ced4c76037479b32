#pragma once

#include <string>
#include <vector>

namespace orvane {

/// How a piece of text looks. None tells anything that the text does not tell, so that all is there
/// without colours too.
enum class Tint {
  Plain,
  Faint,
  Strong,
  Good,
  Bad,
  Warning,
  Accent,
  Badge,  ///< Light and dark exchanged.
};

/// A piece of a line. Every character of it can be shown.
struct Span {
  std::wstring text;
  Tint tint = Tint::Plain;
};

/// What stands on a screen, from top to bottom: at most so many lines as it has, none wider.
using Picture = std::vector<std::vector<Span>>;

}  // namespace orvane
