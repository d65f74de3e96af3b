#include "platform/Errors.h"

#include <fmt/format.h>

#include "platform/Text.h"

namespace Kiv {

EOSError::EOSError(uint32_t pCode, std::string_view pOperation, std::u16string_view pObject)
    : EException(
          fmt::format("{}: \"{}\": {} (Error Code {})", pOperation, ToDisplay(pObject), OSErrorText(pCode), pCode)),
      fCode(pCode),
      fOperation(pOperation),
      fObject(pObject) {}

}  // namespace Kiv
