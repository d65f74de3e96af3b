#include "presentation/lists/DetailsList.h"

#include <utility>

#include "model/tree/EntryView.h"
#include "presentation/lists/ListParts.h"

namespace Vantrel::Presentation {

namespace {

// Lines of a name and a value; empty values are left out.
class TLines {
 public:
  TLines(TList& pList, const TValueFormat& pFormat) : fList(pList), fFormat(pFormat) {}

  void Add(std::u16string_view pName, std::u16string pText) {
    if (pText.empty()) return;
    fList.fRows.push_back({{std::u16string(pName), std::move(pText)}, std::u16string(pName)});
  }
  void Add(std::u16string_view pName, TColumn pColumn, const TMetaDataValue& pValue) {
    Add(pName, FormatValue(pColumn, pValue, fFormat));
  }
  void AddColumns(const TEntryView& pEntry, std::initializer_list<TColumn> pColumns) {
    for (const TColumn column : pColumns) Add(ColumnInfo(column).fCaption, pEntry.GetFormattedValue(column, fFormat));
  }
  // Both the rounded size and the number of bytes.
  void AddSize(std::u16string_view pName, int64_t pBytes) {
    TValueFormat bytes = fFormat;
    bytes.fSizeUnit = TSizeUnit::suBytes;
    std::u16string text = FormatValue(TColumn::mdSize, pBytes, fFormat);
    if (pBytes >= BytesOfUnit(TSizeUnit::suKB, fFormat.fDecimalUnits) && fFormat.fSizeUnit != TSizeUnit::suBytes)
      text += u" (" + FormatValue(TColumn::mdSize, pBytes, bytes) + u")";
    Add(pName, std::move(text));
  }

 private:
  TList& fList;
  const TValueFormat& fFormat;
};

void AddFolder(TLines& pLines, const IHierarchicalRoot& pRoot, const IFolderData& pFolder) {
  const TEntryView entry(pFolder);
  const TSizeValues values = pFolder.GetValues();
  pLines.AddColumns(entry, {TColumn::mdFullPath});
  pLines.AddSize(ColumnInfo(TColumn::mdSize).fCaption, values.fSize);
  pLines.AddSize(ColumnInfo(TColumn::mdAllocated).fCaption, values.fAllocated);
  pLines.AddColumns(entry, {TColumn::mdFiles, TColumn::mdFolders, TColumn::mdPercentOfParent, TColumn::mdPercentOfRoot,
                            TColumn::mdAverageFileSize, TColumn::mdLastChange, TColumn::mdLastAccess,
                            TColumn::mdCreation, TColumn::mdOwner, TColumn::mdAttributes, TColumn::mdCompression,
                            TColumn::mdDepth, TColumn::mdPathLength});
  if (pRoot.GetComparison())
    pLines.AddColumns(entry, {TColumn::mdSizeChange, TColumn::mdSizeChangePercent, TColumn::mdAllocatedChange,
                              TColumn::mdFileChange, TColumn::mdChangeState});
}

std::u16string StateText(const IHierarchicalRoot& pRoot) {
  const TRootStates state = pRoot.GetState();
  if (state & rsScanning) return u"being scanned";
  if (state & rsCancelled) return u"stopped before its end";
  if (state & rsHasErrors) return u"incomplete, since some folders could not be read";
  return state & rsFinished ? u"complete" : u"";
}

void AddScan(TLines& pLines, const IHierarchicalRoot& pRoot) {
  const TScanProgress progress = pRoot.GetProgress();
  pLines.Add(u"Scan of", pRoot.GetTitle());
  pLines.Add(u"Scanned", TColumn::mdLastChange, DateValue(pRoot.GetScanTimeStamp()));
  pLines.Add(u"State of the scan", StateText(pRoot));
  pLines.Add(u"Folders that could not be read", TColumn::mdFiles, progress.fErrors);
  pLines.Add(u"Left out of the scan", TColumn::mdFiles, progress.fExcludedObjects);
  if (const TRef<IComparison> comparison = pRoot.GetComparison())
    pLines.Add(u"Compared with the scan of", TColumn::mdLastChange, DateValue(comparison->GetScanTimeStamp()));
  const TStorageInformation storage = pRoot.GetStorageInformation();
  pLines.Add(u"Mounted at", storage.fMountPoint);
  pLines.Add(u"Device", storage.fLabel);
  pLines.Add(u"File System", storage.fFileSystem);
  if (storage.fTotalBytes > 0) {
    pLines.AddSize(u"Drive", storage.fTotalBytes);
    pLines.AddSize(u"Free on the drive", storage.fFreeBytes);
  }
}

}  // namespace

TList DetailsList(const IHierarchicalRoot& pRoot, const IFolderData& pFolder, const TValueFormat& pFormat) {
  TList list{u"Details of " + pFolder.GetFullPath(), {{u"Property", TColumn::mdName}, {u"Value", TColumn::mdName}}, {}};
  TLines lines(list, pFormat);
  AddFolder(lines, pRoot, pFolder);
  AddScan(lines, pRoot);
  return list;
}

}  // namespace Vantrel::Presentation
