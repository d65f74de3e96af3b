#include "app/WindowProgram.h"

#include <cstdio>

#include "platform/system/Programs.h"

namespace Vantrel {

void UseWindowProgram(TRunSettings& pSettings, CommandLine::TWindowUse pUse, std::span<const std::u16string> pTokens) {
  const std::u16string program = ProgramBeside(u"vantrel-gui");
  if (program.empty()) return;
  pSettings.fAbilities = {pUse, true};
  pSettings.fContinueInWindowProgram = [program, pTokens](bool pWait) {
    std::fflush(nullptr);
    return ContinueAs(program, pTokens, pWait);
  };
}

}  // namespace Vantrel
