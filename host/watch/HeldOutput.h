#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orvane {

/// Holds what the process, strategies and what they start included, writes to its standard output
/// and standard error while it lives, since it would spoil a picture that stands on the same
/// terminal; writing it never blocks. Once it goes, all of it is written to the standard error.
/// Make it and let it go while no other thread does either.
class HeldOutput {
 public:
  /// Throws `std::system_error` if it cannot be made; nothing is changed then.
  HeldOutput();
  ~HeldOutput();
  HeldOutput(const HeldOutput&) = delete;
  HeldOutput& operator=(const HeldOutput&) = delete;

  /// The lines that were completed since the last call, without those that are far from the end
  /// where there are very many. For one thread at a time.
  std::vector<std::string> newLines();

  /// Somebody else has written what was held, and the outputs lead where they led before.
  void forget() { isForgotten_ = true; }

  int held() const { return held_; }
  int out() const { return out_; }
  int err() const { return err_; }

 private:
  void closeAll();

  int held_ = -1;  ///< A file without a name.
  int out_ = -1, err_ = -1;
  bool isForgotten_ = false;
  std::int64_t readTo_ = 0;
  std::string begun_;  ///< A line without its end.
};

}  // namespace orvane
