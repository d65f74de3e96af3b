#include "model/tree/FillChildrenFuture.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>

#include "model/roots/EarlierFiles.h"
#include "model/tree/EntryView.h"

namespace Vantrel {

namespace {

// A value as a number in the same order. "No value" comes first.
int64_t NumberOf(const TMetaDataValue& pValue) {
  if (const auto* number = std::get_if<int64_t>(&pValue)) return *number;
  if (const auto* date = std::get_if<TKivFileTime>(&pValue)) return date->fTicks;
  if (const auto* share = std::get_if<double>(&pValue)) return std::llround(std::clamp(*share, -1e5, 1e5) * 1e12);
  return std::numeric_limits<int64_t>::min();
}

// Lists, sorts and cuts the children of one folder.
class TChildLister {
 public:
  TChildLister(IFolderData& pFolder, const IHierarchicalRoot& pRoot, const TChildListSettings& pSettings,
               const std::function<bool()>& pIsCancelled)
      : fFolder(pFolder), fSettings(pSettings), fIsCancelled(pIsCancelled), fComparison(pRoot.GetComparison()) {
    if (fComparison) fEarlier.emplace(fComparison, pRoot.GetPathDelimiter());
  }

  TChildList List() {
    Collect();
    std::vector<uint32_t> order(Count());
    std::iota(order.begin(), order.end(), 0u);
    if (!ReadKeys()) return {};
    const size_t shown = Sort(order);
    TChildList list;
    list.fFiles = fFiles;
    list.fRows.reserve(shown);
    for (size_t i = 0; i < shown; ++i) list.fRows.push_back(RowOf(order[i]));
    AddLeftOut(list, order, shown);
    return list;
  }

 private:
  // Children are numbered: the sub-folders first, then the files.
  size_t Count() const { return fFolders.size() + (fFiles ? fFiles->Count() : 0); }
  bool IsFolder(uint32_t pChild) const { return pChild < fFolders.size(); }
  const TFileRecord& FileOf(uint32_t pChild) const { return (*fFiles)[pChild - fFolders.size()]; }
  std::u16string_view NameOf(uint32_t pChild) const {
    return IsFolder(pChild) ? fFolders[pChild]->GetObjectName() : fFiles->NameOf(FileOf(pChild));
  }
  int64_t SizeOf(uint32_t pChild) const { return IsFolder(pChild) ? fSizes[pChild] : FileOf(pChild).fSize; }
  bool IsCancelled() const { return fIsCancelled && fIsCancelled(); }

  void Collect() {
    fFolders = fFolder.FindSubFolders();
    const bool isGone = (fFolder.GetFolderState() & fsIsDummyForComparison) != 0;
    if (fComparison && !isGone)
      for (TRef<IFolderData>& gone : fComparison->FindGone(fFolder)) fFolders.push_back(std::move(gone));
    const bool hasGroup = fFolder.GetFilesNode() != nullptr;
    if (!fSettings.fShowsFileGroup)
      std::erase_if(fFolders, [](const TRef<IFolderData>& pChild) { return pChild->IsFileGroup(); });
    if (fSettings.fShowsFiles && (!hasGroup || !fSettings.fShowsFileGroup)) fFiles = fFolder.GetFileTable();
    fSizes.reserve(fFolders.size());
    for (const TRef<IFolderData>& child : fFolders) fSizes.push_back(child->GetSize());
  }

  TMetaDataValue ValueOf(uint32_t pChild) {
    if (IsFolder(pChild)) return TEntryView(*fFolders[pChild]).GetValue(fSettings.fSortColumn);
    return TEntryView(*fFiles, FileOf(pChild), &fFolder, fEarlier ? &*fEarlier : nullptr)
        .GetValue(fSettings.fSortColumn);
  }

  // Values are read once, since a running scan changes them during the sort. False when cancelled.
  bool ReadKeys() {
    constexpr uint32_t kBetweenLooks = 4096;
    fIsText = ColumnInfo(fSettings.fSortColumn).fKind == TColumnKind::ckText;
    const bool isName = fSettings.fSortColumn == TColumn::mdName;
    if (isName) return true;
    fIsText ? fTexts.resize(Count()) : fNumbers.resize(Count());
    for (uint32_t child = 0; child < Count(); ++child) {
      if (child % kBetweenLooks == 0 && IsCancelled()) return false;
      if (!fIsText) {
        fNumbers[child] = NumberOf(ValueOf(child));
      } else {
        TMetaDataValue value = ValueOf(child);
        if (auto* text = std::get_if<std::u16string>(&value)) fTexts[child] = std::move(*text);
      }
    }
    return true;
  }

