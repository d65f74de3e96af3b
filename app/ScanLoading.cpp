#include "app/ScanLoading.h"

#include <atomic>
#include <chrono>
#include <future>
#include <vector>

#include "app/CancelRequest.h"
#include "automation/commandline/ExitCodes.h"
#include "model/columns/MetaData.h"
#include "platform/system/Console.h"
#include "platform/text/Text.h"

namespace Vantrel {

TLoadedScanFile LoadScanFile(const std::u16string& pFile, IScanRoots& pRoots, const TRunSettings& pSettings,
                             TRunLog& pLog) {
  using namespace Vantrel::XML;
  constexpr int64_t kPollMilliseconds = 100;
  std::atomic<uint64_t> bytesRead{0};
  // On a thread of its own, so that progress is shown and a signal stops it.
  auto load = std::async(std::launch::async, [&] {
    return TQZXMLReader::LoadFromFile({&pFile, 1}, pRoots, [&](const std::u16string&, uint64_t pBytes) {
      bytesRead.store(pBytes, std::memory_order_relaxed);
      return !IsCancelRequested();
    });
  });
  while (load.wait_for(std::chrono::milliseconds(kPollMilliseconds)) != std::future_status::ready) {
    pLog.WriteWaiting();
    if (pSettings.fShowProgress)
      TConsole::WriteProgress("Reading the scan file  " + ToUtf8(FormatValue(TColumn::mdSize, int64_t(bytesRead), {})));
  }
  if (pSettings.fShowProgress) TConsole::ClearProgress();
  const std::vector<TLoadedRoot> loaded = load.get();
  if (loaded.empty()) return {ecCancelled};
  if (!loaded.front().fRoot) {
    pSettings.fWriteError(loaded.front().fError);
    return {ecPathNotFound};
  }
  for (const std::string& note : loaded.front().fNotes) pSettings.fWriteError(note);
  return {ecOk, loaded.front().fRoot};
}

}  // namespace Vantrel
