#pragma once

// The requests of a command line.

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "model/options/GlobalOptions.h"
#include "search/duplicates/DuplicateModes.h"
#include "search/patterns/PatternInterfaces.h"

namespace Vantrel::CommandLine {

// The formats of file exports.
enum class TExportFormat : uint8_t { efXML, efReport, efTabText, efCSV, efPathList, efJSON, efJSONLines, efNcdu };

struct TExportRequest {
  TExportFormat fFormat;
  std::u16string fFile;  // absolute; "-" for the standard output; empty: only to be mailed
};

// What a picture shows.
enum class TPictureSubject : uint8_t {
  psTreemap,
  psFolders,
  psExtensions,
  psFileTypes,
  psUsers,
  psFileAges,
  psHistory
};

struct TPictureRequest {
  TPictureSubject fSubject;
  std::optional<Vantrel::TChartForm> fForm;  // none: that of the options
  std::u16string fFile;                      // as for exports
};

// A search for duplicates.
struct TDuplicatesRequest {
  bool fIsWanted = false;
  Search::TDuplicatesSearchMode fMode = Search::TDuplicatesSearchMode::DuplicateFiles;
  // What is compared; contents stand as fContents here.
  bool fByName = false;
  bool fBySize = false;
  bool fByDate = false;
  bool fByContents = false;
  Search::TDuplicatesCompareType fContents = Search::TDuplicatesCompareType::ctFastChecksum;
  bool fWithEmpty = false;
  bool fVerify = false;
  std::string fDetail;  // a switch that only says how duplicates are searched for; empty: none was given

  // Contents alone, if nothing else is asked for.
  Search::TDuplicatesCompareTypes CompareTypes() const;
};

// When a command line asks for the window.
enum class TWindowUse : uint8_t {
  wuNever,      // the program has none
  wuWhenAsked,  // with /GUI
  wuUsual,      // also without it, unless the run is unattended or writes something
};

// What programs with the same command line differ in.
struct TProgramAbilities {
  TWindowUse fWindow = TWindowUse::wuNever;
  bool fHasFonts = false;  // bitmaps may hold text
};

// Requests that are also options are set in the options.
struct TCommandLineState {
  Vantrel::TGlobalOptions* fOptions = nullptr;  // the handler's

  std::vector<std::u16string> fPaths;                            // to scan, as typed, in order
  std::vector<std::u16string> fOpenFiles;                        // scan files to load, in order
  Vantrel::TRef<Vantrel::PatternMatching::IPatterns> fPatterns;  // what scans take in; nullptr for everything
  std::optional<std::u16string> fQuery;                          // of a search; none: scans are made
  bool fSearchesAtOnce = false;                                  // in a window; without one, a search always does
  TDuplicatesRequest fDuplicates;
  bool IsSearch() const { return fQuery.has_value() || fDuplicates.fIsWanted; }
  std::u16string fKeptName;                        // under which the query is kept; empty: it is not
  std::vector<std::u16string> fForgottenSearches;  // names of kept searches
  bool fListsSearches = false;
  bool ChangesSearches() const { return !fKeptName.empty() || !fForgottenSearches.empty(); }
  std::u16string fCompareFile;  // the older scan; empty: none
  std::vector<TExportRequest> fExports;
  std::vector<TPictureRequest> fPictures;
  bool fShowHistoryOfScans = false;  // of each scanned path, after its scan
  bool fDateInFileNames = false;
  bool fPathsEndWithNul = false;              // in path lists
  bool fReverses = false;                     // the order of siblings
  bool fIsQuiet = false;                      // without progress
  std::vector<std::u16string> fPatternFiles;  // already read, like the options files
  std::vector<std::u16string> fOptionsFiles;

  TProgramAbilities fAbilities;  // of the program that reads the command line
  bool fShowWindow = false;
  bool fUnattended = false;
  bool fReadOnly = false;  // nothing of the user's settings is changed
  bool fHelp = false;
  std::u16string fHelpTopic;
  bool fVersion = false;
  bool fExportDriveList = false;
  std::u16string fDriveListFile;              // empty: to the console
  std::vector<std::u16string> fHistoryPaths;  // paths whose history is shown
  std::u16string fHistoryCSV;                 // this and the next empty: to the console
  std::u16string fHistoryJSON;
  std::vector<int64_t> fHistoryDeletions;  // IDs of scans
  std::vector<std::u16string> fHistoryImports;
  std::u16string fHistoryExport;
  bool HasHistoryTasks() const {
    return !fHistoryPaths.empty() || !fHistoryDeletions.empty() || !fHistoryImports.empty() || !fHistoryExport.empty();
  }
  bool UsesHistory() const {
    return fOptions->RecordHistory || HasHistoryTasks() ||
           std::any_of(fPictures.begin(), fPictures.end(),
                       [](const TPictureRequest& pRequest) { return pRequest.fSubject == TPictureSubject::psHistory; });
  }

  bool fHadOutputs = false;  // also charts that only add to a report, which are options in the end
  // Whether the run writes something, so that it is done without a window.
  bool HasOutputs() const {
    return fHadOutputs || IsSearch() || !fExports.empty() || !fPictures.empty() || !fMailTo.empty() ||
           fExportDriveList || HasHistoryTasks() || fShowHistoryOfScans || fSaveSettings || fForgetSettings ||
           ChangesSearches() || fListsSearches;
  }
  bool OpensWindow() const {
    if (fAbilities.fWindow == TWindowUse::wuNever || fUnattended || fHelp || fVersion) return false;
    return fShowWindow || (fAbilities.fWindow == TWindowUse::wuUsual && !HasOutputs());
  }
  // Whether it draws text into bitmaps.
  bool NeedsFonts() const;

  bool fSaveSettings = false;
  bool fForgetSettings = false;
  bool fDebug = false;           // log to the standard error
  std::u16string fDebugLogFile;  // empty: none

  std::vector<std::u16string> fMailTo;  // empty: no mail
  std::u16string fMailSubject;
  bool fAttachReport = false;
  std::u16string fUserName;
  std::u16string fPassword;  // never shown, never logged

  std::vector<std::string> fWarnings;  // texts that were read differently from how they were written, one line each
};

}  // namespace Vantrel::CommandLine
