#include <pthread.h>

#include <csignal>

#include "platform/threads/InterruptibleThread.h"

namespace Vantrel {

namespace {

thread_local TInterruptibleThread* gCurrent = nullptr;

// A real-time signal that no library of the program uses. Its handler does nothing; its run is enough to end the call.
int InterruptingSignal() {
  return SIGRTMIN + 5;
}

void InstallHandler() {
  static const bool done = [] {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    action.sa_flags = 0;  // without SA_RESTART
    sigemptyset(&action.sa_mask);
    return sigaction(InterruptingSignal(), &action, nullptr) == 0;
  }();
  (void)done;
}

}  // namespace

TInterruptibleThread::TInterruptibleThread() : fThread(static_cast<uintptr_t>(pthread_self())), fOuter(gCurrent) {
  InstallHandler();
  gCurrent = this;
}

TInterruptibleThread::~TInterruptibleThread() {
  gCurrent = fOuter;
}

void TInterruptibleThread::Interrupt() {
  fInterrupted.store(true, std::memory_order_release);
  pthread_kill(static_cast<pthread_t>(fThread), InterruptingSignal());
}

bool TInterruptibleThread::IsCurrentInterrupted() {
  return gCurrent != nullptr && gCurrent->fInterrupted.load(std::memory_order_acquire);
}

}  // namespace Vantrel
