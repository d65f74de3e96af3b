#include "automation/actions/FileExportAction.h"

#include "export/json/JSONExport.h"
#include "export/json/JSONLists.h"
#include "export/json/NcduExport.h"
#include "export/text/DelimitedExport.h"
#include "export/text/ListExport.h"
#include "export/xml/XMLExport.h"
#include "platform/files/Paths.h"
#include "platform/system/Console.h"
#include "platform/text/Text.h"
#include "presentation/lists/RootLists.h"

namespace Vantrel::PostScanActions {

using namespace Exporting;

namespace {

std::u16string_view TemporaryNameOf(TExportFormat pFormat) {
  switch (pFormat) {
    case TExportFormat::efXML:
      return u"Scan.xml";
    case TExportFormat::efCSV:
      return u"Report.csv";
    case TExportFormat::efTabText:
      return u"Report.tsv";
    case TExportFormat::efPathList:
      return u"Paths.txt";
    case TExportFormat::efJSON:
    case TExportFormat::efNcdu:
      return u"Scan.json";
    case TExportFormat::efJSONLines:
      return u"Scan.jsonl";
    default:
      return u"Report.txt";
  }
}

std::unique_ptr<TFileExport> CreateExport(TExportFormat pFormat, const TMediaSettings& pSettings,
                                          const TGlobalOptions& pOptions, const TExportRun& pRun) {
  switch (pFormat) {
    case TExportFormat::efCSV:
      return std::make_unique<TCSVExport>(pSettings);
    case TExportFormat::efTabText:
      return std::make_unique<TTextExport>(pSettings);
    case TExportFormat::efPathList:
      return std::make_unique<TPathListExport>(pSettings, pRun.fPathsEndWithNul);
    default:
      return std::make_unique<TFormattedTextExport>(pSettings, pOptions, pRun.fProgramName);
  }
}

// Lists have their own columns. So beside files that programs read they get their own files: "data-extensions.csv"
// beside "data.csv".
bool HasListFiles(TExportFormat pFormat, std::u16string_view pFileName) {
  return (pFormat == TExportFormat::efCSV || pFormat == TExportFormat::efTabText || IsJSON(pFormat)) &&
         !pFileName.empty() && pFileName != TOutputFile::kStandardOutput;
}

std::u16string PathOfList(const std::u16string& pFileName, std::u16string_view pList) {
  return WithPartInName(pFileName, u"-" + std::u16string(pList));
}

}  // namespace

// Other programs read path lists, so lines end as is usual on the system.
std::string_view EndOfPath(bool pWithNul) {
  if (pWithNul) return std::string_view("\0", 1);
  return TConsole::LineEnd();
}

TMediaType MediaOf(TExportFormat pFormat) {
  switch (pFormat) {
    case TExportFormat::efXML:
      return TMediaType::mtXML;
    case TExportFormat::efCSV:
    case TExportFormat::efJSON:
    case TExportFormat::efJSONLines:
      return TMediaType::mtCSV;
    default:
      return TMediaType::mtText;
  }
}

bool HoldsOneScan(TExportFormat pFormat) {
  return pFormat == TExportFormat::efXML || pFormat == TExportFormat::efNcdu || IsJSON(pFormat);
}

bool IsJSON(TExportFormat pFormat) {
  return pFormat == TExportFormat::efJSON || pFormat == TExportFormat::efJSONLines;
}

JSON::TLayout LayoutOf(TExportFormat pFormat) {
  return pFormat == TExportFormat::efJSONLines ? JSON::TLayout::loLines : JSON::TLayout::loObject;
}

TExportFormat FormatOfFile(std::u16string_view pFile, TExportFormat pUsual) {
  if (HasExtension(pFile, u".csv")) return TExportFormat::efCSV;
  if (HasExtension(pFile, u".tsv") || HasExtension(pFile, u".tab")) return TExportFormat::efTabText;
  if (HasExtension(pFile, u".json")) return TExportFormat::efJSON;
  if (HasExtension(pFile, u".jsonl")) return TExportFormat::efJSONLines;
  return pUsual;
}

TMediaSettings RowSettings(TExportFormat pFormat, TMediaSettings pSettings, std::u16string_view pFile) {
  if (pFormat == TExportFormat::efTabText) pSettings = TabSettings(std::move(pSettings));
  // The next program in a pipe would read the mark as a part of the first field.
  if (pFile.empty() || pFile == TOutputFile::kStandardOutput) pSettings.fByteOrderMark = false;
  return pSettings;
}

TMediaSettings RowSettings(TExportFormat pFormat, TGlobalOptions& pOptions, std::u16string_view pFile) {
  return RowSettings(pFormat, TMediaOptions(pOptions).Effective(MediaOf(pFormat)), pFile);
}

namespace {

// A file that programs read has no charts. It gets the charts' numbers as lists.
TGlobalOptions WithListsOfCharts(TGlobalOptions pOptions) {
  pOptions.ListExtensions |= pOptions.ChartExtensions;
  pOptions.ListFileTypes |= pOptions.ChartFileTypes;
  pOptions.ListUsers |= pOptions.ChartUsers;
  pOptions.ListFileAges |= pOptions.ChartFileAges;
  return pOptions;
}

}  // namespace

std::vector<std::u16string> ListFiles(TExportFormat pFormat, const std::u16string& pFileName,
                                      const TGlobalOptions& pOptions) {
  std::vector<std::u16string> files;
  if (!HasListFiles(pFormat, pFileName)) return files;
  for (const Presentation::TRootList& list : Presentation::ChosenLists(WithListsOfCharts(pOptions)))
    files.push_back(PathOfList(pFileName, list.fName));
  return files;
}

TFileExportPostScanAction::TFileExportPostScanAction(const TPostProcessActionHandler& pHandler,
                                                     const TGlobalOptions& pOptions, TExportFormat pFormat,
                                                     std::u16string pFileName, TExportRun pRun)
    : fHandler(pHandler),
      fOptions(pOptions),
      fFormat(pFormat),
      fFileName(std::move(pFileName)),
      fRun(std::move(pRun)) {}

void TFileExportPostScanAction::Prepare() {
  if (fFileName.empty()) {
    fFileName = fTemporary.emplace().Add(TemporaryNameOf(fFormat));
    return;
  }
  ProbeTarget(fFileName);
  if (fRun.fSeveralRoots || fFileName == TOutputFile::kStandardOutput || SpecialFileExists(fFileName))
    return;  // the names of the lists are not known yet
  for (const std::u16string& list : ListFiles(fFormat, fFileName, fOptions)) {
    const TOutputFile listProbe(list);
  }
}

void TFileExportPostScanAction::Execute(IHierarchicalRoot& pRoot, bool, bool) {
  CheckNotCancelled(WasStopped(pRoot), fFileName);
  const std::u16string name = fRootNames.Next(NameForFiles(pRoot));
  if (fFormat == TExportFormat::efXML) return ExportXML(pRoot, name);
  if (HoldsOneScan(fFormat))
    ExportJSON(pRoot, name);
  else
    ExportLines(pRoot);
  if (HasListFiles(fFormat, fFileName)) ExportLists(pRoot, name);
}

void TFileExportPostScanAction::Finish() {
  auto commit = [&](std::unique_ptr<TExportFile>& pFile) {
    // Stopped between two roots: the file would look as if it held all of them.
    CheckNotCancelled(fRun.fSeveralRoots && fRun.fIsCancelled(), pFile->Path());
    pFile->Commit();
    NoteWritten(pFile->Path());
    pFile.reset();
  };
  if (fFile) commit(fFile);
  for (auto& list : fLists) commit(list);
  fLists.clear();
}

void TFileExportPostScanAction::NoteWritten(const std::u16string& pPath) {
  fWritten.push_back(pPath);
  // Names made from the first one are temporary, too.
  if (fTemporary) fTemporary->Add(FileNameOfPath(pPath, NativePathDelimiter()));
}

std::u16string TFileExportPostScanAction::PathOfRoot(const std::u16string& pPath, const std::u16string& pRoot) const {
  const bool isFile = pPath != TOutputFile::kStandardOutput;
  return fRun.fSeveralRoots && isFile ? WithPartInName(pPath, u"_" + pRoot) : pPath;
}

TMediaSettings TFileExportPostScanAction::Settings() const {
  return RowSettings(fFormat, fHandler.MergedRecursionLevel(MediaOf(fFormat)), fFileName);
}

void TFileExportPostScanAction::ExportXML(IHierarchicalRoot& pRoot, const std::u16string& pRootName) {
  TCustomXMLExport xml(fHandler.MergedRecursionLevel(TMediaType::mtXML), fRun.fProgramName, fRun.fVersion);
  const std::u16string path = PathOfRoot(fFileName, pRootName);
  ExportXMLFile(xml, pRoot, path, [&] { CheckNotCancelled(fRun.fIsCancelled(), path); });
  NoteWritten(path);
}

void TFileExportPostScanAction::ExportJSON(IHierarchicalRoot& pRoot, const std::u16string& pRootName) {
  TExportFile file(PathOfRoot(fFileName, pRootName), fRun.fIsCancelled);
  if (fFormat == TExportFormat::efNcdu) {
    TNcduExport(fRun.fProgramName, fRun.fVersion).Export(pRoot, file);
  } else {
    TJSONExport json(Settings(), LayoutOf(fFormat));
    json.SetExpanded(fHandler.ExpandedFolders(pRoot));
    json.Export(pRoot, file);
  }
  file.Commit();
  NoteWritten(file.Path());
}

void TFileExportPostScanAction::ExportLines(IHierarchicalRoot& pRoot) {
  if (!fFile) {
    fFile = std::make_unique<TExportFile>(fFileName, fRun.fIsCancelled, fRun.fSeveralRoots);
    if (fFormat == TExportFormat::efPathList) fFile->SetLineEnd(EndOfPath(fRun.fPathsEndWithNul));
  }
  const std::unique_ptr<TFileExport> lines = CreateExport(fFormat, Settings(), fOptions, fRun);
  lines->SetExpanded(fHandler.ExpandedFolders(pRoot));
  lines->Export(pRoot, *fFile);
}

void TFileExportPostScanAction::ExportLists(IHierarchicalRoot& pRoot, const std::u16string& pRootName) {
  const TMediaSettings settings = Settings();
  for (const Presentation::TRootList& list : Presentation::ChosenLists(WithListsOfCharts(fOptions))) {
    const std::u16string path = PathOfList(fFileName, list.fName);
    fLists.push_back(std::make_unique<TExportFile>(PathOfRoot(path, pRootName), fRun.fIsCancelled, fRun.fSeveralRoots));
    if (IsJSON(fFormat))
      WriteListAsJSON(list.fFill(pRoot), ToUtf8(list.fName), &pRoot, LayoutOf(fFormat), *fLists.back());
    else
      WriteListAsDelimited(list.fFill(pRoot), settings, *fLists.back());
  }
}

}  // namespace Vantrel::PostScanActions
