#include "app/ResultWriting.h"

#include <fmt/format.h>

#include <algorithm>

#include "app/CancelRequest.h"
#include "app/Version.h"
#include "automation/commandline/ExitCodes.h"

namespace Vantrel {

using namespace PostScanActions;

TResultWriter WriterOf(const TSearchResults& pResults, TGlobalOptions& pOptions) {
  return {[&](ILineOutput& pOutput) {
            return WriteSearchResults(pResults, TExportFormat::efReport, pOptions, {}, pOutput);
          },
          [&](const CommandLine::TExportRequest& pRequest, const TExportRun& pRun) {
            ExportSearchResults(pResults, pRequest, pOptions, pRun);
          }};
}

int WriteResults(const TResultWriter& pWriter, const TRunSettings& pSettings,
                 const CommandLine::TCommandLineState& pState) {
  if (pState.fExports.empty()) return pWriter.fShow(*pSettings.fOutput) ? ecOk : ecOutputFailed;
  int result = ecOk;
  const TExportRun run{kProgramName, kVersion, false, pState.fPathsEndWithNul, IsCancelRequested};
  for (const CommandLine::TExportRequest& request : pState.fExports) {
    try {
      // What a stopped search has found replaces no file.
      CheckNotCancelled(IsCancelRequested(), request.fFile);
      pWriter.fExport(request, run);
    } catch (const EExportCancelled& error) {
      pSettings.fWriteError(error.what());
      result = std::max<int>(result, ecCancelled);
    } catch (const EOSError& error) {
      if (!IsReaderGone(error)) pSettings.fWriteError(error.what());
      result = std::max<int>(result, ecOutputFailed);
    }
  }
  return result;
}

void ListUnread(const TRunSettings& pSettings, const std::string& pHead, const std::vector<std::string>& pLines,
                int64_t pMost) {
  if (pLines.empty()) return;
  pSettings.fWriteError(pHead);
  constexpr int64_t kMostListed = 10;
  const auto count = static_cast<int64_t>(pLines.size());
  const int64_t listed = std::min({count, kMostListed, pMost});
  for (int64_t i = 0; i < listed; ++i) pSettings.fWriteError("  " + pLines[static_cast<size_t>(i)]);
  if (listed < count) pSettings.fWriteError(fmt::format("  … and {} more", count - listed));
}

}  // namespace Vantrel
