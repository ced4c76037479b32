#pragma once

#include <termios.h>

#include <string>

#include "host/watch/FixedLocale.h"
#include "host/watch/HeldOutput.h"
#include "host/watch/Picture.h"

namespace orvane {

/// The terminal of the process while a picture stands on it. For the thread that made it alone.
/// Once it goes, the terminal is as it was; `TerminalRescue` does the same where the process ends
/// otherwise.
class Terminal {
 public:
  enum class Key { None, Up, Down, PageUp, PageDown, Home, End, Quit, Pause, Help, Other };
  struct Size {
    int columns = 1, rows = 1;
  };

  /// Why no picture can be drawn, and what to do then, as a UTF-8 text; empty if it can. Changes
  /// nothing.
  static std::string obstacle();

  /// `held` outlives it. Throws `std::runtime_error` if the terminal cannot be had; it is as it was
  /// then.
  explicit Terminal(const HeldOutput& held);
  ~Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  /// Its present size.
  Size size();
  void draw(const Picture& picture);

  /// A file descriptor that can be read when there may be a key; -1 once there will be none.
  int keys() const { return hasKeys_ ? descriptor_ : -1; }
  /// The next key; `None` if there is none at the moment.
  Key read();
  /// The other side has gone: there will be no more keys, and nobody sees what is drawn.
  void forgetKeys() { hasKeys_ = false; }

  /// Gives the terminal back, stops the process as Ctrl-Z does, and takes the terminal again when
  /// the process goes on. SIGTSTP is blocked in all threads.
  void suspend();

 private:
  void start(const HeldOutput& held);
  void closeFiles();

  const FixedLocale locale_;
  int descriptor_ = -1;  ///< What is drawn on.
  int rescue_ = -1;      ///< Another one of the same terminal.
  termios found_{};
  struct Screen;
  Screen* screen_ = nullptr;
  bool hasColours_ = false, hasKeys_ = true;
};

}  // namespace orvane
