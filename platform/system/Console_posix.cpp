#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "platform/system/Console.h"
#include "platform/system/ConsoleStream.h"

namespace Vantrel {

namespace {

std::atomic<void (*)()> gCancelHandler{nullptr};
std::atomic<bool> gOutputClosed{false};

int DescriptorOf(ConsoleStream::TStream pStream) {
  return pStream == ConsoleStream::TStream::csOutput ? STDOUT_FILENO : STDERR_FILENO;
}

// Makes a closed pipe an error of write() instead of the end of the process. A handler that is already set is kept.
void IgnoreClosedPipes() {
  static const bool done = [] {
    struct sigaction action {};
    if (sigaction(SIGPIPE, nullptr, &action) == 0 && action.sa_handler == SIG_DFL) {
      action.sa_handler = SIG_IGN;
      sigaction(SIGPIPE, &action, nullptr);
    }
    return true;
  }();
  (void)done;
}

void OnSignal(int) {
  const int savedError = errno;
  if (auto* handler = gCancelHandler.load()) handler();
  errno = savedError;
}

}  // namespace

namespace ConsoleStream {

bool Write(TStream pStream, std::string_view pText) {
  IgnoreClosedPipes();
  const int descriptor = DescriptorOf(pStream);
  while (!pText.empty()) {
    const ssize_t written = write(descriptor, pText.data(), pText.size());
    if (written > 0) {
      pText.remove_prefix(static_cast<size_t>(written));
    } else if (written < 0 && errno == EAGAIN) {  // another process made the shared terminal non-blocking
      pollfd wait{descriptor, POLLOUT, 0};
      poll(&wait, 1, -1);
    } else if (written == 0 || errno != EINTR) {
      if (pStream == TStream::csOutput && written < 0 && errno == EPIPE) gOutputClosed = true;
      return false;
    }
  }
  return true;
}

bool IsConsole(TStream pStream) {
  return isatty(DescriptorOf(pStream)) == 1;
}

int Width(TStream pStream) {
  winsize size{};
  return ioctl(DescriptorOf(pStream), TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

bool ShowsColours(TStream pStream) {
  const char* terminal = std::getenv("TERM");
  return IsConsole(pStream) && terminal != nullptr && *terminal != 0 && std::strcmp(terminal, "dumb") != 0;
}

}  // namespace ConsoleStream

void TConsole::WriteLastWords(std::string_view pText) noexcept {
  ConsoleStream::Write(ConsoleStream::TStream::csError, pText);
}

std::string_view TConsole::LineEnd() {
  return "\n";
}

// The locale's name says the encoding, whether or not the locale is installed. The system's own console has few glyphs.
int TConsole::PartsOfBlock() {
  for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const char* locale = std::getenv(variable);
    if (locale == nullptr || *locale == 0) continue;
    if (strcasestr(locale, "utf-8") == nullptr && strcasestr(locale, "utf8") == nullptr) return 1;
    const char* terminal = std::getenv("TERM");
    return terminal != nullptr && std::strcmp(terminal, "linux") == 0 ? 2 : 8;
  }
  return 1;
}

bool TConsole::IsOutputClosed() {
  return gOutputClosed;
}

bool TConsole::IsReaderGone(uint32_t pCode) {
  return pCode == EPIPE;
}

void TConsole::SetCancelHandler(void (*pHandler)()) {
  IgnoreClosedPipes();  // exports write to pipes without this class
  gCancelHandler = pHandler;
  for (int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction current {};
    // A signal that the parent process ignores (nohup, a shell's background job) stays ignored.
    if (sigaction(signal, nullptr, &current) != 0 || current.sa_handler == SIG_IGN) continue;
    struct sigaction action {};
    action.sa_handler = pHandler != nullptr ? OnSignal : SIG_DFL;
    action.sa_flags = SA_RESTART | SA_RESETHAND;  // reset to the default, so that the second one ends the process
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
  }
}

}  // namespace Vantrel
