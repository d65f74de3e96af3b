#pragma once

// Writes lists as JSON: largest files, extensions, owners, the history, what a search found, duplicates.

#include <string_view>

#include "export/json/JSONText.h"
#include "export/text/ListExport.h"

namespace Vantrel::Exporting {

// Writes a list as a document of this kind, such as "extensions". pRoot says which scan the list is of; nullptr for a
// list of no scan. Columns have the keys that docs/json.md describes. Exceptions of the sink are passed on.
void WriteListAsJSON(const TListInParts& pParts, std::string_view pKind, const IHierarchicalRoot* pRoot,
                     JSON::TLayout pLayout, IByteSink& pSink);
void WriteListAsJSON(const Presentation::TList& pList, std::string_view pKind, const IHierarchicalRoot* pRoot,
                     JSON::TLayout pLayout, IByteSink& pSink);

}  // namespace Vantrel::Exporting
