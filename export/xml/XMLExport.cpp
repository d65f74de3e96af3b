#include "export/xml/XMLExport.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <tuple>

#include "export/xml/XMLReader.h"
#include "export/xml/XMLUtils.h"
#include "export/xml/ZipFile.h"
#include "model/statistics/AssocSizeArray.h"
#include "model/statistics/FileAges.h"
#include "model/statistics/FileStatistics.h"
#include "platform/files/OutputFile.h"
#include "platform/files/Paths.h"
#include "platform/system/Errors.h"
#include "platform/text/Numbers.h"
#include "platform/text/Text.h"

namespace Vantrel::Exporting {

using XML::TXMLAttributes;

namespace {

struct TColumnTag {
  TColumn fColumn;
  std::string_view fTag;
};

// The format's tags whose columns the catalogue has.
constexpr TColumnTag kTags[] = {
    {TColumn::mdName, "Name"},
    {TColumn::mdAttributes, "Attributes"},
    {TColumn::mdPercentOfParent, "Percent"},
    {TColumn::mdOwner, "Owner"},
    {TColumn::mdParentPath, "PathWithoutName"},
    {TColumn::mdCompression, "Compression"},
    {TColumn::mdDepth, "DirLevel"},
    {TColumn::mdAverageFileSize, "AverageFileSize"},
    {TColumn::mdPathLength, "PathLength"},
    {TColumn::mdSizeChange, "SizeChange"},
    {TColumn::mdSizeChangePercent, "SizeChangePercent"},
    {TColumn::mdFileChange, "FileChange"},
};

// Sizes and counts are attributes of SizeData.
bool IsSizeColumn(TColumn pColumn) {
  return pColumn == TColumn::mdSize || pColumn == TColumn::mdAllocated || pColumn == TColumn::mdFiles ||
         pColumn == TColumn::mdFolders || pColumn == TColumn::mdItems;
}

void AddSizes(TXMLAttributes& pAttributes, const TBasicSizeValues& pValues) {
  pAttributes.Add("Size", pValues.fSize);
  pAttributes.Add("Allocated", pValues.fAllocated);
  pAttributes.Add("Files", pValues.fFiles);
}

}  // namespace

// Writes the elements of folders, for the whole tree or for one of its folders.
class TCustomXMLExport::TFolderElements final : public TRowWriter, private IByteSink {
 public:
  // pExport must outlive this object.
  explicit TFolderElements(const TCustomXMLExport& pExport)
      : fExport(pExport), fStream(XML::TXMLFileStream::Inside(*this)) {}

  std::unique_ptr<TRowWriter> Branch() const override;
  bool BeginNode(const TTreeRow& pRow, bool pIsComplete) override;
  bool EndNode(const TTreeRow& pRow) override;
  void Flush() override { fStream.Flush(); }

 private:
  void Write(std::string_view pBytes) override { fText.fBytes += pBytes; }
  void WriteErrors(const IFolderData& pFolder);
  void WriteColumn(const TEntryView& pEntry, TColumn pColumn);
  void WriteStatistics(const IFolderData& pFolder);
  void WriteSizeArray(std::string_view pName, const std::vector<TKeyedSizeValues>& pRecords);
  void WriteFileAges(const std::vector<TKeyedSizeValues>& pRecords);

