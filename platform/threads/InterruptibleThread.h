#pragma once

// Lets one thread interrupt a system call in which another one hangs: a share whose server is gone, a pipe without a
// writer.

#include <atomic>
#include <cstdint>

namespace Vantrel {

// Stands for the thread that made it, and lives on its stack. A file system may refuse to be interrupted, as a hard NFS
// mount does; the call then ends when it ends.
class TInterruptibleThread {
 public:
  TInterruptibleThread();
  ~TInterruptibleThread();
  TInterruptibleThread(const TInterruptibleThread&) = delete;
  TInterruptibleThread& operator=(const TInterruptibleThread&) = delete;

  // Makes the system call that the thread is in fail: with EINTR on Linux, ERROR_OPERATION_ABORTED on Windows. A call
  // that begins just then is missed, so a caller that waits interrupts again from time to time. Any thread.
  void Interrupt();
  // Whether the calling thread has been interrupted: a call that fails with EINTR is then not to be tried again. False
  // in a thread that cannot be interrupted.
  static bool IsCurrentInterrupted();

 private:
  const uintptr_t fThread;  // the system's name for it
  std::atomic<bool> fInterrupted{false};
  TInterruptibleThread* const fOuter;  // of the same thread
};

}  // namespace Vantrel
