#include "presentation/treemap/TreemapPresenters.h"

#include <algorithm>
#include <map>

#include "model/options/GlobalOptions.h"
#include "model/statistics/FileAges.h"
#include "platform/text/Text.h"
#include "presentation/treemap/FolderContainer.h"

namespace Vantrel::Treemap {

namespace {

// For a tree whose scan collected no ages.
TRef<IFileAges> StandardAges() {
  TRef<TFileAges> ages = MakeRef<TFileAges>();
  ages->SetAsString(FromUtf8(TGlobalOptions().FileAges));
  return ages;
}

// The container around the top folder. Its only child is that folder.
class TTopContainer : public TInterfaced<ITreemapContainer> {
 public:
  TTopContainer(TRef<IFolderData> pFolder, TTreeRef pTree)
      : fFolder(std::move(pFolder)), fTree(std::move(pTree)), fID(IDOfFolder(*fFolder)), fFreeBytes(FreeBytes()) {}

  void AppendChildren(std::vector<TTreemapChild>& pChildren) const override {
    pChildren.push_back({ValueIn(fFolder->GetValues(), fTree->fColoring.fValueColumn) + fFreeBytes, 0});
  }
  bool ComesBefore(uint32_t, uint32_t) const override { return false; }
  TTreemapLook GetLook(uint32_t, int32_t pLayer, TColorLookup& pColors) const override {
    TTreemapLook look = LookOfFolder(*fFolder, fID, pLayer, fTree, pColors);
    look.fChildren += fFreeBytes > 0 ? 1 : 0;
    return look;
  }
  TRef<const ITreemapContainer> Open(uint32_t) const override {
    return MakeRef<TFolderContainer>(fFolder, fID, fTree, fFreeBytes);
  }
  std::u16string GetCaption(uint32_t) const override {
    return std::u16string(fFolder->GetParentFolder() ? fFolder->GetObjectName() : fFolder->GetFullPath());
  }
  TRef<TTreeMapElement> CreateElement(uint32_t) const override { return MakeRef<TTreeMapElement>(fID, fFolder); }

 private:
  int64_t FreeBytes() const {
    if (!fTree->fShowFreeSpace || fTree->fColoring.fValueColumn == TColumn::mdFiles) return 0;
    const TRef<IHierarchicalRoot> root = fFolder->GetRoot();
    return root ? std::max<int64_t>(root->GetStorageInformation().fFreeBytes, 0) : 0;
  }

  const TRef<IFolderData> fFolder;
  const TTreeRef fTree;
  const TTreemapElementID fID;
  const int64_t fFreeBytes;
};

}  // namespace

TTreeMapChartBasePresenter::TTreeMapChartBasePresenter(TRef<IFolderData> pFolder, TTreeMapOptions pOptions)
    : fFolder(std::move(pFolder)) {
  TTreemapColoring& coloring = fTree.fColoring;
  coloring.fScheme = pOptions.fScheme;
  coloring.fValueColumn = pOptions.fValueColumn;
  coloring.fGroups = pOptions.fGroups ? pOptions.fGroups : CommonFileTypeGroups();
  coloring.fNow = TKivFileTime::Now();
  fTree.fShowFreeSpace = pOptions.fShowFreeSpace;
  if (const TRef<IHierarchicalRoot> root = fFolder->GetRoot()) {
    coloring.fComparison = root->GetComparison();
    fTree.fLetterCaseCounts = root->GetPathDelimiter() == u'/';
    if (root->GetScanTimeStamp().IsSet()) coloring.fNow = root->GetScanTimeStamp();
    if (const TRef<IScanConfiguration> configuration = root->GetScanConfiguration()) {
      coloring.fAges = configuration->GetFileAges();
      if (configuration->GetFileAgesDateType() != TDateType::dtNone)
        coloring.fDateType = configuration->GetFileAgesDateType();
    }
  }
  if (!coloring.fAges || coloring.fAges->GetCount() == 0) coloring.fAges = StandardAges();
}

TRef<const ITreemapContainer> TTreeMapChartBasePresenter::GetTop(const TTreemapSettings& pSettings) const {
  auto tree = MakeRef<TTree>(fTree);
  tree->fShowFiles = pSettings.fFlags.Has(TTreemapFlag::tmfShowLeafs);
  tree->fDark = pSettings.fDark;
  return MakeRef<TTopContainer>(fFolder, std::move(tree));
}

std::vector<TTreemapLegendItem> TTreeMapChartBasePresenter::GetLegend() const {
  std::vector<TTreemapLegendItem> legend;
  switch (fTree.fColoring.fScheme) {
    case TTreemapColorScheme::csType:
    case TTreemapColorScheme::csExtension:
      return LegendOfExtensions();
    case TTreemapColorScheme::csAge:
      for (int i = 0; i < fTree.fColoring.fAges->GetCount(); ++i)
        legend.push_back({fTree.fColoring.fAges->GetLabel(i), ColorOfAge(i, fTree.fColoring.fAges->GetCount())});
      return legend;
    case TTreemapColorScheme::csDepth:
      for (int32_t layer = 1; layer <= 6; ++layer)
        legend.push_back({static_cast<char16_t>(u'0' + layer) + std::u16string(u". level"), ColorOfLayer(layer)});
      return legend;
    case TTreemapColorScheme::csGrowth:
      return {{u"Shrunk", ColorOfGrowth(1'000'000, 1)},
              {u"Unchanged", ColorOfGrowth(1, 1)},
              {u"Grown", ColorOfGrowth(1, 1'000'000)},
              {u"New", ColorOfGrowth(0, 1)}};
  }
  return legend;
}

// The groups or extensions of the folder, those with the largest value first.
std::vector<TTreemapLegendItem> TTreeMapChartBasePresenter::LegendOfExtensions() const {
  constexpr size_t kMostItems = 12;
  const TRef<ICustomAssocSizeArray> extensions = fFolder->GetExtensionSizeArray();
  if (!extensions) return {};
  const TTreemapColoring& coloring = fTree.fColoring;
  const bool byType = coloring.fScheme == TTreemapColorScheme::csType;
  std::map<std::u16string, std::pair<int64_t, TColor>> sums;
  for (const TKeyedSizeValues& entry : extensions->GetEntries()) {
    const std::vector<int> groups = byType ? coloring.fGroups->GetGroupIndexesOfKey(entry.fKey) : std::vector<int>();
    if (byType && groups.empty()) continue;
    auto& sum = sums[byType ? coloring.fGroups->GetItem(groups.front())->GetCaption() : TextOfKey(entry.fKey)];
    sum.first += ValueIn(entry.fValues, coloring.fValueColumn);
    sum.second = byType ? ColorOfFileTypeGroup(groups.front(), coloring.fGroups->GetCount())
                        : extensions->GetColorForKey(TextOfKey(entry.fKey));
  }
  std::vector<std::pair<int64_t, TTreemapLegendItem>> items;
  for (const auto& [text, sum] : sums)
    if (sum.first > 0) items.push_back({sum.first, {text, sum.second}});
  std::stable_sort(items.begin(), items.end(), [](const auto& pA, const auto& pB) { return pA.first > pB.first; });
  items.resize(std::min(items.size(), kMostItems));
  std::vector<TTreemapLegendItem> legend;
  for (auto& item : items) legend.push_back(std::move(item.second));
  return legend;
}

}  // namespace Vantrel::Treemap
