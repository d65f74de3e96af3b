// The entry point on Windows: turns arguments into tokens.

#include <string>
#include <vector>

#include "app/Process.h"
#include "app/WindowProgram.h"
#include "automation/commandline/CommandLineParser.h"
#include "platform/system/CommandLineText.h"

// The C library's own arguments are not used. It reads \" as a quote and so splits "C:\my folder\" at the wrong place.
int wmain(int, wchar_t**) {
  std::vector<std::u16string> tokens = Vantrel::TKivCommandLineParser::SplitCommandLine(Vantrel::ProcessCommandLine());
  if (!tokens.empty()) tokens.erase(tokens.begin());  // the program's name
  Vantrel::TRunSettings settings = Vantrel::CreateRunSettings("Windows");
  Vantrel::UseWindowProgram(settings, Vantrel::CommandLine::TWindowUse::wuUsual, tokens);
  Vantrel::EndProcess(Vantrel::RunOnStreams(std::move(settings), tokens));
}