  const TCustomXMLExport& fExport;
  XML::TXMLFileStream fStream;
  TXMLAttributes fAttributes;
  std::u16string fPath;                // of the innermost open folder, so no ancestors are asked
  std::vector<size_t> fParentLengths;  // the path lengths of the open folders' parents
  TStatisticsReading fStatistics;
  std::vector<TKeyedSizeValues> fSorted;
  std::string fInterval;
};

TCustomXMLExport::TCustomXMLExport(const TMediaSettings& pSettings, std::string pProgramName, std::string pVersion)
    : TBaseExport(pSettings), fProgramName(std::move(pProgramName)), fVersion(std::move(pVersion)) {
  SetColumns(
      {TColumn::mdAttributes, TColumn::mdLastAccess, TColumn::mdLastChange, TColumn::mdCreation, TColumn::mdOwner});
}

std::string_view TCustomXMLExport::TagOf(TColumn pMetaData) {
  for (const TColumnTag& tag : kTags)
    if (tag.fColumn == pMetaData) return tag.fTag;
  throw EInvalidArgumentValue("TCustomXMLExport.TagOf: pMetaData: the column \"" + ToUtf8(ColumnInfo(pMetaData).fName) +
                              "\" has no element in XML files");
}

bool TCustomXMLExport::IsFullExport() const {
  constexpr TIncludedObjectTypes kAllRows = ioFolders | ioFileGroups;
  return Settings().fRecursionLevel.fLevel == TRecursionLevel::kUnlimited && Settings().fSmallestFolder == 0 &&
         Settings().fSmallestShare == 0 && (Settings().fIncludedObjectTypes & kAllRows) == kAllRows;
}

void TCustomXMLExport::Export(IHierarchicalRoot& pRoot, IByteSink& pSink) {
  const TRef<IFolderData> top = pRoot.GetTopFolder();
  if (!top) throw EInvalidOperation("TCustomXMLExport.Export: the root has not been scanned");
  PrepareFolders(pRoot);
  XML::TXMLFileStream stream(pSink);
  stream.StartDocument();
  TXMLAttributes attributes;
  attributes.Add("Type", pRoot.GetPathDelimiter() == u'/' ? "TCustomUnixRoot" : "TFileSystemRoot");
  stream.StartElement("Root", attributes);
  WriteHeader(pRoot, stream);
  stream.Flush();
  TFolderElements folders(*this);
  WalkInParallel(*top, folders, [&pSink](const TRowText& pText) {
    pSink.Write(pText.fBytes);
    return true;
  });
  stream.EndElement("Root");
  stream.EndDocument();
}

void TCustomXMLExport::PrepareFolders(IHierarchicalRoot& pRoot) {
  fFormat = ValueFormat();
  fDelimiter = pRoot.GetPathDelimiter();
  fErrors = pRoot.GetErrors();
  std::stable_sort(fErrors.begin(), fErrors.end(), [](const TScanError& pA, const TScanError& pB) {
    if (pA.fObject != pB.fObject) return std::less<>()(pA.fObject.get(), pB.fObject.get());
    return std::tie(pA.fPath, pA.fCode) < std::tie(pB.fPath, pB.fCode);  // threads record errors in any order
  });
  fFileAgesNames.clear();
  const IFileAges& ages = *pRoot.GetScanConfiguration()->GetFileAges();
  for (int i = 0; i < ages.GetCount(); ++i) fFileAgesNames.push_back("Days_" + std::to_string(ages.GetItem(i)));
}

// --- folders -------------------------------------------------------------------------------------------------------

std::unique_ptr<TRowWriter> TCustomXMLExport::TFolderElements::Branch() const {
  auto elements = std::make_unique<TFolderElements>(fExport);
  elements->fPath = fPath;
  return elements;
}

bool TCustomXMLExport::TFolderElements::BeginNode(const TTreeRow& pRow, bool pIsComplete) {
  IFolderData& folder = pRow.fFolder;
  const size_t parentLength = fPath.size();
  if (!folder.IsFileGroup()) {
    if (!fPath.empty() && fPath.back() != fExport.fDelimiter) fPath += fExport.fDelimiter;
    fPath += folder.GetObjectName();
  }
  fAttributes.Clear();
  fAttributes.Add("fullpath", fPath);
  fAttributes.AddBoolean("IsFilesNode", folder.IsFileGroup());
  fStream.StartElement("Folder", fAttributes);
  const TEntryView entry = pRow.View();
  for (const TColumn column : fExport.Columns()) WriteColumn(entry, column);
  if (!fExport.fErrors.empty()) WriteErrors(folder);
  fStream.AddElement("FolderState", entry.GetFolderState() & XML::kFolderStatesInFiles);
  const TSizeValues values = entry.GetValues();
  fAttributes.Clear();
  AddSizes(fAttributes, values);
  fAttributes.Add("Folders", values.fFolders);
  fAttributes.Add("Compression", static_cast<int>(values.fCompression));
  fStream.AddElement("SizeData", fAttributes);
  if (pIsComplete) {
    WriteStatistics(folder);
    fStream.EndElement("Folder");
    fPath.resize(parentLength);
  } else {
    fParentLengths.push_back(parentLength);
  }
  return true;
}

bool TCustomXMLExport::TFolderElements::EndNode(const TTreeRow&) {
  fPath.resize(fParentLengths.back());
  fParentLengths.pop_back();
  fStream.EndElement("Folder");
  return true;
}

// A reader of the file must learn that its totals are incomplete, and where.
void TCustomXMLExport::TFolderElements::WriteErrors(const IFolderData& pFolder) {
  const IHierarchicalObject* object = &pFolder;
  auto error = std::partition_point(fExport.fErrors.begin(), fExport.fErrors.end(), [&](const TScanError& pError) {
    return std::less<>()(pError.fObject.get(), object);
  });
  for (; error != fExport.fErrors.end() && error->fObject.get() == object; ++error) {
    fAttributes.Clear();
    fAttributes.Add("Code", error->fCode);
    fAttributes.Add("Kind", static_cast<int>(error->fKind));
    fAttributes.AddBoolean("Partial", error->fPartial);
    if (error->fPath != fPath) fAttributes.Add("Path", error->fPath);
    fStream.AddElement("ErrorMessage", error->fText, fAttributes);
  }
}

void TCustomXMLExport::TFolderElements::WriteColumn(const TEntryView& pEntry, TColumn pColumn) {
  switch (pColumn) {
    case TColumn::mdAttributes:
      fStream.AddElement("Attributes", pEntry.GetAttributes());
      return;
    case TColumn::mdLastAccess:
      fStream.WriteFileTimeToXMLFile("LastAccessDate", pEntry.GetLastAccessDate());
      return;
    case TColumn::mdLastChange:
      fStream.WriteFileTimeToXMLFile("LastChangeDate", pEntry.GetLastChangeDate());
      return;
    case TColumn::mdCreation:
      fStream.WriteFileTimeToXMLFile("CreationDate", pEntry.GetCreationDate());
      return;
    default:
      break;
  }
  if (IsSizeColumn(pColumn)) return;
  const std::u16string text = pEntry.GetFormattedValue(pColumn, fExport.fFormat);
  // If owners are not collected, every folder would have an empty one.
  if (pColumn == TColumn::mdOwner && text.empty()) return;
  fStream.AddElement(TagOf(pColumn), text);
}

void TCustomXMLExport::TFolderElements::WriteStatistics(const IFolderData& pFolder) {
  pFolder.ReadStatistics(fStatistics);
  if (fStatistics.Extensions()) WriteSizeArray("TExtensionSizeArray", *fStatistics.Extensions());
  if (fStatistics.Users()) WriteSizeArray("TUserSizeArray", *fStatistics.Users());
  if (fStatistics.Ages()) WriteFileAges(*fStatistics.Ages());
}

void TCustomXMLExport::TFolderElements::WriteSizeArray(std::string_view pName,
                                                       const std::vector<TKeyedSizeValues>& pRecords) {
  fSorted = pRecords;
  std::sort(fSorted.begin(), fSorted.end(), TCustomAssocSizeArray::TSizeArrayComparer(TColumn::mdSize));
  fStream.StartElement(pName);
  for (const TKeyedSizeValues& record : fSorted) {
    fAttributes.Clear();
    fAttributes.Add("name", TextOfKey(record.fKey));
    AddSizes(fAttributes, record.fValues);
    fStream.AddElement("Item", fAttributes);
  }
  fStream.EndElement(pName);
}

// Writes one attribute per interval, named "Days_" and its bound. It holds the size, allocated size and files.
void TCustomXMLExport::TFolderElements::WriteFileAges(const std::vector<TKeyedSizeValues>& pRecords) {
  fAttributes.Clear();
  auto record = pRecords.begin();
  for (size_t i = 0; i < fExport.fFileAgesNames.size(); ++i) {
    const bool isEmpty = record == pRecords.end() || record->fKey != i;
    const TBasicSizeValues values = isEmpty ? TBasicSizeValues() : (record++)->fValues;
    fInterval.clear();
    AppendInteger(fInterval, values.fSize);
    fInterval += ' ';
    AppendInteger(fInterval, values.fAllocated);
    fInterval += ' ';
    AppendInteger(fInterval, values.fFiles);
    fAttributes.Add(fExport.fFileAgesNames[i], std::string_view(fInterval));
  }
  fStream.AddElement("FileAgeDistribution", fAttributes);
}

namespace {

// Calls the check before each piece is written.
class TCheckedSink final : public IByteSink {
 public:
  TCheckedSink(IByteSink& pSink, const std::function<void()>& pCheck) : fSink(pSink), fCheck(pCheck) {}
  void Write(std::string_view pBytes) override {
    if (fCheck) fCheck();
    fSink.Write(pBytes);
  }

 private:
  IByteSink& fSink;
  const std::function<void()>& fCheck;
};

}  // namespace

void ExportXMLFile(TCustomXMLExport& pExport, IHierarchicalRoot& pRoot, const std::u16string& pPath,
                   const std::function<void()>& pCheck) {
  constexpr std::u16string_view kZip = u".zip";
  constexpr std::u16string_view kXML = u".xml";
  if (!HasExtension(pPath, kZip)) {
    TOutputFile file(pPath);
    TCheckedSink sink(file, pCheck);
    pExport.Export(pRoot, sink);
    file.Commit();
    return;
  }
  // The entry is "data.xml" for both "data.xml.zip" and "data.zip".
  std::u16string entry(FileNameOfPath(pPath, NativePathDelimiter()));
  entry.resize(entry.size() - kZip.size());
  if (!HasExtension(entry, kXML)) entry += kXML;
  Zip::TZipOutput archive(pPath, entry, pRoot.GetScanTimeStamp());
  TCheckedSink sink(archive, pCheck);
  pExport.Export(pRoot, sink);
  archive.Commit();
}

}  // namespace Vantrel::Exporting
