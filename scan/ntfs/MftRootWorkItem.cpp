#include "scan/ntfs/MftRootWorkItem.h"

#include <fmt/format.h>

#include "platform/system/DebugLog.h"
#include "platform/system/Errors.h"
#include "platform/system/System.h"
#include "platform/text/Text.h"
#include "scan/ntfs/NtfsErrors.h"

namespace Vantrel::Ntfs {

namespace {

// Of the index alone, measured by bench/ntfs with names of 16 characters, and room for longer ones.
constexpr int64_t kBytesPerRecord = 300;
constexpr int64_t kRecordsBetweenReports = 16'384;
constexpr int kIndexVersion = 1;  // raised when the index finds a tree by other rules

// "1,234".
std::string Grouped(int64_t pNumber) {
  std::string text = std::to_string(pNumber);
  for (size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, ",");
  return text;
}

}  // namespace

TMftRootWorkItem::TMftRootWorkItem(IVolumeReader& pReader, TMftLocation pLocation, std::u16string pPath,
                                   TMftBuildSettings pSettings, TRef<ICancellationIndicator> pCancellation)
    : TBasicWorkItem(std::move(pCancellation)),
      fReader(pReader),
      fLocation(std::move(pLocation)),
      fPath(std::move(pPath)),
      fSettings(std::move(pSettings)) {}

void TMftRootWorkItem::Execute() {
  try {
    Build();
  } catch (...) {
    fErrorCode = CodeOfCaughtException("TMftRootWorkItem.Execute");
    fRoot = nullptr;
    throw;
  }
}

bool TMftRootWorkItem::HasSufficientMemory(int64_t pRecords) const {
  if (fSettings.fIsOnlyWay && pRecords <= fSettings.fFreeMemory / kBytesPerRecord) return true;
  return TBaseMftRoot::HasSufficientMemory(pRecords, fSettings.fFreeMemory, THierarchicalMftRoot::kClassName);
}

void TMftRootWorkItem::Build() {
  const int64_t start = TickCount64();
  TReadFileMftEnumerator records(
      fReader, fLocation, [this] { return IsCancelled(); }, fSettings.fRoot.fCompatible, fSettings.fThreads);
  if (records.CountRecords() == 0) {
    fErrorCode = kErrorNothingToRead;
    return;
  }
  if (!HasSufficientMemory(records.CountRecords())) {
    fErrorCode = kErrorNoMemory;
    return;
  }
  LogStart(records.CountRecords());
  auto root = MakeRef<THierarchicalMftRoot>(records.CountRecords(), fSettings.fRoot);
  const bool isComplete = ReadRecords(records, *root);
  fErrorCode = records.GetError();
  if (isComplete) root->Finish();
  TMftSummary& summary = root->Summary();
  summary.fUnreadBytes = records.UnreadBytes();
  summary.fMilliseconds = TickCount64() - start;
  Log(summary, !isComplete);
  if (isComplete && (fErrorCode == 0 || fSettings.fIsOnlyWay)) fRoot = std::move(root);
}

// False when cancelled.
bool TMftRootWorkItem::ReadRecords(TReadFileMftEnumerator& pRecords, THierarchicalMftRoot& pRoot) {
  TMftItemData item;
  const TParseSettings parse{fSettings.fRoot.fCompatible, false};
  int64_t nextReport = 0;
  while (pRecords.Next()) {
    if (!fSettings.fIsOnlyWay && pRecords.GetError() != 0) return true;
    const int64_t number = pRecords.GetCurrentMftRecordNumber();
    if (number >= nextReport) {
      if (IsCancelled()) return false;
      if (fSettings.fOnProgress) fSettings.fOnProgress(number, pRecords.CountRecords());
      nextReport = number + kRecordsBetweenReports;
    }
    ParseItem(pRecords.Record(), pRecords.Header(), parse, item);
    if (pRecords.IsTorn()) ++pRoot.Summary().fTornRecords;
    pRoot.AddRecord(static_cast<uint32_t>(number), pRecords.Header(), pRecords.IsExtension(), item);
  }
  if (pRecords.WasCancelled()) return false;
  if (fSettings.fOnProgress) fSettings.fOnProgress(pRecords.CountRecords(), pRecords.CountRecords());
  return true;
}

void TMftRootWorkItem::LogStart(int64_t pRecords) const {
  if (!IsDebugLogActive()) return;
  // A volume that is not mounted has no table that the system knows of.
  LogDebug(FromUtf8(fmt::format("<{}MFT INDEX start: {}. {} records>", fSettings.fIsOnlyWay ? "Virtual " : "",
                                ToQuotedDisplay(fPath), Grouped(pRecords))));
}

void TMftRootWorkItem::Log(const TMftSummary& pSummary, bool pWasCancelled) const {
  if (!IsDebugLogActive()) return;
  LogDebug(
      FromUtf8(fmt::format("<{}: Duration: {} ms. Path: {}. {} files, {} folders. Version: {}>",
                           pWasCancelled ? "INDEX CANCELED" : "INDEX", pSummary.fMilliseconds, ToQuotedDisplay(fPath),
                           Grouped(pSummary.fFiles), Grouped(pSummary.fFolders), kIndexVersion)));
}

}  // namespace Vantrel::Ntfs
