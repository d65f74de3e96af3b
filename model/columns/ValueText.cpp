#include "model/columns/ValueText.h"

#include <cmath>

#include "platform/text/Numbers.h"
#include "platform/text/Text.h"

namespace Vantrel {

void AppendNumberText(std::string& pText, TColumn pColumn, int64_t pValue, const TValueFormat& pFormat) {
  if (pFormat.fPlainByteValues)
    AppendInteger(pText, pValue);
  else
    pText += ToUtf8(FormatValue(pColumn, pValue, pFormat));
}

void AppendShareText(std::string& pText, double pShare, const TValueFormat& pFormat) {
  if (pShare < 0 || pShare > 1 || pFormat.fShowUnits || pFormat.fDecimals != 1) {
    pText += ToUtf8(FormatValue(TColumn::mdPercentOfParent, pShare, pFormat));
    return;
  }
  // Tenths of a per cent, halves rounded away from zero.
  const auto tenths = std::llround(pShare * 100.0 * 10);
  AppendInteger(pText, tenths / 10);
  if (pFormat.fDecimalSeparator.size() == 1 && pFormat.fDecimalSeparator[0] < 0x80)
    pText += static_cast<char>(pFormat.fDecimalSeparator[0]);
  else
    pText += ToUtf8(pFormat.fDecimalSeparator);
  AppendInteger(pText, tenths % 10);
}

}  // namespace Vantrel
