#include "platform/system/Errors.h"

#include <fmt/format.h>

#include "platform/text/Text.h"

namespace Vantrel {

EOSError::EOSError(uint32_t pCode, std::string_view pOperation, std::u16string_view pObject)
    : EException(
          fmt::format("{}: {}: {} (Error Code {})", pOperation, ToQuotedDisplay(pObject), OSErrorText(pCode), pCode)),
      fCode(pCode),
      fOperation(pOperation),
      fObject(pObject) {}

std::string OSErrorText(uint32_t pCode) {
  if (pCode == kErrorPseudoFileSystem)
    return "It belongs to a pseudo file system of the kernel, where nothing is stored";
  if (pCode == kErrorFileTooLarge) return "The file is too large to be read as a whole";
  return SystemErrorText(pCode);
}

}  // namespace Vantrel
