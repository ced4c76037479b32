#include <orvane/sdk/Strategy.h>

/// Stands in a library that nobody linked.
void functionOfAnotherLibrary();

namespace {

class Lacking : public orvane::Strategy {
 public:
  void onStop(orvane::IContext*) override { functionOfAnotherLibrary(); }
};

}  // namespace

ORVANE_STRATEGY(Lacking)
