#pragma once

// Another program, fed through its standard input.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Vantrel {

// How a program ended, and the beginning of what it had to say.
struct TChildResult {
  int fExitCode = 0;  // 0 also when a signal ended it
  int fSignal = 0;
  std::string fOutput;  // standard output and error together, at most 4 KB
};

// Another program, running beside this one and fed through its standard input. No shell has a part in it. Failures are
// EOSErrors that name the program. For one thread at a time.
class TChildProcess final {
 public:
  // Whether there is such a thing on this system. Where there is not, the constructor throws.
  static bool IsAvailable();

  // Starts it; the program is a path. Whenever it shows no sign of life for the given time, waiting for it ends with an
  // EOSError and, when this object goes, with the program's.
  TChildProcess(const std::string& pProgram, const std::vector<std::string>& pArguments, int64_t pPatienceMilliseconds);
  // Ends the program at once unless Finish was called. It never sees an end of its input then, and so cannot take half
  // of it for the whole.
  ~TChildProcess();
  TChildProcess(const TChildProcess&) = delete;
  TChildProcess& operator=(const TChildProcess&) = delete;

  // Hands over bytes, false when the program reads no more; Finish then tells why.
  bool Feed(std::string_view pBytes);

  // Closes the program's input and waits for its end. Once.
  TChildResult Finish();

 private:
  void WaitUntilItReads();
  void TakeOutput();

  std::u16string fProgram;
  int64_t fPatience;
  int fProcess = 0;  // its id, 0 when it has ended
  int fInput = -1;   // our ends
  int fOutput = -1;
  std::string fTaken;
};

}  // namespace Vantrel
