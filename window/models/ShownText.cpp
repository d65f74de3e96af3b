#include "window/models/ShownText.h"

#include <QLocale>
#include <algorithm>

#include "platform/text/Text.h"

namespace Vantrel::Window {

QString ToQString(std::u16string_view pText) {
  return QString::fromUtf16(pText.data(), static_cast<qsizetype>(pText.size()));
}

std::u16string FromQString(const QString& pText) {
  return pText.toStdU16String();
}

QString Shown(std::u16string_view pText) {
  const bool isPlain =
      std::all_of(pText.begin(), pText.end(), [](char16_t pUnit) { return pUnit >= 32 && pUnit < 127; });
  return isPlain ? ToQString(pText) : FromUtf8Text(ToDisplay(pText));
}

QString FromUtf8Text(std::string_view pText) {
  return QString::fromUtf8(pText.data(), static_cast<qsizetype>(pText.size()));
}

TValueFormat WindowFormat(TSizeUnit pUnit) {
  TValueFormat format;
  format.fSizeUnit = pUnit;
  const QLocale locale;
  format.fThousandsSeparator = locale.groupSeparator().toStdU16String();
  format.fDecimalSeparator = locale.decimalPoint().toStdU16String();
  return format;
}

QString ShownValue(TColumn pColumn, const TMetaDataValue& pValue, const TValueFormat& pFormat) {
  return Shown(FormatValue(pColumn, pValue, pFormat));
}

QString ShownSize(int64_t pBytes, const TValueFormat& pFormat) {
  return ShownValue(TColumn::mdSize, pBytes, pFormat);
}

QString ShownCount(int64_t pCount, const TValueFormat& pFormat) {
  return ShownValue(TColumn::mdFiles, pCount, pFormat);
}

}  // namespace Vantrel::Window
