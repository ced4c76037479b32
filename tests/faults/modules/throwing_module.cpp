#include <orvane/sdk/Strategy.h>

#include <stdexcept>

namespace {

/// Its settings are missing, and it says so in the worst place.
struct Settings {
  Settings() { throw std::runtime_error("no settings"); }
};
const Settings settings;

class Innocent : public orvane::Strategy {};

}  // namespace

ORVANE_STRATEGY(Innocent)
