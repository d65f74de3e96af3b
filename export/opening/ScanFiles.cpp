#include "export/opening/ScanFiles.h"

#include "export/json/JSONReader.h"
#include "export/json/NcduReader.h"
#include "export/opening/CacheFile.h"
#include "export/opening/DuText.h"
#include "export/opening/GzipSource.h"
#include "platform/files/FileStream.h"
#include "platform/text/Text.h"

namespace Vantrel::Opening {

namespace {

bool IsPacked(std::string_view pStart) {
  return pStart.starts_with("\x1F\x8B");
}

using TReader = TOpenedScan (*)(IByteSource&, IScanRoots&, const TFileProgress&);

// The reader of a text that begins like this; nullptr for XML and what is unknown.
TReader ReaderFor(std::string_view pText) {
  if (pText.starts_with('{')) return JSON::ReadTree;
  if (IsCacheFile(pText)) return ReadCacheFile;
  if (pText.starts_with('[')) return JSON::ReadNcdu;
  if (IsDuText(pText)) return ReadDuText;
  return nullptr;
}

// For a source that gzip did not pack.
std::optional<TOpenedScan> TryRead(TPeekedSource& pSource, IScanRoots& pTarget, const TFileProgress& pProgress) {
  const std::string_view text = pSource.StartOfText();
  const TReader reader = ReaderFor(text);
  if (!reader) return std::nullopt;
  if (pSource.Start().starts_with('\xEF')) pSource.Skip(3);
  return reader(pSource, pTarget, pProgress);
}

void CheckComparable(const TOpenedScan& pOpened, const std::string& pFile) {
  const char* reason = nullptr;
  if (!pOpened.fIsWhole)
    reason = "does not hold all folders of its scan. Only whole scans can be used for comparison";
  else if (pOpened.fWasStopped)
    reason = "holds a scan that was stopped before its end. Only whole scans can be used for comparison";
  if (!reason) return;
  pOpened.fRoot->Dispose();
  throw XML::EScanFileError(pFile + " " + reason + ".");
}

XML::TLoadedRoot WithNotes(TOpenedScan pOpened, const std::string& pFile) {
  XML::TLoadedRoot loaded;
  loaded.fRoot = std::move(pOpened.fRoot);
  if (!loaded.fRoot) return loaded;
  if (!pOpened.fIsWhole)
    loaded.fNotes.push_back(pFile + " does not hold all folders of its scan. Only what is in it will be shown.");
  if (pOpened.fWasStopped)
    loaded.fNotes.push_back(pFile + " holds a scan that was stopped: its totals cover only the part that was scanned.");
  if (pOpened.fIsCompared)
    loaded.fNotes.push_back(pFile + " holds a comparison with an earlier scan, which is left out.");
  if (pOpened.fLacksFiles)
    loaded.fNotes.push_back(pFile +
                            " has folders that are much larger than what is listed in them: write it with du -ak.");
  return loaded;
}

}  // namespace

std::optional<TOpenedScan> TryReadScan(TPeekedSource& pSource, IScanRoots& pTarget, const TFileProgress& pProgress) {
  if (!IsPacked(pSource.Start())) return TryRead(pSource, pTarget, pProgress);
  TGzipSource unpacked(pSource);
  TPeekedSource source(unpacked);
  std::optional<TOpenedScan> opened = TryRead(source, pTarget, pProgress);
  if (!opened) throw EFileError("What gzip packed in it is no scan of a kind that this program reads");
  return opened;
}

XML::TLoadedRoot ReadScanFile(const std::u16string& pPath, IScanRoots& pTarget, const XML::TLoadProgress& pProgress,
                              XML::TPurpose pPurpose) {
  const std::string file = "The file " + ToQuotedDisplay(pPath);
  TFileProgress progress;
  if (pProgress) progress = [&](uint64_t pBytes) { return pProgress(pPath, pBytes); };
  try {
    TFileStream stream = TFileStream::OpenForReading(pPath);
    TPeekedSource source(stream);
    if (std::optional<TOpenedScan> opened = TryReadScan(source, pTarget, progress)) {
      if (opened->fRoot && pPurpose == XML::TPurpose::puCompare) CheckComparable(*opened, file);
      return WithNotes(std::move(*opened), file);
    }
    // A pipe cannot be opened again, nor can it hold an archive.
    if (!stream.CanSeek()) return XML::TQZXMLReader::ReadRoot(source, pPath, pTarget, progress, pPurpose);
  } catch (const EFileError& error) {
    throw XML::EScanFileError(file + " cannot be loaded. " + error.what());
  } catch (const XML::EXMLError& error) {
    throw XML::EScanFileError("The XML file " + ToQuotedDisplay(pPath) + " cannot be loaded. " + error.what());
  } catch (const EOSError& error) {
    throw XML::EScanFileError(file + " cannot be read: " + OSErrorText(error.Code()));
  }
  return XML::TQZXMLReader::ReadRootFromXMLFile(pPath, pTarget, pProgress, pPurpose);
}

}  // namespace Vantrel::Opening
