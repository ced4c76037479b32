// Which process gives a terminal back: that which took it, and none that it forked off.

#include "host/watch/TerminalRescue.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>

#include "tests/host/Program.h"

namespace orvane {
namespace {

/// A terminal that was found with an echo and has none while a picture stands on it.
class RescuedTerminal : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(openpty(&outer_, &inner_, nullptr, nullptr, nullptr), 0);
    ASSERT_EQ(tcgetattr(inner_, &parts_.found), 0);
    parts_.found.c_lflag |= ECHO;
    termios drawing = parts_.found;
    drawing.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    ASSERT_EQ(tcsetattr(inner_, TCSANOW, &drawing), 0);
    fcntl(outer_, F_SETFL, O_NONBLOCK);
    parts_.terminal = inner_;
    parts_.drawn = dup(inner_);
    parts_.held = open(folder_.write("held", {}).c_str(), O_RDWR | O_CLOEXEC);
    parts_.out = dup(STDOUT_FILENO);
    parts_.err = dup(STDERR_FILENO);
    parts_.leaving = "usual screen";
  }
  void TearDown() override {
    for (const int open : {outer_, inner_, parts_.drawn, parts_.held, parts_.out, parts_.err})
      close(open);
  }

  bool hasEcho() const {
    termios now{};
    return tcgetattr(inner_, &now) == 0 && (now.c_lflag & ECHO) != 0;
  }
  /// What was written to the terminal since the last look.
  std::string shown() const {
    char buffer[256];
    const ssize_t count = read(outer_, buffer, sizeof(buffer));
    return count > 0 ? std::string(buffer, static_cast<std::size_t>(count)) : std::string();
  }
  /// Does it in a process that is forked off, and answers the signal that ended that; 0: it ended
  /// by itself and `work` answered true.
  static int inChild(const std::function<bool()>& work) {
    const pid_t child = fork();
    if (child == 0) _exit(work() ? 0 : 1);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? WTERMSIG(status) : -WEXITSTATUS(status);
  }

  /// Sends itself a signal, which ends it. The thread sanitizer keeps signals back until the next
  /// call that may wait.
  static bool outlives(int signal) { return std::raise(signal) == 0 && poll(nullptr, 0, 0) == 0; }

  const test::TempFolder folder_;
  int outer_ = -1, inner_ = -1;
  TerminalRescue::Parts parts_;
};

TEST_F(RescuedTerminal, shouldLeaveTheTerminalAloneInAProcessThatIsForkedOff) {
  TerminalRescue::arm(parts_);
  EXPECT_EQ(inChild([] {
              const bool isArmed = TerminalRescue::isArmed();
              TerminalRescue::leave();
              return !isArmed && !TerminalRescue::hasLeft();
            }),
            0);
  EXPECT_EQ(inChild([] { return outlives(SIGUSR1); }), SIGUSR1);
  EXPECT_EQ(shown(), "");
  EXPECT_FALSE(hasEcho());
  EXPECT_TRUE(TerminalRescue::isArmed());
  EXPECT_TRUE(TerminalRescue::disarm());
}

TEST_F(RescuedTerminal, shouldGiveTheTerminalBackInTheProcessThatTookIt) {
  EXPECT_EQ(inChild([this] {
              TerminalRescue::arm(parts_);
              return outlives(SIGUSR1);
            }),
            SIGUSR1);
  EXPECT_EQ(shown(), "usual screen");
  EXPECT_TRUE(hasEcho());
}

}  // namespace
}  // namespace orvane
