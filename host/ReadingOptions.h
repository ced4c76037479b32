#pragma once

#include <CLI/App.hpp>
#include <QJsonObject>
#include <string>
#include <tuple>
#include <vector>

#include "host/RunPlan.h"

namespace orvane {

/// The options of the command line that say how data files are to be read: they make a description
/// as docs/formats.md has it. What is common needs none.
class ReadingOptions {
 public:
  /// Adds the options to a command, under a heading of their own.
  void addTo(CLI::App& command);

  /// The description that they make. Throws `InputError`.
  QJsonObject description() const;

  /// Where the keys of the description were given.
  DescriptionPlaces places() const;

  /// What `--format` gave: a file's name, or JSON.
  const std::string& format() const { return format_; }

 private:
  /// The options of one key each, with the key.
  std::vector<std::tuple<const char*, const char*, const std::string*>> ownKeys() const;

  std::string format_;
  std::string columns_, delimiter_, timeZone_, stamp_, period_, date_, priceScale_, priceTick_,
      side_;
  std::vector<std::string> sets_;
};

}  // namespace orvane
