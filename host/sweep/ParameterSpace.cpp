#include "host/sweep/ParameterSpace.h"

#include <fmt/core.h>

#include "host/InputError.h"

namespace orvane {

ParameterSpace::ParameterSpace(const std::vector<std::string>& ranges, const std::string& option) {
  for (const std::string& given : ranges) {
    ParameterRange range = ParameterRange::parse(given, option);
    for (const ParameterRange& other : ranges_)
      if (other.name() == range.name())
        throw InputError(fmt::format("{}: \"{}\" is given twice", option, range.name()));
    if (__builtin_mul_overflow(size_, range.size(), &size_) || size_ > (std::uint64_t{1} << 62))
      throw InputError(fmt::format("{} {}: too many combinations to count", option, range.name()));
    ranges_.push_back(std::move(range));
  }
}

std::vector<std::uint64_t> ParameterSpace::placesOf(std::uint64_t number) const {
  std::vector<std::uint64_t> places(ranges_.size());
  for (std::size_t i = ranges_.size(); i-- > 0;) {
    places[i] = number % ranges_[i].size();
    number /= ranges_[i].size();
  }
  return places;
}

std::uint64_t ParameterSpace::numberOf(const std::vector<std::uint64_t>& places) const {
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < ranges_.size(); ++i) number = number * ranges_[i].size() + places[i];
  return number;
}

QJsonObject ParameterSpace::paramsOf(const QJsonObject& base, std::uint64_t number) const {
  QJsonObject params = base;
  const std::vector<std::uint64_t> places = placesOf(number);
  for (std::size_t i = 0; i < ranges_.size(); ++i)
    params[QString::fromStdString(ranges_[i].name())] = ranges_[i].value(places[i]);
  return params;
}

std::vector<std::string> ParameterSpace::textsOf(std::uint64_t number) const {
  std::vector<std::string> texts;
  const std::vector<std::uint64_t> places = placesOf(number);
  for (std::size_t i = 0; i < ranges_.size(); ++i) texts.push_back(ranges_[i].text(places[i]));
  return texts;
}

}  // namespace orvane
