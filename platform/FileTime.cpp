#include "platform/FileTime.h"

#include "platform/Text.h"

namespace Kiv {

std::u16string CurrentDateText() {
  constexpr size_t kDateLength = 10;
  return FromUtf8(FormatIsoLocal(TKivFileTime::Now()).substr(0, kDateLength));
}

}  // namespace Kiv
