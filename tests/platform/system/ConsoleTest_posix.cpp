// Streams that are redirected, closed or full.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "platform/system/Console.h"

namespace Vantrel {

namespace {

// Puts another file in the place of a standard stream while it lives.
class TRedirect {
 public:
  TRedirect(int pStream, int pFile) : fStream(pStream), fSaved(dup(pStream)) { dup2(pFile, pStream); }
  ~TRedirect() {
    dup2(fSaved, fStream);
    close(fSaved);
  }

 private:
  int fStream;
  int fSaved;
};

// Reads what was expected, however many pieces it comes in; a terminal hands it on in its own time. What comes beyond
// it stands in front of the next.
void ExpectOutput(int pFile, const std::string& pExpected) {
  constexpr int kPatienceMilliseconds = 20'000;
  std::string got;
  pollfd waiting{pFile, POLLIN, 0};
  while (got.size() < pExpected.size() && poll(&waiting, 1, kPatienceMilliseconds) > 0) {
    std::string piece(pExpected.size() - got.size(), '\0');
    const ssize_t length = read(pFile, piece.data(), piece.size());
    if (length <= 0) break;
    got.append(piece, 0, static_cast<size_t>(length));
  }
  EXPECT_EQ(got, pExpected);
}

struct TTerminal {
  int fMaster = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  int fSlave = -1;

  explicit TTerminal(uint16_t pColumns) {
    grantpt(fMaster);
    unlockpt(fMaster);
    fSlave = open(ptsname(fMaster), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios mode{};
    tcgetattr(fSlave, &mode);
    cfmakeraw(&mode);
    tcsetattr(fSlave, TCSANOW, &mode);
    const winsize size{24, pColumns, 0, 0};
    ioctl(fSlave, TIOCSWINSZ, &size);
  }
  ~TTerminal() {
    close(fSlave);
    close(fMaster);
  }
};

}  // namespace

TEST(ConsoleOnLinux, RedirectedOutputIsPlainAndAClosedPipeIsReported) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  setenv("TERM", "xterm", 1);
  {
    TRedirect output(STDOUT_FILENO, ends[1]);
    TRedirect error(STDERR_FILENO, ends[1]);
    EXPECT_TRUE(TConsole::Write("a\xC3\xA9"));
    ExpectOutput(ends[0], "a\xC3\xA9\n");
    TConsole::WriteProgress("nothing of this");
    TConsole::WriteError("Cannot read", 13, "open", "/x");
    ExpectOutput(ends[0], "Cannot read. open: \"/x\"  (Error Code 13)\n");
    EXPECT_EQ(TConsole::OutputWidth(), 0);
    EXPECT_TRUE(TConsole::IsOutputRedirected());
    close(ends[0]);
    EXPECT_FALSE(TConsole::Write("nobody reads"));
  }
  close(ends[1]);
}

TEST(ConsoleOnLinux, TerminalGetsColoursAndProgressThatIsWipedOut) {
  TTerminal terminal(10);
  TRedirect output(STDOUT_FILENO, terminal.fSlave);
  TRedirect error(STDERR_FILENO, terminal.fSlave);
  setenv("TERM", "xterm", 1);
  unsetenv("NO_COLOR");
  EXPECT_EQ(TConsole::OutputWidth(), 10);
  TConsole::WriteError("bad");
  ExpectOutput(terminal.fMaster, "\033[91mbad\033[0m\n");
  TConsole::WriteProgress("12345678\xE4\xB8\xAD");  // nine columns are free, and the last character wants two
  ExpectOutput(terminal.fMaster, "\r12345678\r");
  TConsole::WriteProgress("abc");
  ExpectOutput(terminal.fMaster, "\rabc     \r");
  setenv("NO_COLOR", "1", 1);
  TConsole::ClearProgress();
  TConsole::WriteError("plain");
  ExpectOutput(terminal.fMaster, "\r   \rplain\n");
  unsetenv("NO_COLOR");
}

namespace {
volatile sig_atomic_t gCancelled = 0;
}

TEST(ConsoleOnLinux, TheFirstInterruptAsksAndTheSecondEnds) {
  EXPECT_EXIT(
      {
        signal(SIGINT, SIG_DFL);  // a script's "&" has it ignored, and the handler would keep it so
        TConsole::SetCancelHandler([] { gCancelled = gCancelled + 1; });
        raise(SIGINT);
        if (gCancelled != 1) _exit(1);
        raise(SIGINT);
        _exit(2);
      },
      testing::KilledBySignal(SIGINT), "");
}

}  // namespace Vantrel
