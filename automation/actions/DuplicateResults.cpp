#include "automation/actions/DuplicateResults.h"

#include <fmt/format.h>

#include <algorithm>

#include "export/json/JSONLists.h"
#include "export/text/ListExport.h"
#include "export/text/RootDescription.h"
#include "export/walk/MediaOptions.h"
#include "platform/text/Text.h"
#include "presentation/lists/DuplicatesList.h"

namespace Vantrel::PostScanActions {

using namespace Exporting;
using Search::TDuplicateGroup;
using Search::TDuplicateName;

namespace {

std::string SizeText(int64_t pSize, const TValueFormat& pFormat) {
  return ToUtf8(FormatValue(TColumn::mdSize, pSize, pFormat));
}

Presentation::TList ListOf(const TDuplicateResults& pResults, const TMediaSettings& pSettings) {
  const std::vector<TColumn> columns =
      pSettings.fColumns.empty() ? Presentation::UsualDuplicatesColumns() : pSettings.fColumns;
  return Presentation::DuplicatesList(pResults.fTitle, pResults.fFound.fGroups, columns);
}

// A block of lines: "3 files of 1.0 MB, 2.0 MB wasted", and the names.
bool WriteGroup(const TDuplicateGroup& pGroup, const TValueFormat& pFormat, ILineOutput& pOutput) {
  const bool areFolders = pGroup.fNames.front().fFile->IsFolder();
  const int64_t count = std::count_if(pGroup.fNames.begin(), pGroup.fNames.end(),
                                      [](const TDuplicateName& pName) { return !pName.fIsLink; });
  const std::string head = fmt::format(
      "{} of {}, {} wasted",
      areFolders ? CountText(count, "folder", "folders", pFormat) : CountText(count, "file", "files", pFormat),
      SizeText(pGroup.fSize, pFormat), SizeText(pGroup.fWasted, pFormat));
  if (!pOutput.WriteLine(head)) return false;
  for (const TDuplicateName& name : pGroup.fNames) {
    const std::string path = "  " + ToDisplay(name.fFile->GetFullPath());
    if (!pOutput.WriteLine(name.fIsLink ? path + " (hard link)" : path)) return false;
  }
  return pOutput.WriteLine("");
}

}  // namespace

Search::TDuplicateSearchSettings DuplicateSettingsOf(const CommandLine::TDuplicatesRequest& pRequest,
                                                     const TGlobalOptions& pOptions, const TSearchedFiles& pSearched) {
  Search::TDuplicateSearchSettings settings;
  settings.fSearchMode = pRequest.fMode;
  settings.fDuplicatesCompareTypes = pRequest.CompareTypes();
  settings.fWithEmpty = pRequest.fWithEmpty;
  settings.fVerify = pRequest.fVerify;
  settings.fTops = pSearched.fTops;
  settings.fIncompleteFolders = pSearched.fIncompleteFolders;
  settings.fThreads = pOptions.MaximumThreads;
  const TRef<IStorage> storage = pSearched.fFound.empty() ? nullptr : pSearched.fFound.front().fFolder->fStorage;
  settings.fReadsInOrder =
      storage && std::any_of(pSearched.fTops.begin(), pSearched.fTops.end(),
                             [&](const std::u16string& pTop) { return storage->HasSeekPenalty(pTop); });
  settings.fPriority = pOptions.ThreadPriority;
  return settings;
}

TRef<History::TChecksumDatabase> ChecksumCacheOf(const CommandLine::TDuplicatesRequest& pRequest,
                                                 const TGlobalOptions& pOptions) {
  if (pOptions.ChecksumCache.empty() || !Search::ComparesContents(pRequest.CompareTypes())) return nullptr;
  return MakeRef<History::TChecksumDatabase>(FromNativeBytes(pOptions.ChecksumCache));
}

std::string DuplicatesSummary(const Search::TDuplicateResult& pFound, bool pAreFolders, const TValueFormat& pFormat) {
  int64_t names = 0;
  for (const TDuplicateGroup& group : pFound.fGroups) names += static_cast<int64_t>(group.fNames.size());
  return fmt::format("{} of equal {} with {}, {} wasted",
                     CountText(static_cast<int64_t>(pFound.fGroups.size()), "group", "groups", pFormat),
                     pAreFolders ? "folders" : "files", CountText(names, "name", "names", pFormat),
                     SizeText(pFound.fWasted, pFormat));
}

bool WriteDuplicates(const TDuplicateResults& pResults, TExportFormat pFormat, TGlobalOptions& pOptions,
                     std::u16string_view pFile, ILineOutput& pOutput) {
  if (pFormat == TExportFormat::efReport) {
    const TValueFormat format = FormatOf(TMediaOptions(pOptions).Effective(TMediaType::mtText));
    for (const TDuplicateGroup& group : pResults.fFound.fGroups)
      if (!WriteGroup(group, format, pOutput)) return false;
    return pOutput.WriteLine(pResults.fSummary);
  }
  const TMediaSettings settings = RowSettings(pFormat, pOptions, pFile);
  return WriteListAsDelimited(ListOf(pResults, settings), settings, pOutput);
}

void ExportDuplicates(const TDuplicateResults& pResults, const CommandLine::TExportRequest& pRequest,
                      TGlobalOptions& pOptions, const TExportRun& pRun) {
  TExportFile file(pRequest.fFile, pRun.fIsCancelled);
  if (pRequest.fFormat == TExportFormat::efPathList) {
    file.SetLineEnd(EndOfPath(pRun.fPathsEndWithNul));
    for (const TDuplicateGroup& group : pResults.fFound.fGroups)
      for (const TDuplicateName& name : group.fNames) {
        const std::u16string path = name.fFile->GetFullPath();
        file.WriteLine(pRun.fPathsEndWithNul ? ToNativeBytes(path) : ToDisplay(path));
      }
  } else if (IsJSON(pRequest.fFormat)) {
    const TMediaSettings settings = RowSettings(pRequest.fFormat, pOptions, pRequest.fFile);
    WriteListAsJSON(ListOf(pResults, settings), "duplicates", nullptr, LayoutOf(pRequest.fFormat), file);
  } else {
    WriteDuplicates(pResults, pRequest.fFormat, pOptions, pRequest.fFile, file);
  }
  file.Commit();
}

}  // namespace Vantrel::PostScanActions
