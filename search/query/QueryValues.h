#pragma once

// The functions that build conditions from the values of properties.

#include <string>
#include <string_view>

#include "search/query/Lexer.h"
#include "search/query/Syntax.h"
#include "search/query/ValueParts.h"
#include "search/query/ValueTargets.h"

namespace Vantrel::Search {

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
