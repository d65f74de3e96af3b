#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "platform/system/ChildProcess.h"
#include "platform/system/Errors.h"
#include "platform/system/System.h"
#include "platform/text/Text.h"

namespace Vantrel {

namespace {

constexpr size_t kMostOutput = 4096;
constexpr int kPollMilliseconds = 20;  // how late the end of a silent program is noticed

// The program's start settings: its three streams, and default signals as from a shell. This program ignores broken
// pipes in some places; the child must not inherit that.
class TSpawnSettings {
 public:
  TSpawnSettings(int pInput, int pOutput) {
    posix_spawn_file_actions_init(&fActions);
    posix_spawn_file_actions_adddup2(&fActions, pInput, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&fActions, pOutput, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&fActions, pOutput, STDERR_FILENO);
    posix_spawnattr_init(&fAttributes);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&fAttributes, &signals);
    sigaddset(&signals, SIGPIPE);
    posix_spawnattr_setsigdefault(&fAttributes, &signals);
    posix_spawnattr_setflags(&fAttributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }
  ~TSpawnSettings() {
    posix_spawn_file_actions_destroy(&fActions);
    posix_spawnattr_destroy(&fAttributes);
  }
  TSpawnSettings(const TSpawnSettings&) = delete;
  TSpawnSettings& operator=(const TSpawnSettings&) = delete;

  // 0 or the system's code.
  int Spawn(pid_t& pProcess, const std::string& pProgram, const std::vector<std::string>& pArguments) const {
    std::vector<char*> arguments{const_cast<char*>(pProgram.c_str())};
    for (const std::string& argument : pArguments) arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    return posix_spawn(&pProcess, pProgram.c_str(), &fActions, &fAttributes, arguments.data(), environ);
  }

 private:
  posix_spawn_file_actions_t fActions;
  posix_spawnattr_t fAttributes;
};

}  // namespace

bool TChildProcess::IsAvailable() {
  return true;
}

TChildProcess::TChildProcess(const std::string& pProgram, const std::vector<std::string>& pArguments,
                             int64_t pPatienceMilliseconds)
    : fProgram(FromNativeBytes(pProgram)), fPatience(pPatienceMilliseconds) {
  // A socket instead of a pipe: with MSG_NOSIGNAL, writing raises no signal when the reader is gone.
  int input[2], output[2];
  int code = socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, input) == 0 ? 0 : errno;
  if (code == 0 && pipe2(output, O_CLOEXEC) != 0) {
    code = errno;
    close(input[0]);
    close(input[1]);
  }
  if (code != 0) throw EOSError(static_cast<uint32_t>(code), "Starting a program", fProgram);
  fcntl(output[0], F_SETFL, O_NONBLOCK);
  pid_t process = 0;
  code = TSpawnSettings(input[1], output[1]).Spawn(process, pProgram, pArguments);
  close(input[1]);
  close(output[1]);
  if (code != 0) {
    close(input[0]);
    close(output[0]);
    throw EOSError(static_cast<uint32_t>(code), "Starting a program", fProgram);
  }
  fProcess = process;
  fInput = input[0];
  fOutput = output[0];
}

TChildProcess::~TChildProcess() {
  if (fProcess > 0) {
    kill(fProcess, SIGKILL);
    while (waitpid(fProcess, nullptr, 0) < 0 && errno == EINTR) {
    }
  }
  close(fInput);
  if (fOutput >= 0) close(fOutput);
}

bool TChildProcess::Feed(std::string_view pBytes) {
  while (!pBytes.empty()) {
    const ssize_t length = send(fInput, pBytes.data(), pBytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (length >= 0) {
      pBytes.remove_prefix(static_cast<size_t>(length));
    } else if (errno == EAGAIN) {
      WaitUntilItReads();
    } else if (errno == EPIPE || errno == ECONNRESET) {
      return false;
    } else if (errno != EINTR) {
      throw EOSError(static_cast<uint32_t>(errno), "Writing to a program", fProgram);
    }
  }
  return true;
}

// Reads the program's output while waiting. A program may have to write much before it reads on.
void TChildProcess::WaitUntilItReads() {
  pollfd waited[] = {{fInput, POLLOUT, 0}, {fOutput, POLLIN, 0}};
  const int ready = poll(waited, 2, static_cast<int>(fPatience));
  if (ready == 0) throw EOSError(ETIMEDOUT, "Writing to a program", fProgram);
  if (waited[1].revents != 0) TakeOutput();
}

void TChildProcess::TakeOutput() {
  char buffer[kMostOutput];
  while (fOutput >= 0) {
    const ssize_t length = read(fOutput, buffer, sizeof buffer);
    if (length < 0 && errno == EINTR) continue;
    if (length < 0 && errno == EAGAIN) return;
    if (length <= 0) {
      close(fOutput);
      fOutput = -1;
      return;
    }
    fTaken.append(buffer, static_cast<size_t>(length));
    if (fTaken.size() > kMostOutput) fTaken.resize(kMostOutput);
  }
}

TChildResult TChildProcess::Finish() {
  shutdown(fInput, SHUT_WR);
  const int64_t deadline = TickCount64() + fPatience;
  int status = 0;
  // Waits for the program's end, not for the end of its output. A program that it left behind may keep the output open.
  for (;;) {
    const pid_t ended = waitpid(fProcess, &status, WNOHANG);
    if (ended > 0) break;
    if (ended < 0) throw EOSError(static_cast<uint32_t>(errno), "Waiting for a program", fProgram);
    if (TickCount64() > deadline) throw EOSError(ETIMEDOUT, "Waiting for a program", fProgram);
    pollfd waited{fOutput, POLLIN, 0};
    poll(&waited, 1, kPollMilliseconds);
    TakeOutput();
  }
  fProcess = 0;
  TakeOutput();
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 0, WIFSIGNALED(status) ? WTERMSIG(status) : 0, fTaken};
}

}  // namespace Vantrel
