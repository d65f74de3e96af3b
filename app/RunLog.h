#pragma once

// The debug log of a run, to a file or to the console.

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/threads/CriticalSection.h"

namespace Vantrel {

// Takes the lines of the debug log while a run lasts. Any thread may log; all else is for the main thread, which the
// console belongs to.
class TRunLog {
 public:
  // pWriteError writes a line to the standard error and must outlive the log.
  explicit TRunLog(const std::function<void(std::string_view)>& pWriteError) : fWriteError(pWriteError) {}
  ~TRunLog() { Stop(); }
  TRunLog(const TRunLog&) = delete;
  TRunLog& operator=(const TRunLog&) = delete;

  // To the file, if one is named, else to the console if that is wanted. A file that cannot be written is told.
  void Start(bool pToConsole, const std::u16string& pFile);
  // Writes what other threads have logged for the console. Called from time to time while the main thread waits.
  void WriteWaiting();
  void Stop();

 private:
  const std::function<void(std::string_view)>& fWriteError;
  TCriticalSection fLock;
  std::vector<std::string> fWaiting GUARDED_BY(fLock);
};

}  // namespace Vantrel
