// Runs one program and reports its wall time, processor time and peak memory.

// measure HANDLE PROGRAM [ARGUMENT…]: runs a program and writes what it took to an open handle, as one line
// "wall-nanoseconds cpu-microseconds peak-kilobytes wait-status".
//
// This is a separate process because the system counts the memory of the starting process towards the program's peak.
// Started straight from a script, every program would seem to need at least the interpreter's memory.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int cCannotStart = 127;

long Microseconds(const timeval& pTime) {
  return pTime.tv_sec * 1'000'000L + pTime.tv_usec;
}

}  // namespace

int main(int pCount, char** pArguments) {
  if (pCount < 3) {
    std::fputs("usage: measure HANDLE PROGRAM [ARGUMENT...]\n", stderr);
    return 2;
  }
  const int output = std::atoi(pArguments[1]);
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) {
    close(output);
    execvp(pArguments[2], pArguments + 2);
    std::fprintf(stderr, "%s: %s\n", pArguments[2], std::strerror(errno));
    _exit(cCannotStart);
  }
  int status = 0;
  rusage usage;
  if (child < 0 || wait4(child, &status, 0, &usage) != child) {
    std::perror("measure");
    return 1;
  }
  const auto wall = std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now() - start);
  dprintf(output, "%lld %ld %ld %d\n", static_cast<long long>(wall.count()),
          Microseconds(usage.ru_utime) + Microseconds(usage.ru_stime), usage.ru_maxrss, status);
  return 0;
}
