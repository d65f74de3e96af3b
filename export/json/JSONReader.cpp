#include "export/json/JSONReader.h"

#include <fmt/format.h>

#include <optional>
#include <vector>

#include "export/json/JSONText.h"
#include "export/walk/HierarchicalExport.h"
#include "platform/files/Paths.h"
#include "platform/text/Text.h"
#include "search/patterns/PatternFilter.h"
#include "search/patterns/PatternList.h"

namespace Vantrel::JSON {

using namespace Opening;

namespace {

// Builds the tree from rows with whole paths, which come in the order of the tree.
class TTreeReader final : public IObjectHandler {
 public:
  explicit TTreeReader(IScanRoots& pTarget) : fTree(pTarget) {}

  bool BeginRows(std::string_view pKey, const TObject& pSoFar) override;
  void Row(const TObject& pRow) override;
  void End(const TObject& pObject) override;
  TOpenedScan Finish();
  // Whether the document is complete, so that nothing may follow.
  bool IsComplete() const { return fHasRows; }

 private:
  void ReadHead(const TObject& pHead);
  void ReadFilter(std::u16string_view pPatterns);
  TKivFileTime Date(const TObject& pObject, std::string_view pKey) const;
  TLoadedEntry Entry(const TObject& pRow, std::u16string_view pName) const;
  TSizeValues Totals(const TObject& pRow) const;
  bool LiesIn(std::u16string_view pPath, std::u16string_view pFolder) const;
  std::u16string_view EnterParentOf(std::u16string_view pPath);
  void ReadFolder(const TObject& pRow, std::u16string_view pPath);
  void ReadError(const TObject& pRow);

