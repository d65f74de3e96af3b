#pragma once

// The functions that build conditions from the values of properties.

#include <string>
#include <string_view>
#include <vector>

#include "search/query/Lexer.h"
#include "search/query/Syntax.h"
#include "search/query/ValueTargets.h"

namespace Vantrel::Search {

// One alternative of a value.
struct TValuePart {
  std::u16string fText;  // without quotes
  size_t fBegin;         // in the value as typed
  size_t fLength;        // as typed
};

// Splits a value at the pSeparators that stand outside quotes. Empty parts are left out, unless they are quoted.
std::vector<TValuePart> SplitValue(std::u16string_view pValue, std::u16string_view pSeparators);

// The conditions on one kind of value each. The functions keep a copy of the settings.
namespace PropertyFunctions {

TPropertyFunction Name(const TQuerySettings& pSettings);
TPropertyFunction FolderPath(const TQuerySettings& pSettings);
TPropertyFunction Extension(const TQuerySettings& pSettings);
TPropertyFunction FileType();
TPropertyFunction Content();
TPropertyFunction Attribute();
TPropertyFunction Text(const TValueTarget& pTarget, const TQuerySettings& pSettings);
TPropertyFunction Size(TColumn pTarget);  // mdSize or mdAllocated
TPropertyFunction Date(const TValueTarget& pTarget, const TQuerySettings& pSettings);
TPropertyFunction PathLength();
TPropertyFunction Level();
TPropertyFunction NumberProperty(TFileProperty pProperty);
TPropertyFunction BrokenLink();
TPropertyFunction EmptyFolder();
// For "mdata:" with a name that is not in the list of known ones.
TPropertyFunction UnknownMetaData(std::string pKnownNames);

}  // namespace PropertyFunctions

}  // namespace Vantrel::Search
