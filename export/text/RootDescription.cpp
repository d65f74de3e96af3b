#include "export/text/RootDescription.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/files/Paths.h"
#include "platform/text/Text.h"
#include "presentation/lists/ErrorList.h"

namespace Vantrel::Exporting {

namespace {

std::string SizeText(int64_t pBytes, const TValueFormat& pFormat) {
  TValueFormat format = pFormat;
  format.fShowUnits = true;  // no header line shows the unit here
  return ToUtf8(FormatValue(TColumn::mdSize, pBytes, format));
}

std::string ShareText(int64_t pPart, int64_t pWhole, const TValueFormat& pFormat) {
  const double share = static_cast<double>(pPart) / static_cast<double>(pWhole);
  TValueFormat format = pFormat;
  format.fShowUnits = true;
  return ToUtf8(FormatValue(TColumn::mdPercentOfRoot, share, format));
}

std::string ErrorLine(const Presentation::TListRow& pError) {
  const auto text = [&](Presentation::TErrorColumn pColumn) {
    return ToDisplay(std::get<std::u16string>(pError.fValues[pColumn]));
  };
  const std::string remark = text(Presentation::erRemark);
  return fmt::format("  {}: {}{}", text(Presentation::erPath), text(Presentation::erReason),
                     remark.empty() ? "" : " (" + remark + ")");
}

}  // namespace

std::string SecondsText(int64_t pMilliseconds) {
  const double seconds = static_cast<double>(pMilliseconds) / 1000;
  return seconds < 10 ? fmt::format("{:.2f} seconds", seconds) : fmt::format("{:.1f} seconds", seconds);
}

std::vector<std::string> ErrorSummary(const IHierarchicalRoot& pRoot, const TValueFormat& pFormat,
                                      size_t pListedErrors) {
  const std::vector<Presentation::TListRow> errors = Presentation::ErrorList(pRoot).fRows;
  if (errors.empty()) return {};
  const auto count = static_cast<int64_t>(errors.size());
  std::vector<std::string> lines;
  lines.push_back(fmt::format("incomplete: {} could not be read", CountText(count, "folder", "folders", pFormat)));
  const size_t listed = std::min(errors.size(), pListedErrors);
  for (size_t i = 0; i < listed; ++i) lines.push_back(ErrorLine(errors[i]));
  if (listed < errors.size()) lines.push_back("  " + MoreText(count - static_cast<int64_t>(listed), pFormat));
  return lines;
}

std::string MoreText(int64_t pCount, const TValueFormat& pFormat) {
  return fmt::format("… and {} more", ToUtf8(FormatValue(TColumn::mdItems, pCount, pFormat)));
}

std::string CountText(int64_t pCount, std::string_view pOne, std::string_view pMany, const TValueFormat& pFormat) {
  return fmt::format("{} {}", ToUtf8(FormatValue(TColumn::mdFiles, pCount, pFormat)), pCount == 1 ? pOne : pMany);
}

std::string RootHeaderLine(const IHierarchicalRoot& pRoot, const TValueFormat& pFormat) {
  std::string line = ToDisplay(pRoot.GetTitle());
  if (const TRef<IFolderData> top = pRoot.GetTopFolder()) {
    const int64_t size = LeadingSizeOf(top->GetValues(), pRoot.GetScanConfiguration()->GetShareBasis());
    line += " - " + SizeText(size, pFormat);
    line += " - " + CountText(top->GetFiles(), "file", "files", pFormat);
    line += " - " + CountText(top->GetFolders(), "folder", "folders", pFormat);
  }
  const TRootStates state = pRoot.GetState();
  if (state & rsCancelled) line += " - cancelled";
  if (state & rsHasErrors) line += " - incomplete";
  return line;
}

std::string DriveInformation(const IHierarchicalRoot& pRoot, const TValueFormat& pFormat) {
  const TStorageInformation storage = pRoot.GetStorageInformation();
  std::string kind = ToDisplay(storage.fFileSystem);
  if (!storage.fLabel.empty()) kind += (kind.empty() ? "" : ", ") + ToDisplay(storage.fLabel);
  std::string text = ToDisplay(storage.fMountPoint);
  if (!kind.empty()) text += text.empty() ? kind : " (" + kind + ")";
  // A file system without storage of its own reports no sizes.
  if (storage.fTotalBytes > 0) {
    text +=
        fmt::format("{}Total: {}  Free: {} ({})", text.empty() ? "" : "  ", SizeText(storage.fTotalBytes, pFormat),
                    SizeText(storage.fFreeBytes, pFormat), ShareText(storage.fFreeBytes, storage.fTotalBytes, pFormat));
  }
  return text.empty() ? text : "Drive: " + text;
}

std::string UnseenInformation(const IHierarchicalRoot& pRoot, const TValueFormat& pFormat) {
  const TStorageInformation storage = pRoot.GetStorageInformation();
  const TRef<IFolderData> top = pRoot.GetTopFolder();
  const bool isWhole = SamePath(pRoot.GetPath(), storage.fMountPoint, pRoot.GetPathDelimiter());
  const bool isPart = (pRoot.GetState() & (rsCancelled | rsIsXMLImport)) != 0 || pRoot.GetScanFilter();
  if (!top || !isWhole || isPart || storage.fUsedBytes <= top->GetAllocated()) return {};
  std::string text =
      fmt::format("Not in this tree: {} of {} in use", SizeText(storage.fUsedBytes - top->GetAllocated(), pFormat),
                  SizeText(storage.fUsedBytes, pFormat));
  if (storage.fDeletedBytes > 0)
    text += fmt::format(", {} of it deleted files still open", SizeText(storage.fDeletedBytes, pFormat));
  if (storage.fReservedBytes > 0) text += fmt::format("; {} reserved", SizeText(storage.fReservedBytes, pFormat));
  return text;
}

std::vector<std::string> ScanSummary(const IHierarchicalRoot& pRoot, const TValueFormat& pFormat,
                                     size_t pListedErrors) {
  std::vector<std::string> lines = ErrorSummary(pRoot, pFormat, pListedErrors);
  const TScanProgress progress = pRoot.GetProgress();
  if (progress.fExcludedObjects > 0) {
    lines.push_back(CountText(progress.fExcludedObjects, "object was excluded", "objects were excluded", pFormat));
    for (const TExclusion& exclusion : pRoot.GetExclusions())
      lines.push_back(fmt::format("  {} {}", ToUtf8(FormatValue(TColumn::mdItems, exclusion.fObjects, pFormat)),
                                  ToDisplay(exclusion.fReason)));
  }
  for (const std::u16string& note : pRoot.GetStorageInformation().fNotes) lines.push_back(ToDisplay(note));
  const int64_t duration = pRoot.GetScanDuration();
  // A file holds the time when its scan began, but not its duration.
  const bool isLoaded = (pRoot.GetState() & rsIsXMLImport) != 0;
  if (pRoot.GetState() & rsCancelled) {
    lines.push_back(fmt::format("The scan was cancelled{}: the totals cover only the part that was scanned.",
                                isLoaded ? "" : " after " + SecondsText(duration)));
  }
  std::string line = fmt::format("Scanned {} and {}", CountText(progress.fFiles, "file", "files", pFormat),
                                 CountText(progress.fFolders, "folder", "folders", pFormat));
  if (isLoaded) {
    const std::string date = FormatIsoLocal(pRoot.GetScanTimeStamp());
    lines.push_back(line + (date.empty() ? "." : " on " + date + "."));
    return lines;
  }
  line += " in " + SecondsText(duration);
  // If a scan is shorter than the clock's step, its rate means nothing.
  if (duration >= 10) {
    const int64_t entries = progress.fFiles + progress.fFolders + progress.fExcludedObjects;
    const int64_t rate = entries * 1000 / duration;
    line += fmt::format(" ({} entries per second)", ToUtf8(FormatValue(TColumn::mdItems, rate, pFormat)));
  }
  lines.push_back(line + ".");
  return lines;
}

}  // namespace Vantrel::Exporting
