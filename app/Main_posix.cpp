// The entry point on Linux: turns arguments into tokens.

#include <string>
#include <vector>

#include "app/Process.h"
#include "app/WindowProgram.h"
#include "platform/text/Text.h"

int main(int pCount, char** pArguments) {
  std::vector<std::u16string> tokens;
  for (int i = 1; i < pCount; ++i) tokens.push_back(Vantrel::FromNativeBytes(pArguments[i]));
  Vantrel::TRunSettings settings = Vantrel::CreateRunSettings("Linux");
  Vantrel::UseWindowProgram(settings, Vantrel::CommandLine::TWindowUse::wuWhenAsked, tokens);
  Vantrel::EndProcess(Vantrel::RunOnStreams(std::move(settings), tokens));
}
