#include "scan/storage/EnumeratorBase.h"

#include "model/tree/EntryView.h"
#include "platform/files/Paths.h"
#include "platform/text/Text.h"

namespace Vantrel::Enumerators {
namespace {

uint64_t CountParts(std::u16string_view pPath, char16_t pDelimiter) {
  uint64_t parts = 0;
  bool inPart = false;
  for (char16_t c : pPath) {
    bool isDelimiter = c == pDelimiter || (pDelimiter == u'\\' && c == u'/');
    if (!isDelimiter && !inPart) ++parts;
    inPart = !isDelimiter;
  }
  return parts;
}

}  // namespace

TMetaDataValue TBaseHierarchicalEnumerator::GetValue(TColumn pColumn) const {
  return TEntryView(*this).GetValue(pColumn);
}

uint64_t TBaseHierarchicalEnumerator::GetParentPathDepth() const {
  if (!fParentPathDepth) fParentPathDepth = CountParts(GetPath(), NativePathDelimiter());
  return *fParentPathDepth;
}

std::u16string TBaseVisualHierarchicalEnumerator::GetDisplayName() const {
  return FromUtf8(ToDisplay(GetObjectName()));
}

}  // namespace Vantrel::Enumerators
