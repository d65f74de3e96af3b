// The entry points: arguments become tokens.

#include <string>
#include <vector>

#include "app/Process.h"
#include "automation/commandline/CommandLineParser.h"
#include "platform/system/CommandLineText.h"

// The C library's own arguments are not used: it reads \" as a quote, which takes "C:\my folder\" apart at the wrong
// place.
int wmain(int, wchar_t**) {
  std::vector<std::u16string> tokens = Vantrel::TKivCommandLineParser::SplitCommandLine(Vantrel::ProcessCommandLine());
  if (!tokens.empty()) tokens.erase(tokens.begin());  // the program's name
  Vantrel::RunProcess("Windows", tokens);
}
