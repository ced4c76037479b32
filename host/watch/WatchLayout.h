#pragma once

#include <cstddef>

#include "host/watch/Glance.h"
#include "host/watch/Picture.h"

namespace orvane {

/// What stands where on a screen of one size. Needs no terminal: from the same glance comes the
/// same picture. What does not fit is left out, the least important first; lines of runners that do
/// not fit are counted in the last one.
class WatchLayout {
 public:
  /// Both at least 1.
  WatchLayout(int columns, int rows) : columns_(columns), rows_(rows) {}

  Picture picture(const Glance& glance, const ViewChoice& choice) const;

  /// How many runners are seen at once.
  std::size_t runnersSeen(const Glance& glance) const;
  /// The runner that comes first, once it is no later than where the last one is seen.
  std::size_t firstSeen(const Glance& glance, const ViewChoice& choice) const;

 private:
  using Line = std::vector<Span>;
  /// How many lines there are of each kind.
  struct Share {
    int head = 1, heading = 0, runners = 0, log = 0, keys = 0;
  };

  Share share(const Glance& glance) const;
  Line spread(Line left, Line right) const;
  Line compactHead(const Glance& glance, const ViewChoice& choice) const;
  Line titleLine(const Glance& glance, const ViewChoice& choice) const;
  Line progressLine(const Glance& glance) const;
  Line figuresLine(const Glance& glance) const;
  void addHead(const Glance& glance, const ViewChoice& choice, int lines, Picture& picture) const;
  void addRunners(const Glance& glance, const ViewChoice& choice, const Share& share,
                  Picture& picture) const;
  void addLog(const Glance& glance, int lines, Picture& picture) const;
  Picture help() const;
  Line keyLine() const;

  const int columns_, rows_;
};

}  // namespace orvane
