#pragma once

// The action that exports to a file, with the lists beside it.

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "automation/actions/ExportFile.h"
#include "automation/actions/PostScanActions.h"
#include "automation/commandline/CommandLineState.h"
#include "export/json/JSONText.h"
#include "platform/files/Folders.h"

namespace Vantrel::PostScanActions {

using Vantrel::CommandLine::TExportFormat;

// The kind of output whose settings a format uses.
TMediaType MediaOf(TExportFormat pFormat);

// Whether a file of this format holds one scan, so that several scans get a file each.
bool HoldsOneScan(TExportFormat pFormat);
// Whether the format is JSON; efJSONLines has its rows in lines.
bool IsJSON(TExportFormat pFormat);
JSON::TLayout LayoutOf(TExportFormat pFormat);

// The format for a file's name: CSV, tabs for ".tsv" and ".tab", JSON for ".json" and ".jsonl", otherwise the usual
// one.
TExportFormat FormatOfFile(std::u16string_view pFile, TExportFormat pUsual);

// The settings for the format's kind of output, adjusted for files that programs read row by row. Either those given,
// or those that the options say.
TMediaSettings RowSettings(TExportFormat pFormat, TMediaSettings pSettings, std::u16string_view pFile);
TMediaSettings RowSettings(TExportFormat pFormat, TGlobalOptions& pOptions, std::u16string_view pFile);

// The list files that the options ask for beside an export of one scan. None if the export holds its lists itself or
// has no file name.
std::vector<std::u16string> ListFiles(TExportFormat pFormat, const std::u16string& pFileName,
                                      const TGlobalOptions& pOptions);

// What ends the lines of a path list.
std::string_view EndOfPath(bool pWithNul);

// What an export needs to know of the run.
struct TExportRun {
  std::string fProgramName;
  std::string fVersion;
  bool fSeveralRoots = false;
  bool fPathsEndWithNul = false;  // in path lists
  TExportFile::TIsCancelled fIsCancelled;
};

// Exports roots to a file when their scans have finished. Several roots go one after the other into one file. If a
// format holds one root only, each root gets its own file with the root's name in it. Files replace their targets when
// everything is written. An error is an exception that names the file.
class TFileExportPostScanAction : public TBasePostScanAction {
 public:
  // The handler and the options must outlive the action. Without a name, the file is a temporary one that the action
  // deletes at its end.
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
  std::vector<std::u16string> GetWrittenFiles() const override {
    return fTemporary ? std::vector<std::u16string>() : fWritten;
  }
  const std::u16string& GetFileName() const { return fFileName; }
  // For spreadsheets, which have names inside; empty for all current formats.
  std::u16string GetSheetName() const { return {}; }

 private:
  std::u16string PathOfRoot(const std::u16string& pPath, const std::u16string& pRoot) const;
  TMediaSettings Settings() const;
  void NoteWritten(const std::u16string& pPath);
  void ExportXML(IHierarchicalRoot& pRoot, const std::u16string& pRootName);
  void ExportJSON(IHierarchicalRoot& pRoot, const std::u16string& pRootName);
  void ExportLines(IHierarchicalRoot& pRoot);
  void ExportLists(IHierarchicalRoot& pRoot, const std::u16string& pRootName);

  const TPostProcessActionHandler& fHandler;
  const TGlobalOptions& fOptions;
  const TExportFormat fFormat;
  std::u16string fFileName;
  const TExportRun fRun;
  std::optional<TTemporaryFiles> fTemporary;  // none: the file has its own target
  std::unique_ptr<TExportFile> fFile;         // open over several roots
  std::vector<std::unique_ptr<TExportFile>> fLists;
  TNamesOfRoots fRootNames;
  std::vector<std::u16string> fWritten;
};

}  // namespace Vantrel::PostScanActions
