#pragma once

// Runs another program and feeds its standard input.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Vantrel {

// How a program ended, and the beginning of its output.
struct TChildResult {
  int fExitCode = 0;  // 0 also when a signal ended it
  int fSignal = 0;
  std::string fOutput;  // standard output and error together, at most 4 KB
};

// Another program that runs beside this one and reads its input from it. No shell is involved. Failures are EOSErrors
// that name the program. For one thread at a time.
class TChildProcess final {
 public:
  // Whether this system supports child processes. Where it does not, the constructor throws.
  static bool IsAvailable();

  // Starts the program, which is given as a path. If the program shows no activity for pPatienceMilliseconds, the
  // waiting call throws an EOSError. The destructor then ends the program.
  TChildProcess(const std::string& pProgram, const std::vector<std::string>& pArguments, int64_t pPatienceMilliseconds);
  // Ends the program at once unless Finish was called. The program sees no end of input, so it cannot mistake half of
  // it for the whole.
  ~TChildProcess();
  TChildProcess(const TChildProcess&) = delete;
  TChildProcess& operator=(const TChildProcess&) = delete;

  // Hands over bytes. False when the program no longer reads; Finish then tells why.
  bool Feed(std::string_view pBytes);

  // Closes the program's input and waits for its end. May be called once.
  TChildResult Finish();

 private:
  void WaitUntilItReads();
  void TakeOutput();

  std::u16string fProgram;
  int64_t fPatience;
  int fProcess = 0;  // the process id; 0 after its end
  int fInput = -1;   // this process's ends of the streams
  int fOutput = -1;
  std::string fTaken;
};

}  // namespace Vantrel
