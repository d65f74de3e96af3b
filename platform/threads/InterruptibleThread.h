#pragma once

// Lets one thread interrupt another thread's blocked system call, such as on a share whose server is gone or a pipe
// without a writer.

#include <atomic>
#include <cstdint>

namespace Vantrel {

// Represents the thread that created it, and lives on that thread's stack. Some file systems, such as a hard NFS mount,
// cannot be interrupted. Their call ends by itself or never.
class TInterruptibleThread {
 public:
  TInterruptibleThread();
  ~TInterruptibleThread();
  TInterruptibleThread(const TInterruptibleThread&) = delete;
  TInterruptibleThread& operator=(const TInterruptibleThread&) = delete;

  // Makes the thread's current system call fail, with EINTR on Linux and ERROR_OPERATION_ABORTED on Windows. A call
  // that begins at the same moment is missed, so a waiting caller interrupts again from time to time. Any thread.
  void Interrupt();
  // Whether the calling thread has been interrupted. A call that failed with EINTR must then not be repeated. False in
  // a thread without a TInterruptibleThread.
  static bool IsCurrentInterrupted();

 private:
  const uintptr_t fThread;  // the system's identifier of the thread
  std::atomic<bool> fInterrupted{false};
  TInterruptibleThread* const fOuter;  // the previous object of the same thread
};

}  // namespace Vantrel
