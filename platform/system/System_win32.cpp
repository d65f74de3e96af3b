#include <objbase.h>

#include <algorithm>
#include <bit>

#include "platform/system/System.h"
#include "platform/system/Win32_win32.h"
#include "platform/text/Text.h"

namespace Vantrel {

int64_t TickCount64() {
  return static_cast<int64_t>(GetTickCount64());
}

// The system's heap grows in large steps already.
void UseLargeHeapSteps() {}

int64_t FreePhysicalMemory() {
  MEMORYSTATUSEX memory{};
  memory.dwLength = sizeof memory;
  return GlobalMemoryStatusEx(&memory) ? static_cast<int64_t>(memory.ullAvailPhys) : 0;
}

int ProcessorCount() {
  DWORD_PTR process = 0;
  DWORD_PTR system = 0;
  if (!GetProcessAffinityMask(GetCurrentProcess(), &process, &system)) return 1;
  return std::max(1, std::popcount(uint64_t{process}));
}

TCpuUsageMeter::TTimes TCpuUsageMeter::ReadSystemTimes() {
  FILETIME idle{};
  FILETIME kernel{};
  FILETIME user{};
  if (!GetSystemTimes(&idle, &kernel, &user)) return {};
  auto ticks = [](const FILETIME& pTime) { return uint64_t{pTime.dwHighDateTime} << 32 | pTime.dwLowDateTime; };
  const uint64_t total = ticks(kernel) + ticks(user);  // kernel time includes the idle time
  FILETIME unused{};
  FILETIME ownKernel{};
  FILETIME ownUser{};
  constexpr uint64_t kTicksOfMicrosecond = 10;
  if (!GetProcessTimes(GetCurrentProcess(), &unused, &unused, &ownKernel, &ownUser)) return {};
  return {total - std::min(total, ticks(idle)), total, (ticks(ownKernel) + ticks(ownUser)) / kTicksOfMicrosecond};
}

void SetCurrentThreadPriority(int pStep) {
  static constexpr int kPriorities[] = {
      THREAD_PRIORITY_IDLE,         THREAD_PRIORITY_LOWEST,  THREAD_PRIORITY_BELOW_NORMAL, THREAD_PRIORITY_NORMAL,
      THREAD_PRIORITY_ABOVE_NORMAL, THREAD_PRIORITY_HIGHEST, THREAD_PRIORITY_TIME_CRITICAL};
  SetThreadPriority(GetCurrentThread(), kPriorities[std::clamp(pStep, 0, 6)]);
}

// Looked up at run time: the compiler's import library is older than the function.
void SetCurrentThreadName(const std::string& pName) {
  using TSetThreadDescription = HRESULT(WINAPI*)(HANDLE, PCWSTR);
  static const auto setDescription = reinterpret_cast<TSetThreadDescription>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "SetThreadDescription")));
  if (setDescription != nullptr) setDescription(GetCurrentThread(), Win32::Wide(FromUtf8(pName.substr(0, 15))));
}

TComInitializer::TComInitializer(bool pWanted)
    : fInitialized(pWanted && SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {}

TComInitializer::~TComInitializer() {
  if (fInitialized) CoUninitialize();
}

}  // namespace Vantrel
