#include "automation/actions/HistoryTasks.h"

#include <fmt/format.h>

#include <algorithm>

#include "automation/actions/FileExportAction.h"
#include "automation/actions/PictureAction.h"
#include "automation/commandline/ExitCodes.h"
#include "export/history/HistoryDocument.h"
#include "export/history/HistoryReport.h"
#include "export/json/JSONLists.h"
#include "export/text/ListExport.h"
#include "export/walk/MediaOptions.h"
#include "platform/files/Folders.h"
#include "platform/files/Paths.h"
#include "platform/files/UserFolders.h"
#include "platform/system/Console.h"
#include "platform/text/Text.h"
#include "presentation/lists/HistoryList.h"

namespace Vantrel::CommandLine {

using namespace Vantrel::Exporting;
using History::THistoryDatabaseReaderWriter;
using History::THistoryDocument;
using Presentation::HasIncompleteScans;
using Presentation::HistoryList;
using Presentation::THistoryEntry;
using Presentation::TList;

namespace {

class THistoryTasks {
 public:
  THistoryTasks(const TCommandLineState& pState, ILineOutput& pOutput,
                const std::function<void(std::string_view)>& pWriteError, Pictures::IPictureRenderer* pRenderer)
      : fState(pState),
        fFile(HistoryFile(*pState.fOptions)),
        fOutput(pOutput),
        fWriteError(pWriteError),
        fRenderer(pRenderer) {}

  int Run() {
    for (const std::u16string& file : fState.fHistoryImports) Try([&] { Import(file); });
    for (const int64_t scan : fState.fHistoryDeletions) Try([&] { Delete(scan); });
    if (!fState.fHistoryPaths.empty()) Try([&] { Show(); });
    if (!fState.fHistoryExport.empty()) Try([&] { Export(); });
    return fResult;
  }

 private:
  // If one task fails, the others still run.
  template <class TTask>
  void Try(const TTask& pTask) {
    try {
      pTask();
    } catch (const EOSError& error) {
      Fail(PostScanActions::IsReaderGone(error) ? "" : error.what(), ecOutputFailed);
    } catch (const EException& error) {
      Fail(error.what(), ecOutputFailed);
    }
  }

  void Fail(std::string_view pMessage, int pExitCode) {
    if (!pMessage.empty()) fWriteError(pMessage);
    fResult = std::max(fResult, pExitCode);
  }

  bool Write(std::string_view pLine) { return Check(fOutput.WriteLine(pLine)); }

  bool Check(bool pWritten) {
    if (!pWritten) Fail(TConsole::IsOutputClosed() ? "" : "The history could not be written", ecOutputFailed);
    return pWritten;
  }

  void Import(const std::u16string& pFile) {
    const int64_t added = THistoryDocument(fFile).ImportHistoryFile(pFile);
    Write(fmt::format("{}: {} added to the history", ToQuotedDisplay(pFile),
                      added == 1 ? "1 scan was" : fmt::format("{} scans were", added)));
  }

  void Export() {
    CreateFolderOf(fState.fHistoryExport);
    THistoryDocument(fFile).ExportHistoryFile(fState.fHistoryExport);
  }

  void Delete(int64_t pScan) {
    try {
      const int64_t left = PathExists(fFile) ? THistoryDatabaseReaderWriter().DeleteHistoryData(fFile, pScan) : -1;
      if (left >= 0)
        return void(Write(fmt::format("The scan {} was deleted; of its path {} left", pScan,
                                      left == 1 ? "1 scan is" : fmt::format("{} scans are", left))));
    } catch (const EInvalidArgumentValue&) {
    }
    Fail(fmt::format("The history {} holds no scan {}", ToQuotedDisplay(fFile), pScan), ecPathNotFound);
  }

  void Show() {
    const std::u16string pattern = fState.fPatterns ? History::HistoryPattern(*fState.fPatterns) : std::u16string();
    std::vector<TList> tables;
    std::vector<std::u16string> found;
    for (const std::u16string& path : fState.fHistoryPaths) {
      std::vector<THistoryEntry> entries;
      // Before the first scan there is no file.
      if (PathExists(fFile)) entries = THistoryDatabaseReaderWriter().ReadRootHistoryData(fFile, path, pattern);
      if (entries.empty()) {
        FailToFind(path, pattern);
        continue;
      }
      found.push_back(path);
      tables.push_back(HistoryList(path, entries));
      if (fState.fHistoryCSV.empty() && fState.fHistoryJSON.empty() && !ShowOne(tables.back(), entries)) return;
    }
    if (!fState.fHistoryCSV.empty() && !tables.empty()) ExportCSV(tables);
    if (!fState.fHistoryJSON.empty()) ExportJSON(tables, found);
    for (const TPictureRequest& request : fState.fPictures)
      if (request.fSubject == TPictureSubject::psHistory && !request.fFile.empty()) Draw(request.fFile, found, pattern);
  }

