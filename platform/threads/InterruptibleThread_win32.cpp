#include "platform/system/Win32_win32.h"
#include "platform/threads/InterruptibleThread.h"

namespace Vantrel {

namespace {

thread_local TInterruptibleThread* gCurrent = nullptr;

uintptr_t HandleOfThisThread() {
  HANDLE handle = nullptr;
  if (!DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &handle, 0, FALSE,
                       DUPLICATE_SAME_ACCESS))
    return 0;
  return reinterpret_cast<uintptr_t>(handle);
}

}  // namespace

TInterruptibleThread::TInterruptibleThread() : fThread(HandleOfThisThread()), fOuter(gCurrent) {
  gCurrent = this;
}

TInterruptibleThread::~TInterruptibleThread() {
  gCurrent = fOuter;
  if (fThread != 0) CloseHandle(reinterpret_cast<HANDLE>(fThread));
}

void TInterruptibleThread::Interrupt() {
  fInterrupted.store(true, std::memory_order_release);
  if (fThread != 0) CancelSynchronousIo(reinterpret_cast<HANDLE>(fThread));
}

bool TInterruptibleThread::IsCurrentInterrupted() {
  return gCurrent != nullptr && gCurrent->fInterrupted.load(std::memory_order_acquire);
}

}  // namespace Vantrel
