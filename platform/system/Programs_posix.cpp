#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <vector>

#include "platform/system/Errors.h"
#include "platform/system/Programs.h"
#include "platform/text/Text.h"

namespace Vantrel {

std::u16string ProgramBeside(std::u16string_view pName) {
  std::error_code error;
  const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return {};
  const std::string path = (self.parent_path() / ToNativeBytes(pName)).string();
  return access(path.c_str(), X_OK) == 0 ? FromNativeBytes(path) : std::u16string();
}

int ContinueAs(const std::u16string& pProgram, std::span<const std::u16string> pArguments, bool) {
  std::vector<std::string> texts{ToNativeBytes(pProgram)};
  for (const std::u16string& argument : pArguments) texts.push_back(ToNativeBytes(argument));
  std::vector<char*> arguments;
  for (std::string& text : texts) arguments.push_back(text.data());
  arguments.push_back(nullptr);
  execv(arguments[0], arguments.data());
  throw EOSError(static_cast<uint32_t>(errno), "Starting a program", pProgram);
}

}  // namespace Vantrel
