#pragma once

// The debug log of a run, to a file or to the console.

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/threads/CriticalSection.h"

namespace Vantrel {

// Takes the lines of the debug log during a run. Any thread may log. All other calls are for the main thread, which
// owns the console.
class TRunLog {
 public:
  // pWriteError writes a line to the standard error and must outlive the log.
  explicit TRunLog(const std::function<void(std::string_view)>& pWriteError) : fWriteError(pWriteError) {}
  ~TRunLog() { Stop(); }
  TRunLog(const TRunLog&) = delete;
  TRunLog& operator=(const TRunLog&) = delete;

  // Logs to the file if one is named, otherwise to the console if that is wanted. Reports a file that cannot be
  // written.
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
