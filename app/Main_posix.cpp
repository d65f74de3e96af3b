// The entry point on Linux: turns arguments into tokens.

#include <string>
#include <vector>

#include "app/Process.h"
#include "platform/text/Text.h"

int main(int pCount, char** pArguments) {
  std::vector<std::u16string> tokens;
  for (int i = 1; i < pCount; ++i) tokens.push_back(Vantrel::FromNativeBytes(pArguments[i]));
  Vantrel::RunProcess("Linux", tokens);
}
