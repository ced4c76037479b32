#include "host/watch/Terminal.h"

#define NCURSES_NOMACROS 1
#define NCURSES_WIDECHAR 1
#include <fcntl.h>
#include <fmt/core.h>
#include <ncurses.h>
#include <sys/ioctl.h>
#include <term.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

#include "host/watch/TerminalRescue.h"

namespace orvane {
namespace {

enum Pair : short { kGood = 1, kBad, kWarning, kAccent };

/// What the terminal understands by a name of its description, without the pauses that it asks for.
std::string capability(const char* name) {
  const char* found = tigetstr(name);
  if (found == nullptr || found == reinterpret_cast<const char*>(-1)) return {};
  std::string text = found;
  for (std::size_t at = 0; (at = text.find("$<", at)) != std::string::npos;)
    text.erase(at, text.find('>', at) - at + 1);
  return text;
}

/// The library puts handlers of its own there. Signals are dealt with elsewhere, so what was there
/// comes back when this goes.
class SignalsKept {
 public:
  SignalsKept() {
    for (std::size_t i = 0; i < kCount; ++i) sigaction(kSignals[i], nullptr, &former_[i]);
  }
  ~SignalsKept() {
    for (std::size_t i = 0; i < kCount; ++i) sigaction(kSignals[i], &former_[i], nullptr);
  }
  SignalsKept(const SignalsKept&) = delete;
  SignalsKept& operator=(const SignalsKept&) = delete;

