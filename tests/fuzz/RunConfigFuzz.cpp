#include "host/InputError.h"
#include "host/RunConfig.h"
#include "tests/fuzz/InputFile.h"

/// Whatever a run's configuration holds: a plan, or an error that says something.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const orvane::InputFile file(data, size);
  try {
    orvane::RunPlan plan;
    orvane::readRunConfig(file.path(), plan);
  } catch (const orvane::InputError& error) {
    orvane::require(*error.what() != '\0');
  }
  return 0;
}