  // Several paths get a file each, with the path's name in it.
  std::vector<std::u16string> FilesOf(const std::u16string& pFile, const std::vector<std::u16string>& pPaths) const {
    using namespace PostScanActions;
    std::vector<std::u16string> files;
    TNamesOfRoots names;
    for (const std::u16string& path : pPaths) {
      const std::u16string name = u"_" + names.Next(NameForFiles(AbsolutePath(path), NativePathDelimiter()));
      files.push_back(fState.fHistoryPaths.size() > 1 && pFile != TOutputFile::kStandardOutput
                          ? WithPartInName(pFile, name)
                          : pFile);
      CreateFolderOf(files.back());
    }
    return files;
  }

  void ExportJSON(const std::vector<TList>& pTables, const std::vector<std::u16string>& pPaths) {
    using namespace PostScanActions;
    const TExportFormat format = FormatOfFile(fState.fHistoryJSON, TExportFormat::efJSON);
    const std::vector<std::u16string> files = FilesOf(fState.fHistoryJSON, pPaths);
    for (size_t i = 0; i < files.size(); ++i) {
      TExportFile file(files[i], [] { return false; });
      WriteListAsJSON(pTables[i], "history", nullptr, LayoutOf(format), file);
      file.Commit();
    }
  }

  void Draw(const std::u16string& pFile, const std::vector<std::u16string>& pPaths, std::u16string_view pPattern) {
    using namespace PostScanActions;
    const std::vector<std::u16string> files = FilesOf(pFile, pPaths);
    for (size_t i = 0; i < files.size(); ++i) {
      TExportFile file(files[i], [] { return false; });
      WritePicture(HistoryPicture(*fState.fOptions, pPaths[i], pPattern), file, files[i], fRenderer);
    }
  }

  void FailToFind(const std::u16string& pPath, std::u16string_view pPattern) {
    const bool hasOthers = PathExists(fFile) && THistoryDatabaseReaderWriter().GetNumberOfScans(fFile, pPath) > 0;
    const char* filter = !pPattern.empty() ? " with this filter" : hasOthers ? " without a filter" : "";
    Fail(fmt::format("No scan of {}{} is recorded in {}; scan it with --record-history", ToQuotedDisplay(pPath), filter,
                     ToQuotedDisplay(fFile)),
         ecPathNotFound);
  }

  bool ShowOne(const TList& pTable, const std::vector<THistoryEntry>& pEntries) {
    const TMediaSettings settings = TMediaOptions(*fState.fOptions).Effective(TMediaType::mtText);
    if (!Check(WriteListAsText(pTable, FormatOf(settings), fOutput)) || !Write("")) return false;
    for (const std::string& line : HistoryChart(pEntries, fOutput.LineWidth().fColumns, settings.fDecimalUnits))
      if (!Write(line)) return false;
    return !HasIncompleteScans(pEntries) ||
           (Write("") && Write("? is an incomplete scan: folders could not be read. Growth is against the last scan in "
                               "which as many could not."));
  }

  // Several paths follow one another, each table with its own captions.
  void ExportCSV(const std::vector<TList>& pTables) {
    const std::u16string& path = fState.fHistoryCSV;
    const TExportFormat format = PostScanActions::FormatOfFile(path, TExportFormat::efCSV);
    const TMediaSettings settings = PostScanActions::RowSettings(format, *fState.fOptions, path);
    CreateFolderOf(path);
    PostScanActions::TExportFile file(path, [] { return false; });
    for (const TList& table : pTables) WriteListAsDelimited(table, settings, file);
    file.Commit();
  }

  const TCommandLineState& fState;
  const std::u16string fFile;
  ILineOutput& fOutput;
  const std::function<void(std::string_view)>& fWriteError;
  Pictures::IPictureRenderer* const fRenderer;
  int fResult = ecOk;
};

}  // namespace

std::u16string HistoryFile(const TGlobalOptions& pOptions) {
  if (!pOptions.HistoryFile.empty()) return AbsolutePath(FromNativeBytes(pOptions.HistoryFile));
  const std::u16string folder = UserDataFolder();
  return folder.empty() ? folder : JoinPath(folder, u"history.db", NativePathDelimiter());
}

int RunHistoryTasks(const TCommandLineState& pState, ILineOutput& pOutput,
                    const std::function<void(std::string_view)>& pWriteError, Pictures::IPictureRenderer* pRenderer) {
  return THistoryTasks(pState, pOutput, pWriteError, pRenderer).Run();
}

}  // namespace Vantrel::CommandLine
