#include "host/sweep/SweepRow.h"

namespace orvane {

const char* sampleName(SweepSample sample) {
  switch (sample) {
    case SweepSample::InSample:
      return "in-sample";
    case SweepSample::OutOfSample:
      return "out-of-sample";
    default:
      return "whole";
  }
}

}  // namespace orvane
