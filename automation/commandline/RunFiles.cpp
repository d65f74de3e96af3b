#include "automation/commandline/RunFiles.h"

#include <fmt/format.h>

#include <set>

#include "automation/actions/ExportFile.h"
#include "automation/actions/FileExportAction.h"
#include "automation/actions/HistoryTasks.h"
#include "automation/commandline/CommandLineHandler.h"
#include "platform/files/Paths.h"
#include "platform/text/Text.h"
#include "scan/ntfs/NtfsStorage.h"

namespace Vantrel::CommandLine {

namespace {

constexpr std::u16string_view kStandardOutput = u"-";

bool IsExport(TFileUse pUse) {
  return pUse == TFileUse::fuExport || pUse == TFileUse::fuScanExport;
}

bool IsWritten(TFileUse pUse) {
  return IsExport(pUse) || pUse == TFileUse::fuWritten;
}

}  // namespace

void TRunFiles::Add(const std::u16string& pPath, TFileUse pUse, std::string pName) {
  if (pPath.empty()) return;
  fFiles.push_back(
      {pPath, pUse, std::move(pName), pPath == kStandardOutput ? TFilePlace{pPath, {}} : PlaceOfFile(pPath)});
}

bool TRunFiles::MayBeOne(const TFile& pA, const TFile& pB) {
  if (!IsWritten(pA.fUse) && !IsWritten(pB.fUse)) return true;
  auto are = [&](TFileUse pOne, TFileUse pOther) {
    return (pA.fUse == pOne && pB.fUse == pOther) || (pA.fUse == pOther && pB.fUse == pOne);
  };
  // A scan may be compared with an older one and then replace it.
  return are(TFileUse::fuOldScan, TFileUse::fuScanExport);
}

std::vector<std::string> TRunFiles::Conflicts() const {
  std::vector<std::string> messages;
  for (size_t later = 1; later < fFiles.size(); ++later) {
    for (size_t earlier = 0; earlier < later; ++earlier) {
      const TFile& a = fFiles[earlier];
      const TFile& b = fFiles[later];
      if (MayBeOne(a, b) || !IsSamePlace(a.fPlace, b.fPlace)) continue;
      messages.push_back(IsExport(a.fUse) && IsExport(b.fUse)
                             ? "Two exports would go into the same file: " + ToQuotedDisplay(b.fPath)
                             : fmt::format("{} cannot be both {} and {}", ToQuotedDisplay(b.fPath), a.fName, b.fName));
      break;  // one message for each file
    }
  }
  return messages;
}

namespace {

constexpr const char* kExport = "an export";

TFileUse UseOf(const TExportRequest& pRequest) {
  return PostScanActions::HoldsOneScan(pRequest.fFormat) ? TFileUse::fuScanExport : TFileUse::fuExport;
}

// Each root's file has the root's name in it. Names of opened scans are not known yet.
void AddPerRoot(TRunFiles& pFiles, const std::vector<std::u16string>& pRoots, const std::vector<std::u16string>& pPaths,
                TFileUse pUse) {
  using namespace PostScanActions;
  std::set<std::u16string> names;
  for (const std::u16string& path : pRoots) {
    const std::u16string root = NameForFiles(AbsolutePath(path), NativePathDelimiter());
    if (!names.insert(ToLowerLinguistic(root)).second) continue;
    for (const std::u16string& file : pPaths) pFiles.Add(WithPartInName(file, u"_" + root), pUse, kExport);
  }
}

// Some files hold one scan, and so does a list.
void AddFilesPerRoot(TRunFiles& pFiles, const TExportRequest& pRequest, const TCommandLineState& pState) {
  std::vector<std::u16string> files = PostScanActions::ListFiles(pRequest.fFormat, pRequest.fFile, *pState.fOptions);
  if (PostScanActions::HoldsOneScan(pRequest.fFormat) && !pRequest.fFile.empty()) files.push_back(pRequest.fFile);
  AddPerRoot(pFiles, pState.fPaths, files, UseOf(pRequest));
}

// A picture shows one root.
void AddPictures(TRunFiles& pFiles, const TCommandLineState& pState) {
  for (const TPictureRequest& request : pState.fPictures) {
    if (request.fFile.empty()) continue;
    const bool isOfHistory = request.fSubject == TPictureSubject::psHistory && !pState.fHistoryPaths.empty();
    const size_t roots = isOfHistory ? pState.fHistoryPaths.size() : NumberOfScans(pState);
    if (roots <= 1 || request.fFile == kStandardOutput)
      pFiles.Add(request.fFile, TFileUse::fuExport, kExport);
    else
      AddPerRoot(pFiles, isOfHistory ? pState.fHistoryPaths : pState.fPaths, {request.fFile}, TFileUse::fuExport);
  }
}

// The history of each path has its own file.
void AddHistoryJSON(TRunFiles& pFiles, const TCommandLineState& pState) {
  if (pState.fHistoryJSON.empty()) return;
  if (pState.fHistoryPaths.size() <= 1 || pState.fHistoryJSON == kStandardOutput)
    pFiles.Add(pState.fHistoryJSON, TFileUse::fuExport, kExport);
  else
    AddPerRoot(pFiles, pState.fHistoryPaths, {pState.fHistoryJSON}, TFileUse::fuExport);
}

void AddExports(TRunFiles& pFiles, const TCommandLineState& pState) {
  AddHistoryJSON(pFiles, pState);
  for (const std::u16string* file : {&pState.fDriveListFile, &pState.fHistoryCSV, &pState.fHistoryExport})
    pFiles.Add(*file, TFileUse::fuExport, kExport);
  const bool several = NumberOfScans(pState) > 1;
  for (const TExportRequest& request : pState.fExports)
    if (!several || !PostScanActions::HoldsOneScan(request.fFormat) || request.fFile == kStandardOutput)
      pFiles.Add(request.fFile, UseOf(request), kExport);
  for (const TExportRequest& request : pState.fExports) {
    if (several) AddFilesPerRoot(pFiles, request, pState);
    if (several) continue;
    for (const std::u16string& list : PostScanActions::ListFiles(request.fFormat, request.fFile, *pState.fOptions))
      pFiles.Add(list, UseOf(request), kExport);
  }
  AddPictures(pFiles, pState);
}

}  // namespace

TRunFiles FilesOfRun(const TCommandLineState& pState, const std::u16string& pUserOptionsFile) {
  TRunFiles files;
  auto addAll = [&](const std::vector<std::u16string>& pFiles, TFileUse pUse, const char* pName) {
    for (const std::u16string& file : pFiles) files.Add(file, pUse, pName);
  };
  addAll(pState.fOptionsFiles, TFileUse::fuSettings, "a file of options");
  addAll(pState.fPatternFiles, TFileUse::fuRead, "a file of patterns");
  addAll(pState.fOpenFiles, TFileUse::fuRead, "a scan to open");
  addAll(pState.fHistoryImports, TFileUse::fuRead, "a history to import");
  for (const std::u16string& path : pState.fPaths)
    files.Add(Ntfs::ImageOfPath(path), TFileUse::fuRead, "an image to scan");
  files.Add(pState.fCompareFile, TFileUse::fuOldScan, "the scan to compare with");
  files.Add(pUserOptionsFile, TFileUse::fuSettings, "the settings");
  // While a database is open, it keeps other files beside it.
  const auto addDatabase = [&](const std::u16string& pFile, const char* pName) {
    for (const char16_t* ending : {u"", u"-journal", u"-wal", u"-shm"})
      if (!pFile.empty()) files.Add(pFile + ending, TFileUse::fuWritten, pName);
  };
  if (pState.UsesHistory()) addDatabase(HistoryFile(*pState.fOptions), "the history");
  if (pState.fDuplicates.fIsWanted) addDatabase(FromNativeBytes(pState.fOptions->ChecksumCache), "the checksum cache");
  files.Add(pState.fDebugLogFile, TFileUse::fuWritten, "the log");
  AddExports(files, pState);
  return files;
}

}  // namespace Vantrel::CommandLine
