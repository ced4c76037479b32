#pragma once

namespace orvane {

/// While one lives, a strategy that ends the process by `exit` or `quick_exit` is told on the
/// standard error, and the process ends with `kExitRunFailed`: nobody writes summary and report
/// then, and the code that the strategy chose, such as 0, would pass for that of a run that went
/// well. A process that is forked off is left alone. What a strategy has in the buffers of a `FILE`
/// is written; C++ streams that it keeps in statics are not. Any thread may exit. One at a time.
///
/// Make it before the view of a run, so that the terminal is in order when it speaks.
class ExitTeller {
 public:
  ExitTeller();
  ~ExitTeller();
  ExitTeller(const ExitTeller&) = delete;
  ExitTeller& operator=(const ExitTeller&) = delete;
};

}  // namespace orvane
