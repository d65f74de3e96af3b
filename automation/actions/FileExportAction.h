#pragma once

// An export to a file as what follows a scan, with the lists beside it.

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "automation/actions/ExportFile.h"
#include "automation/actions/PostScanActions.h"
#include "automation/commandline/CommandLineState.h"
#include "platform/files/Folders.h"

namespace Vantrel::PostScanActions {

using Vantrel::CommandLine::TExportFormat;

// The kind of output whose settings a format follows.
TMediaType MediaOf(TExportFormat pFormat);

// The format that a file's name asks for: CSV, or tabs for ".tsv" and ".tab"; else the usual one.
TExportFormat FormatOfFile(std::u16string_view pFile, TExportFormat pUsual);

// The settings, of the format's kind of output and in effect, as a file of rows for programs wants them.
TMediaSettings RowSettings(TExportFormat pFormat, TMediaSettings pSettings, std::u16string_view pFile);

// The files that the lists which the options ask for get beside an export of one scan: none beside one that holds them
// itself, or that has no file name.
std::vector<std::u16string> ListFiles(TExportFormat pFormat, const std::u16string& pFileName,
                                      const TGlobalOptions& pOptions);

// What an export needs to know of the run.
struct TExportRun {
  std::string fProgramName;
  std::string fVersion;
  bool fSeveralRoots = false;
  bool fPathsEndWithNul = false;  // in path lists
  TExportFile::TIsCancelled fIsCancelled;
};

// Exports roots to a file when their scans have finished. Several roots go below each other into one file; where one
// file holds one root only, each gets a file of its own with the root's name in it. Files take their places when all is
// written. What goes wrong is an exception that names the file.
class TFileExportPostScanAction : public TBasePostScanAction {
 public:
  // The handler and the options must outlive the action. Without a name the file is made where temporary files lie, and
  // is gone with the action.
  TFileExportPostScanAction(const TPostProcessActionHandler& pHandler, const TGlobalOptions& pOptions,
                            TExportFormat pFormat, std::u16string pFileName, TExportRun pRun);

  void Prepare() override;
  void Execute(IHierarchicalRoot& pRoot, bool pReplaceExisting, bool pReportErrors) override;
  void Finish() override;
  std::u16string GetInformation() const override { return u"Export to \"" + fFileName + u"\""; }
  uint32_t GetFlags() const override { return fFormat == TExportFormat::efXML ? kMayClose | kSaves : kMayClose; }
  bool UsesMedia(TMediaType pMedia) const override { return pMedia == MediaOf(fFormat); }
  bool ShowsReport() const override {
    return fFormat == TExportFormat::efReport && fFileName == TOutputFile::kStandardOutput;
  }
  std::vector<std::u16string> GetAttachments() const override { return fWritten; }
  const std::u16string& GetFileName() const { return fFileName; }
  // Of spreadsheets, which have names inside; empty for all that is written so far.
  std::u16string GetSheetName() const { return {}; }

 private:
  std::u16string PathOfRoot(const std::u16string& pPath, const std::u16string& pRoot) const;
  std::u16string UniqueNameOf(const IHierarchicalRoot& pRoot);
  void NoteWritten(const std::u16string& pPath);
  void ExportXML(IHierarchicalRoot& pRoot, const std::u16string& pRootName);
  void ExportLines(IHierarchicalRoot& pRoot);
  void ExportLists(IHierarchicalRoot& pRoot, const std::u16string& pRootName);

  const TPostProcessActionHandler& fHandler;
  const TGlobalOptions& fOptions;
  const TExportFormat fFormat;
  std::u16string fFileName;
  const TExportRun fRun;
  std::optional<TTemporaryFiles> fTemporary;  // none: the file has a place of its own
  std::unique_ptr<TExportFile> fFile;         // open over several roots
  std::vector<std::unique_ptr<TExportFile>> fLists;
  std::set<std::u16string> fRootNames;
  std::vector<std::u16string> fWritten;
};

}  // namespace Vantrel::PostScanActions
