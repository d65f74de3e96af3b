#include <fcntl.h>
#include <malloc.h>
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <string>

#include "platform/system/System.h"

namespace Vantrel {

int64_t TickCount64() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}

int ProcessorCount() {
  cpu_set_t processors;
  // Fails on machines with more processors than the set holds. Then all processors are counted.
  if (sched_getaffinity(0, sizeof processors, &processors) == 0) return std::max(1, CPU_COUNT(&processors));
  return static_cast<int>(std::max(1L, sysconf(_SC_NPROCESSORS_ONLN)));
}

// The heap of a thread is made of pieces of 64 MiB. By default each piece is opened page by page. Under a limit, an
// allocation must not fail for what it would only use later.
void UseLargeHeapSteps() {
#ifdef __GLIBC__
  constexpr int kWholePiece = 64 << 20;
  for (const auto limited : {RLIMIT_AS, RLIMIT_DATA}) {
    rlimit limit{};
    if (getrlimit(limited, &limit) != 0 || limit.rlim_cur != RLIM_INFINITY) return;
  }
  mallopt(M_TOP_PAD, kWholePiece);
#endif
}

int64_t FreePhysicalMemory() {
  std::ifstream file("/proc/meminfo");
  for (std::string line; std::getline(file, line);)
    if (line.starts_with("MemAvailable:")) return std::strtoll(line.c_str() + 13, nullptr, 10) * 1024;
  return 0;
}

// The first line sums up all processors: "cpu  user nice system idle iowait irq softirq steal guest guest_nice". Guest
// time is part of user time already.
TCpuUsageMeter::TTimes TCpuUsageMeter::ReadSystemTimes() {
  char line[256];
  const int file = open("/proc/stat", O_RDONLY | O_CLOEXEC);
  if (file < 0) return {};
  const ssize_t length = read(file, line, sizeof line - 1);
  close(file);
  if (length < 5) return {};
  line[length] = 0;
  TTimes result;
  timespec own{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &own);
  result.fOwn = static_cast<uint64_t>(own.tv_sec) * 1'000'000 + static_cast<uint64_t>(own.tv_nsec) / 1000;
  char* at = line + 3;
  for (int column = 0; column < 8; ++column) {
    const uint64_t value = std::strtoull(at, &at, 10);
    result.fTotal += value;
    if (column != 3 && column != 4) result.fBusy += value;
  }
  return result;
}

// Linux keeps a nice value per thread, though POSIX defines it per process. The steps count from the process's start
// value, so a program started under nice stays nice.
void SetCurrentThreadPriority(int pStep) {
  static const int base = getpriority(PRIO_PROCESS, static_cast<id_t>(getpid()));
  static constexpr int kNice[] = {19, 10, 5, 0, -5, -10, -15};
  setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), std::clamp(base + kNice[std::clamp(pStep, 0, 6)], -20, 19));
}

void SetCurrentThreadName(const std::string& pName) {
  pthread_setname_np(pthread_self(), pName.substr(0, 15).c_str());  // a longer name would be refused
}

TComInitializer::TComInitializer(bool) : fInitialized(false) {}
TComInitializer::~TComInitializer() {
  (void)fInitialized;
}

}  // namespace Vantrel
