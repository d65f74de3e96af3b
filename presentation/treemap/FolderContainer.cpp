#include "presentation/treemap/FolderContainer.h"

#include <algorithm>

#include "model/tree/SingleFile.h"
#include "platform/text/Utf.h"

namespace Vantrel::Treemap {

TTreemapElementID IDOfFolder(IFolderData& pFolder) {
  std::vector<TRef<IHierarchicalElement>> way{TRef<IHierarchicalElement>(&pFolder)};
  while (TRef<IHierarchicalElement> parent = way.back()->GetParentFolder()) way.push_back(std::move(parent));
  TTreemapElementID id = TTreemapElementID::None;
  for (auto node = way.rbegin(); node != way.rend(); ++node) id = ChildID(id, (*node)->GetObjectName());
  return id;
}

TTreemapLook LookOfFolder(IFolderData& pFolder, TTreemapElementID pID, int32_t pLayer, const TTreeRef& pTree,
                          TColorLookup& pColors) {
  const TRef<const TFileTable> files = pTree->fShowFiles ? pFolder.GetFileTable() : nullptr;
  return {pID, pColors.OfFolder(pFolder, pLayer), pFolder.GetSubFolderCount() + (files ? files->Count() : 0)};
}

TFolderContainer::TFolderContainer(TRef<IFolderData> pFolder, TTreemapElementID pID, TTreeRef pTree, int64_t pFreeBytes)
    : fFolder(std::move(pFolder)),
      fID(pID),
      fTree(std::move(pTree)),
      fFreeBytes(pFreeBytes),
      fFolders(fFolder->FindSubFolders()) {
  if (!fTree->fShowFiles) return;
  fFiles = fFolder->GetFileTable();
  if (fFiles) std::erase_if(fFolders, [](const TRef<IFolderData>& pChild) { return pChild->IsFileGroup(); });
  if (fFiles && fTree->fColoring.fScheme == TTreemapColorScheme::csGrowth) ReadEarlierFiles();
}

// Reads each value once, since a running scan changes them.
void TFolderContainer::AppendChildren(std::vector<TTreemapChild>& pChildren) const {
  const TColumn column = fTree->fColoring.fValueColumn;
  uint32_t item = 0;
  for (const TRef<IFolderData>& folder : fFolders) pChildren.push_back({ValueIn(folder->GetValues(), column), item++});
  const size_t files = fFiles ? fFiles->Count() : 0;
  pChildren.reserve(pChildren.size() + files + 1);
  for (size_t i = 0; i < files; ++i) pChildren.push_back({ValueIn((*fFiles)[i], column), item++});
  if (fFreeBytes > 0) pChildren.push_back({fFreeBytes, kFreeSpace});
}

std::u16string_view TFolderContainer::NameOf(uint32_t pItem) const {
  if (pItem == kFreeSpace) return TTreemapElementFreeSpace::kCaption;
  return IsFolder(pItem) ? fFolders[pItem]->GetObjectName() : fFiles->NameOf(FileOf(pItem));
}

// What is not a file or folder gets a name that no file can have.
TTreemapElementID TFolderContainer::IDOf(uint32_t pItem) const {
  if (pItem == kFreeSpace) return ChildID(fID, u"/free");
  if (IsFolder(pItem) && fFolders[pItem]->IsFileGroup()) return ChildID(fID, u"/files");
  return ChildID(fID, NameOf(pItem));
}

TTreemapLook TFolderContainer::GetLook(uint32_t pItem, int32_t pLayer, TColorLookup& pColors) const {
  if (pItem == kFreeSpace) return {IDOf(pItem), ColorOfFreeSpace(fTree->fDark), 0, true};
  if (IsFolder(pItem)) return LookOfFolder(*fFolders[pItem], IDOf(pItem), pLayer, fTree, pColors);
  const TFileRecord& file = FileOf(pItem);
  const std::u16string_view name = fFiles->NameOf(file);
  if (fTree->fColoring.fScheme != TTreemapColorScheme::csGrowth)
    return {ChildID(fID, name), pColors.OfFile(name, file, pLayer, 0), 0};
  const TColor color =
      fEarlierFiles ? pColors.OfFile(name, file, pLayer, EarlierValueOf(pItem)) : pColors.OfGrowth(*fFolder);
  return {ChildID(fID, name), color, 0};
}

TRef<const ITreemapContainer> TFolderContainer::Open(uint32_t pItem) const {
  if (pItem == kFreeSpace || !IsFolder(pItem)) return nullptr;
  return MakeRef<TFolderContainer>(fFolders[pItem], IDOf(pItem), fTree);
}

TRef<TTreeMapElement> TFolderContainer::CreateElement(uint32_t pItem) const {
  if (pItem == kFreeSpace) return MakeRef<TTreemapElementFreeSpace>(IDOf(pItem), fFreeBytes);
  if (IsFolder(pItem)) return MakeRef<TTreeMapElement>(IDOf(pItem), fFolders[pItem]);
  return MakeRef<TTreeMapElement>(IDOf(pItem), MakeRef<TFileData>(*fFolder, *fFiles, FileOf(pItem)));
}

// --- growth of files -----------------------------------------------------------------------------------------------

void TFolderContainer::ReadEarlierFiles() {
  const TRef<IComparison>& comparison = fTree->fColoring.fComparison;
  if (!comparison || !comparison->KnowsFiles()) return;
  fEarlierFiles = std::make_unique<boost::unordered_flat_map<std::u16string, int64_t>>();
  const TRef<const TFileTable> earlier = comparison->EarlierFiles(*fFolder);
  if (!earlier) return;
  fEarlierFiles->reserve(earlier->Count());
  for (size_t i = 0; i < earlier->Count(); ++i) {
    const TFileRecord& file = (*earlier)[i];
    fEarlierFiles->emplace(FoldedName(earlier->NameOf(file)), ValueIn(file, fTree->fColoring.fValueColumn));
  }
}

// An earlier file that was empty has grown; it is not new.
int64_t TFolderContainer::EarlierValueOf(uint32_t pItem) const {
  const auto found = fEarlierFiles->find(FoldedName(NameOf(pItem)));
  return found == fEarlierFiles->end() ? 0 : std::max<int64_t>(found->second, 1);
}

std::u16string TFolderContainer::FoldedName(std::u16string_view pName) const {
  std::u16string name(pName);
  if (!fTree->fLetterCaseCounts) std::transform(name.begin(), name.end(), name.begin(), UpcaseUnit);
  return name;
}

}  // namespace Vantrel::Treemap
