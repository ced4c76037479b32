#include <orvane/sdk/Strategy.h>

#include <cstdio>
#include <cstdlib>

namespace {

struct Licence {
  Licence() {
    std::fputs("some banner\nthe licence has run out\n", stderr);
    std::exit(3);
  }
};
const Licence licence;

class Innocent : public orvane::Strategy {};

}  // namespace

ORVANE_STRATEGY(Innocent)
