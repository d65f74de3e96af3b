#include "scan/storage/EnumeratorBase.h"

#include "model/tree/FileNames.h"
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

TMetaDataValue DateValue(TKivFileTime pDate) {
  return pDate.IsSet() ? TMetaDataValue(pDate) : TMetaDataValue();
}

TMetaDataValue TextValue(std::u16string pText) {
  return pText.empty() ? TMetaDataValue() : TMetaDataValue(std::move(pText));
}

}  // namespace

TMetaDataValue TBaseHierarchicalEnumerator::GetValue(TColumn pColumn) const {
  switch (pColumn) {
    case TColumn::mdName:
      return TextValue(std::u16string(GetObjectName()));
    case TColumn::mdFullPath:
      return TextValue(GetFullPath());
    case TColumn::mdParentPath:
      return TextValue(GetPath());
    case TColumn::mdExtension:
      return IsFolder() ? TMetaDataValue() : TextValue(std::u16string(ExtensionColumnOfName(GetObjectName())));
    case TColumn::mdOwner:
      return TextValue(GetOwner());
    case TColumn::mdSize:
      return GetSize();
    case TColumn::mdAllocated:
      return GetAllocated();
    case TColumn::mdFiles:
      return int64_t{IsFolder() ? 0 : 1};
    case TColumn::mdFolders:
      return int64_t{IsFolder() ? 1 : 0};
    case TColumn::mdItems:
      return int64_t{1};
    case TColumn::mdLastAccess:
      return DateValue(GetLastAccessDate());
    case TColumn::mdLastChange:
      return DateValue(GetLastChangeDate());
    case TColumn::mdCreation:
      return DateValue(GetCreationDate());
    case TColumn::mdAttributes:
      return int64_t{GetAttributes()};
    case TColumn::mdPathLength:
      return static_cast<int64_t>(GetFullPath().size());
    case TColumn::mdDepth:
      return static_cast<int64_t>(GetParentPathDepth() + 1);
    default:
      return {};  // columns that only a tree node has
  }
}

uint64_t TBaseHierarchicalEnumerator::GetParentPathDepth() const {
  if (!fParentPathDepth) fParentPathDepth = CountParts(GetPath(), NativePathDelimiter());
  return *fParentPathDepth;
}

std::u16string TBaseVisualHierarchicalEnumerator::GetDisplayName() const {
  return FromUtf8(ToDisplay(GetObjectName()));
}

}  // namespace Vantrel::Enumerators
