#pragma once

// Text between the program and Qt, and values as the window shows them.

#include <QString>
#include <string_view>

#include "model/columns/MetaData.h"

namespace Vantrel::Window {

// The text unchanged, for paths that are used again.
QString ToQString(std::u16string_view pText);
std::u16string FromQString(const QString& pText);
// The text for display on one line: control characters and direction marks become visible escapes.
QString Shown(std::u16string_view pText);
// UTF-8, as messages of the program are.
QString FromUtf8Text(std::string_view pText);

// How the window writes values: the user's unit and separators.
TValueFormat WindowFormat(TSizeUnit pUnit);
QString ShownValue(TColumn pColumn, const TMetaDataValue& pValue, const TValueFormat& pFormat);
QString ShownSize(int64_t pBytes, const TValueFormat& pFormat);
QString ShownCount(int64_t pCount, const TValueFormat& pFormat);

}  // namespace Vantrel::Window