  TLoadedTree fTree;
  bool fHasHead = false;
  bool fHasRows = false;  // the head's object holds them itself
  TOpenedScan fOpened;
  TLoadedScan fScan;
  std::u16string fRootPath;
  char16_t fDelimiter = 0;
  int64_t fStatedFolders = 0;
  bool fHasSingleFiles = false;
  int64_t fStatedFiles = 0;
  int64_t fFiles = 0;
};

bool TTreeReader::BeginRows(std::string_view pKey, const TObject& pSoFar) {
  if (fHasHead || pKey != "rows") return false;
  ReadHead(pSoFar);
  fHasRows = true;
  return true;
}

void TTreeReader::End(const TObject& pObject) {
  if (fHasRows) return;
  if (!fHasHead) return ReadHead(pObject);
  Row(pObject);
}

void TTreeReader::ReadHead(const TObject& pHead) {
  if (pHead.Text("format") != kFormatName)
    throw EFileError("The file is no scan: it does not begin with \"format\":\"vantrel\"");
  const int64_t version = pHead.Number("version", 0, INT64_MAX);
  if (version != kFormatVersion)
    throw EFileError(fmt::format("The file has version {} of the format, and this program reads version {}", version,
                                 kFormatVersion));
  if (const std::string_view kind = pHead.Text("kind"); kind != "tree")
    throw EFileError(
        fmt::format("The file is no scan, but holds \"{}\": --json writes scans", ToDisplay(UnitsOf(kind))));
  fHasHead = true;
  fRootPath = UnitsOf(pHead.Text("path"));
  const std::u16string delimiter = UnitsOf(pHead.Text("delimiter"));
  if (!delimiter.empty()) fDelimiter = delimiter.front();
  fScan.fTitle = UnitsOf(pHead.Text("title"));
  fScan.fScanTimeStamp = Date(pHead, "date");
  fScan.fStorage.fFileSystem = UnitsOf(pHead.Text("filesystem"));
  fScan.fStorage.fBytesPerCluster = pHead.Number("clustersize", 0, kMostOfAnything);
  fScan.fStorage.fTotalBytes = pHead.Number("totalbytes", 0, kMostOfAnything);
  fScan.fStorage.fFreeBytes = pHead.Number("freebytes", 0, kMostOfAnything);
  ReadFilter(UnitsOf(pHead.Text("filter")));
  fScan.fExcludedObjects = pHead.Number("excluded", 0, kMostOfAnything);
  fOpened.fWasStopped = fScan.fWasCancelled = pHead.Boolean("stopped", false);
  fOpened.fIsWhole = fScan.fIsFullExport = pHead.Boolean("whole", true);
  fHasSingleFiles = pHead.Boolean("singlefiles", false);
  fOpened.fIsCompared = pHead.Has("comparedwith");
}

// The text forms of patterns, with tabs between them.
void TTreeReader::ReadFilter(std::u16string_view pPatterns) {
  using namespace PatternMatching;
  const std::vector<std::u16string_view> texts = PatternsOfText(pPatterns);
  const TRef<IPatterns> patterns = MakeRef<TPatternList>(fDelimiter);
  try {
    patterns->AddStrings({texts.begin(), texts.end()}, TPatternType::ptyExclude);
  } catch (const EInvalidArgumentValue& error) {
    throw EFileError(fmt::format("\"filter\" cannot be read: {}", error.what()));
  }
  if (patterns->Count() > 0) fScan.fFilter = MakeRef<TPatternFilter>(patterns);
}

TKivFileTime TTreeReader::Date(const TObject& pObject, std::string_view pKey) const {
  TKivFileTime date;
  const std::string_view text = pObject.Text(pKey);
  if (!text.empty() && !TryParseIso(text, date))
    throw EFileError(fmt::format("\"{}\" is no date: {}", pKey, ToQuotedDisplay(UnitsOf(text.substr(0, 100)))));
  return date;
}

TLoadedEntry TTreeReader::Entry(const TObject& pRow, std::u16string_view pName) const {
  TLoadedEntry entry;
  entry.fName = pName;
  entry.fValues.fSize = pRow.Number("size", 0, kMostOfAnything);
  entry.fValues.fAllocated = pRow.Number("allocated", 0, kMostOfAnything);
  entry.fValues.fLastAccessDate = Date(pRow, "lastaccess");
  entry.fValues.fLastChangeDate = Date(pRow, "lastchange");
  entry.fValues.fCreationDate = Date(pRow, "creation");
  entry.fValues.fAttributes = static_cast<TAttributes>(pRow.Number("attributes", 0, UINT32_MAX));
  if (pRow.Has("owner")) entry.fOwnerKey = InternKey(UnitsOf(pRow.Text("owner")));
  return entry;
}

TSizeValues TTreeReader::Totals(const TObject& pRow) const {
  TSizeValues totals;
  totals.fSize = pRow.Number("size", 0, kMostOfAnything);
  totals.fAllocated = pRow.Number("allocated", 0, kMostOfAnything);
  totals.fFiles = pRow.Number("files", 0, kMostOfAnything);
  totals.fFolders = pRow.Number("folders", 0, kMostOfAnything);
  return totals;
}

bool TTreeReader::LiesIn(std::u16string_view pPath, std::u16string_view pFolder) const {
  if (!pPath.starts_with(pFolder) || pPath.size() == pFolder.size()) return false;
  return pFolder.ends_with(fTree.Delimiter()) || pPath[pFolder.size()] == fTree.Delimiter();
}

// Ends the folders that the path does not lie in. Returns the name that is left of the path.
std::u16string_view TTreeReader::EnterParentOf(std::u16string_view pPath) {
  while (fTree.OpenFolders() > 1 && !LiesIn(pPath, fTree.Path())) fTree.EndFolder();
  if (!LiesIn(pPath, fTree.Path()))
    throw EFileError(ToQuotedDisplay(pPath) + " does not lie in " + ToQuotedDisplay(fTree.Path()));
  std::u16string_view name = pPath.substr(fTree.Path().size());
  if (name.starts_with(fTree.Delimiter())) name.remove_prefix(1);
  if (name.find(fTree.Delimiter()) != std::u16string_view::npos)
    throw EFileError("The folder of " + ToQuotedDisplay(pPath) + " is missing before it");
  return name;
}

void TTreeReader::Row(const TObject& pRow) {
  // What has gone since an earlier scan is no part of the tree.
  if (pRow.Text("state") == "gone") return;
  const std::string_view type = pRow.Text("type");
  if (!pRow.Has("path")) throw EFileError("A row has no path");
  const std::u16string path = UnitsOf(pRow.Text("path"));
  if (type == "folder") return ReadFolder(pRow, path);
  if (!fTree.HasTop())
    throw EFileError("The first row is no folder, so the file holds no tree: --exportedelements left the folders out");
  if (type == "file") {
    ++fFiles;
    return fTree.AddFile(Entry(pRow, EnterParentOf(path)));
  }
  if (type != "files") throw EFileError("A row has an unknown type: " + ToQuotedDisplay(UnitsOf(type)));
  while (fTree.OpenFolders() > 1 && path != fTree.Path()) fTree.EndFolder();
  if (path != fTree.Path()) throw EFileError("The folder of the files of " + ToQuotedDisplay(path) + " is missing");
  fTree.SetFiles(Entry(pRow, {}), Totals(pRow));
}

void TTreeReader::ReadFolder(const TObject& pRow, std::u16string_view pPath) {
  const TSizeValues totals = Totals(pRow);
  if (!fTree.HasTop()) {
    fTree.BeginTop(fRootPath.empty() ? pPath : std::u16string_view(fRootPath), fDelimiter, Entry(pRow, {}), totals);
    if (WithoutTrailingDelimiter(pPath, fTree.Delimiter()) != fTree.Path())
      throw EFileError("The first row is not " + ToQuotedDisplay(fTree.Path()));
    fStatedFolders = totals.fFolders;
    fStatedFiles = totals.fFiles;
  } else {
    const std::u16string_view name = EnterParentOf(pPath);
    fTree.BeginFolder(Entry(pRow, name), totals);
  }
  if (pRow.Has("error")) ReadError(pRow);
}

void TTreeReader::ReadError(const TObject& pRow) {
  std::u16string text = UnitsOf(pRow.Text("error"));
  const bool isPartial = text.ends_with(Exporting::kPartialError);
  if (isPartial) text.resize(text.size() - Exporting::kPartialError.size());
  fTree.AddError(std::move(text), isPartial);
}

TOpenedScan TTreeReader::Finish() {
  if (!fHasHead) throw EFileError("The file is empty");
  if (!fTree.HasTop()) throw EFileError("The file holds no folder");
  while (fTree.OpenFolders() > 0) fTree.EndFolder();
  // A file with a row in each line may have been cut off between two of them.
  if (fOpened.fIsWhole && fTree.FolderCount() < fStatedFolders)
    throw EFileError(
        fmt::format("The file ends too early: it holds {} of {} folders", fTree.FolderCount(), fStatedFolders));
  if (fHasSingleFiles && fFiles < fStatedFiles)
    throw EFileError(fmt::format("The file ends too early: it holds {} of {} files", fFiles, fStatedFiles));
  fOpened.fRoot = fTree.Finish(fScan);
  return std::move(fOpened);
}

}  // namespace

TOpenedScan ReadTree(IByteSource& pSource, IScanRoots& pTarget, const TFileProgress& pProgress) {
  TValues values(pSource, pProgress);
  TTreeReader reader(pTarget);
  while (values.Peek() != 0 && !reader.IsComplete()) values.ReadObject(reader);
  if (values.Peek() != 0) values.Fail("There is something after the end");
  if (values.WasCancelled()) return {};
  try {
    return reader.Finish();
  } catch (const EFileError& error) {
    values.Fail(error.what());
  }
}

}  // namespace Vantrel::JSON