 private:
  static constexpr int kSignals[] = {SIGINT, SIGTERM, SIGTSTP, SIGWINCH};
  static constexpr std::size_t kCount = std::size(kSignals);
  struct sigaction former_[kCount] {};
};

attr_t attributesOf(Tint tint) {
  switch (tint) {
    case Tint::Faint:
      return A_DIM;
    case Tint::Strong:
      return A_BOLD;
    case Tint::Badge:
      return A_REVERSE | A_BOLD;
    case Tint::Bad:
    case Tint::Warning:
      return A_BOLD;
    default:
      return A_NORMAL;
  }
}

short pairOf(Tint tint) {
  switch (tint) {
    case Tint::Good:
      return kGood;
    case Tint::Bad:
      return kBad;
    case Tint::Warning:
      return kWarning;
    case Tint::Accent:
    case Tint::Badge:
      return kAccent;
    default:
      return 0;
  }
}

bool startColours() {
  const char* refused = std::getenv("NO_COLOR");
  if ((refused != nullptr && *refused != '\0') || !has_colors()) return false;
  start_color();
  use_default_colors();
  init_pair(kGood, COLOR_GREEN, -1);
  init_pair(kBad, COLOR_RED, -1);
  init_pair(kWarning, COLOR_YELLOW, -1);
  init_pair(kAccent, COLOR_CYAN, -1);
  return true;
}

}  // namespace

/// What the library calls a screen, with the streams that it reads and writes.
struct Terminal::Screen {
  SCREEN* screen = nullptr;
  FILE* stream = nullptr;
};

std::string Terminal::obstacle() {
  constexpr char kOtherwise[] = "or leave --watch away";
  for (const auto& [descriptor, name] :
       {std::pair{STDOUT_FILENO, "output"}, std::pair{STDERR_FILENO, "error"}})
    if (isatty(descriptor) == 0)
      return fmt::format(
          "the standard {} is no terminal, and there is nothing to draw on; run it on "
          "one without redirecting, {}",
          name, kOtherwise);
  const char* name = std::getenv("TERM");
  if (name == nullptr || *name == '\0')
    return fmt::format(
        "TERM is not set, so it is not known what the terminal understands; set it, "
        "as in TERM=xterm-256color, {}",
        kOtherwise);
  int error = 0;
  const bool isKnown = setupterm(name, STDOUT_FILENO, &error) == OK;
  if (isKnown) {
    const bool canDraw = !capability("cup").empty();
    del_curterm(cur_term);
    if (canDraw) return {};
    return fmt::format(
        "a terminal of the kind \"{}\" (TERM) cannot move its cursor; set TERM to "
        "what it is, as in TERM=xterm-256color, {}",
        name, kOtherwise);
  }
  return fmt::format(
      "the kind of terminal \"{}\" (TERM) is not known here; set TERM to one that "
      "is, as in TERM=xterm-256color, {}",
      name, kOtherwise);
}

Terminal::Terminal(const HeldOutput& held) {
  // The standard output leads elsewhere by now.
  descriptor_ = ::open("/dev/tty", O_RDWR | O_CLOEXEC);
  if (descriptor_ < 0)
    if (const char* name = ttyname(held.out()))
      descriptor_ = ::open(name, O_RDWR | O_CLOEXEC | O_NOCTTY);
  if (descriptor_ < 0 || tcgetattr(descriptor_, &found_) != 0) {
    const std::error_code error(errno, std::generic_category());
    closeFiles();
    throw std::runtime_error("the terminal cannot be opened: " + error.message());
  }
  rescue_ = fcntl(descriptor_, F_DUPFD_CLOEXEC, 0);
  try {
    start(held);
  } catch (...) {
    closeFiles();
    throw;
  }
}

void Terminal::start(const HeldOutput& held) {
  const SignalsKept kept;
  screen_ = new Screen;
  screen_->stream = fdopen(descriptor_, "r+");
  if (screen_->stream != nullptr)
    screen_->screen = newterm(nullptr, screen_->stream, screen_->stream);
  if (screen_->screen == nullptr) throw std::runtime_error("the terminal cannot be drawn on");
  set_escdelay(25);
  cbreak();
  noecho();
  nonl();
  // A press of Ctrl-C would throw away what is on its way to the screen, and that may be what gives
  // the usual one back.
  termios modes{};
  if (tcgetattr(descriptor_, &modes) == 0) {
    modes.c_lflag |= NOFLSH;
    tcsetattr(descriptor_, TCSANOW, &modes);
    def_prog_mode();
  }
  keypad(stdscr, TRUE);
  nodelay(stdscr, TRUE);
  curs_set(0);
  hasColours_ = startColours();
  // What ends the colours, shows the cursor and the usual screen, in this order.
  std::string leaving =
      capability("sgr0") + capability("op") + capability("cnorm") + capability("rmkx");
  const std::string usual = capability("rmcup");
  leaving += usual.empty() ? "\r\n" : usual;
  TerminalRescue::arm({rescue_, descriptor_, held.held(), held.out(), held.err(), found_, leaving});
  wrefresh(stdscr);
}

Terminal::~Terminal() {
  // Who gives it back instead may still be about it, and the process ends: nothing is closed then.
  if (!TerminalRescue::disarm()) return;
  flushinp();
  wclear(stdscr);
  wrefresh(stdscr);
  endwin();
  tcsetattr(descriptor_, TCSANOW, &found_);
  closeFiles();
}

void Terminal::closeFiles() {
  if (screen_ != nullptr) {
    if (screen_->screen != nullptr) delscreen(screen_->screen);
    if (screen_->stream != nullptr) {
      std::fclose(screen_->stream);
      descriptor_ = -1;
    }
    delete screen_;
    screen_ = nullptr;
  }
  for (const int descriptor : {descriptor_, rescue_})
    if (descriptor >= 0) close(descriptor);
}

Terminal::Size Terminal::size() {
  winsize now{};
  if (ioctl(rescue_, TIOCGWINSZ, &now) == 0 && now.ws_row > 0 && now.ws_col > 0 &&
      (now.ws_row != getmaxy(stdscr) || now.ws_col != getmaxx(stdscr)))
    resizeterm(now.ws_row, now.ws_col);
  return {std::max(getmaxx(stdscr), 1), std::max(getmaxy(stdscr), 1)};
}

void Terminal::draw(const Picture& picture) {
  if (!TerminalRescue::isArmed() || !hasKeys_) return;
  werase(stdscr);
  for (int row = 0; row < static_cast<int>(picture.size()); ++row) {
    wmove(stdscr, row, 0);
    for (const Span& span : picture[static_cast<std::size_t>(row)]) {
      const short pair = hasColours_ ? pairOf(span.tint) : static_cast<short>(0);
      wattr_set(stdscr, attributesOf(span.tint), pair, nullptr);
      waddnwstr(stdscr, span.text.c_str(), static_cast<int>(span.text.size()));
    }
  }
  wattr_set(stdscr, A_NORMAL, 0, nullptr);
  wrefresh(stdscr);
}

Terminal::Key Terminal::read() {
  const int key = wgetch(stdscr);
  switch (key) {
    case ERR:
      return Key::None;
    case KEY_UP:
    case 'k':
      return Key::Up;
    case KEY_DOWN:
    case 'j':
      return Key::Down;
    case KEY_PPAGE:
      return Key::PageUp;
    case KEY_NPAGE:
    case ' ':
      return Key::PageDown;
    case KEY_HOME:
      return Key::Home;
    case KEY_END:
      return Key::End;
    case 'q':
    case 'Q':
      return Key::Quit;
    case 'p':
    case 'P':
      return Key::Pause;
    case '?':
    case 'h':
      return Key::Help;
    default:
      return Key::Other;
  }
}

void Terminal::suspend() {
  endwin();
  sigset_t stop;
  sigemptyset(&stop);
  sigaddset(&stop, SIGTSTP);
  raise(SIGTSTP);  // Of this thread, so that it does not go on before the process stands still.
  pthread_sigmask(SIG_UNBLOCK, &stop, nullptr);
  pthread_sigmask(SIG_BLOCK, &stop, nullptr);
  clearok(stdscr, TRUE);
  wrefresh(stdscr);
}

}  // namespace orvane
