#include "presentation/treemap/TreemapElements.h"

#include <algorithm>

#include "presentation/drawing/TextMeasure.h"

namespace Vantrel::Treemap {

namespace {

TSizeValues ValuesOf(IHierarchicalElement& pNode) {
  if (const IFolderData* folder = pNode.AsFolder()) return folder->GetValues();
  TSizeValues values;
  values.fSize = pNode.GetSize();
  values.fAllocated = pNode.GetAllocated();
  values.fFiles = 1;
  return values;
}

std::u16string NameOf(IHierarchicalElement& pNode) {
  return std::u16string(pNode.GetObjectName());
}

void AddLine(std::u16string& pText, TColumn pColumn, const TMetaDataValue& pValue, const TValueFormat& pFormat) {
  const std::u16string value = FormatValue(pColumn, pValue, pFormat);
  if (value.empty()) return;
  pText += u'\n';
  pText += ColumnInfo(pColumn).fCaption;
  pText += u": ";
  pText += value;
}

}  // namespace

TTreeMapElement::TTreeMapElement(TTreemapElementID pID, TRef<IHierarchicalElement> pNode)
    : fID(pID), fNode(std::move(pNode)), fCaption(NameOf(*fNode)), fValues(ValuesOf(*fNode)) {}

TTreeMapElement::TTreeMapElement(TTreemapElementID pID, std::u16string pCaption, const TSizeValues& pValues)
    : fID(pID), fCaption(std::move(pCaption)), fValues(pValues) {}

std::u16string TTreeMapElement::GetHint(const TValueFormat& pFormat) const {
  // A line break in a name must not look like the end of the name.
  std::u16string hint = Drawing::ShownText(fNode ? fNode->GetFullPath() : fCaption);
  AddLine(hint, TColumn::mdSize, fValues.fSize, pFormat);
  AddLine(hint, TColumn::mdAllocated, fValues.fAllocated, pFormat);
  if (!fNode || fNode->IsFolder()) AddLine(hint, TColumn::mdFiles, fValues.fFiles, pFormat);
  if (!fNode) return hint;
  for (const TColumn column : {TColumn::mdPercentOfParent, TColumn::mdLastChange, TColumn::mdSizeChange})
    AddLine(hint, column, fNode->GetValue(column), pFormat);
  return hint;
}

TTreemapElementFreeSpace::TTreemapElementFreeSpace(TTreemapElementID pID, int64_t pBytes)
    : TTreeMapElement(pID, std::u16string(kCaption), TSizeValues{{pBytes, pBytes, 0}, 0, 0}) {}

std::u16string TTreemapElementFreeSpace::GetHint(const TValueFormat& pFormat) const {
  std::u16string hint = GetCaption();
  AddLine(hint, TColumn::mdSize, GetValues().fSize, pFormat);
  return hint;
}

std::u16string TTreemapElementExtensionGroup::GetHint(const TValueFormat& pFormat) const {
  std::u16string hint = TTreeMapElement::GetHint(pFormat);
  if (!fDescription.empty()) hint.insert(std::min(hint.find(u'\n'), hint.size()), u"\n" + fDescription);
  return hint;
}

}  // namespace Vantrel::Treemap
