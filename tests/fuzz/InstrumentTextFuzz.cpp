#include <stdexcept>

#include "platform/reference/InstrumentFile.h"
#include "tests/fuzz/InputFile.h"

namespace {

void readFile(const std::uint8_t* data, std::size_t size) {
  const orvane::InputFile file(data, size);
  try {
    for (const orvane::Instrument& one : orvane::loadInstruments(file.path()))
      orvane::checkInstrument(one);
  } catch (const std::invalid_argument& error) {
    orvane::require(*error.what() != '\0');
  }
}

void readText(const std::string& text) {
  try {
    orvane::checkInstrument(orvane::parseInstrument(text));
  } catch (const std::invalid_argument& error) {
    orvane::require(*error.what() != '\0');
  }
}

}  // namespace

/// An instruments file, and the short form of the command line: instruments that stand their own
/// check, or an error that says something.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  readFile(data, size);
  readText(std::string(reinterpret_cast<const char*>(data), size));
  return 0;
}
