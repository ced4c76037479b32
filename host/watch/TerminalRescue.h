#pragma once

#include <termios.h>

#include <string>

namespace orvane {

/// Gives the terminal back where a view is shown and the process ends in another way than in order:
/// by a signal that kills it, by `exit`, or because the user does not want to wait any more. While
/// one is armed it hears of fatal signals; those then do what they would have done without it.
///
/// Everything is of the process as a whole, since signals are. Once the terminal is given back,
/// whatever still draws draws into nothing.
class TerminalRescue {
 public:
  struct Parts {
    int terminal = -1;    ///< To write to; stays open as long as it is armed.
    int drawn = -1;       ///< What the view draws on; leads nowhere afterwards.
    int held = -1;        ///< The file that holds what was written meanwhile.
    int out = -1;         ///< What was the standard output before.
    int err = -1;         ///< What was the standard error before; gets what was held.
    termios found{};      ///< How the terminal was.
    std::string leaving;  ///< What makes it show its usual screen again.
  };

  static void arm(const Parts& parts);
  /// Answers whether the caller is now the one to give the terminal back; false if that was done.
  static bool disarm();
  static bool isArmed();
  /// Whether `leave` gave the terminal back, and what was held.
  static bool hasLeft();

  /// Gives the terminal back at once if that is to be done at all. May be called by a handler of a
  /// signal; returns when it is done, also if another thread is about to do it.
  static void leave();
};

}  // namespace orvane
