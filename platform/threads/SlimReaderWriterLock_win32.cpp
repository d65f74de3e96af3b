#include <windows.h>

#include "platform/threads/SlimReaderWriterLock.h"

namespace Vantrel {

static_assert(sizeof(SRWLOCK) == sizeof(void*), "the lock's state is kept as a plain pointer");

void TSlimReaderWriterLock::AcquireExclusive() {
  AcquireSRWLockExclusive(reinterpret_cast<PSRWLOCK>(&fState));
}
void TSlimReaderWriterLock::ReleaseExclusive() {
  ReleaseSRWLockExclusive(reinterpret_cast<PSRWLOCK>(&fState));
}
void TSlimReaderWriterLock::AcquireShared() {
  AcquireSRWLockShared(reinterpret_cast<PSRWLOCK>(&fState));
}
void TSlimReaderWriterLock::ReleaseShared() {
  ReleaseSRWLockShared(reinterpret_cast<PSRWLOCK>(&fState));
}

}  // namespace Vantrel