  // Below 0 if the first ranks before the second in ascending order, 0 if the sort column does not decide.
  int CompareKeys(uint32_t pA, uint32_t pB) const {
    if (!fNumbers.empty()) return (fNumbers[pA] > fNumbers[pB]) - (fNumbers[pA] < fNumbers[pB]);
    return fTexts.empty() ? NameOf(pA).compare(NameOf(pB)) : fTexts[pA].compare(fTexts[pB]);
  }

  bool RanksBefore(uint32_t pA, uint32_t pB) const {
    if (const int order = CompareKeys(pA, pB); order != 0) return (order < 0) != fSettings.fDescending;
    if (SizeOf(pA) != SizeOf(pB)) return SizeOf(pA) > SizeOf(pB);
    if (const int order = NameOf(pA).compare(NameOf(pB)); order != 0) return order < 0;
    return pA < pB;  // a folder that has gone and a file of its name
  }

  // Sorts the rows to be shown to the front and returns their number.
  size_t Sort(std::vector<uint32_t>& pOrder) const {
    const auto before = [this](uint32_t pA, uint32_t pB) { return RanksBefore(pA, pB); };
    size_t shown = std::min(fSettings.fMostRows, pOrder.size());
    const auto end = pOrder.begin() + static_cast<ptrdiff_t>(shown);
    if (shown < pOrder.size()) std::nth_element(pOrder.begin(), end, pOrder.end(), before);
    std::sort(pOrder.begin(), end, before);
    if (shown == pOrder.size() || fSettings.fWanted.empty()) return shown;
    const auto wanted =
        std::find_if(end, pOrder.end(), [this](uint32_t pChild) { return NameOf(pChild) == fSettings.fWanted; });
    if (wanted != pOrder.end()) std::swap(pOrder[shown++], *wanted);
    return shown;
  }

  TChildRow RowOf(uint32_t pChild) const {
    if (IsFolder(pChild)) return {fFolders[pChild], TChildRow::kNone};
    return {nullptr, static_cast<uint32_t>(pChild - fFolders.size())};
  }

  void AddLeftOut(TChildList& pList, const std::vector<uint32_t>& pOrder, size_t pShown) const {
    pList.fMoreRows = static_cast<int64_t>(pOrder.size() - pShown);
    for (size_t i = pShown; i < pOrder.size(); ++i) {
      if (IsFolder(pOrder[i])) {
        pList.fMore += fFolders[pOrder[i]]->GetValues();
        continue;
      }
      const TFileRecord& file = FileOf(pOrder[i]);
      pList.fMore += TBasicSizeValues{file.fSize, file.fAllocated, 1};
    }
  }

  IFolderData& fFolder;
  const TChildListSettings& fSettings;
  const std::function<bool()>& fIsCancelled;
  const TRef<IComparison> fComparison;
  std::optional<TEarlierFiles> fEarlier;
  std::vector<TRef<IFolderData>> fFolders;
  std::vector<int64_t> fSizes;  // of the folders
  TRef<const TFileTable> fFiles;
  bool fIsText = false;
  // The values of the sort column, by child. Both are empty when it is the name.
  std::vector<int64_t> fNumbers;
  std::vector<std::u16string> fTexts;
};

}  // namespace

TChildList ListChildren(IFolderData& pFolder, const IHierarchicalRoot& pRoot, const TChildListSettings& pSettings,
                        const std::function<bool()>& pIsCancelled) {
  return TChildLister(pFolder, pRoot, pSettings, pIsCancelled).List();
}

void TFillChildrenFuture::Run() {
  TChildList list = ListChildren(*fFolder, *fRoot, fSettings, [this] { return IsCancelled(); });
  if (!IsCancelled()) fCompletion(*this, std::move(list));
}

}  // namespace Vantrel
