#include <orvane/sdk/Strategy.h>

#include <cstdlib>

namespace {

struct Broken {
  Broken() { std::abort(); }
};
const Broken broken;

class Innocent : public orvane::Strategy {};

}  // namespace

ORVANE_STRATEGY(Innocent)
