#include "export/opening/ScanFiles.h"

#include <algorithm>
#include <optional>

#include "export/json/JSONReader.h"
#include "export/json/NcduReader.h"
#include "export/opening/CacheFile.h"
#include "export/opening/DuText.h"
#include "export/opening/GzipSource.h"
#include "platform/files/FileStream.h"
#include "platform/text/Text.h"

namespace Vantrel::Opening {

namespace {

// A source whose first bytes can be looked at before they are read. The other source must outlive it.
class TPeekedSource final : public IByteSource {
 public:
  explicit TPeekedSource(IByteSource& pSource) : fSource(pSource) {
    constexpr size_t kLooked = 4096;
    while (fStart.size() < kLooked) {
      char piece[kLooked];
      const size_t length = fSource.Read(piece, kLooked - fStart.size());
      if (length == 0) break;
      fStart.append(piece, length);
    }
  }

  std::string_view Start() const { return fStart; }
  // The same behind a byte-order mark and blanks.
  std::string_view StartOfText() const {
    std::string_view text = fStart;
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    return text.substr(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
  }

  size_t Read(char* pBuffer, size_t pLength) override {
    if (fRead == fStart.size()) return fSource.Read(pBuffer, pLength);
    const size_t length = fStart.copy(pBuffer, pLength, fRead);
    fRead += length;
    return length;
  }

  void Skip(size_t pLength) { fRead += pLength; }

 private:
  IByteSource& fSource;
  std::string fStart;
  size_t fRead = 0;
};

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

std::optional<TOpenedScan> TryReadAny(TPeekedSource& pSource, IScanRoots& pTarget, const TFileProgress& pProgress) {
  if (!IsPacked(pSource.Start())) return TryRead(pSource, pTarget, pProgress);
  TGzipSource unpacked(pSource);
  TPeekedSource source(unpacked);
  std::optional<TOpenedScan> opened = TryRead(source, pTarget, pProgress);
  if (!opened) throw EFileError("What gzip packed in it is no scan of a kind that this program reads");
  return opened;
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

TOpenedScan ReadScan(IByteSource& pSource, IScanRoots& pTarget, const TFileProgress& pProgress) {
  TPeekedSource source(pSource);
  std::optional<TOpenedScan> opened = TryReadAny(source, pTarget, pProgress);
  if (!opened) throw EFileError("The file is no scan of a kind that this program reads");
  return std::move(*opened);
}

XML::TLoadedRoot ReadScanFile(const std::u16string& pPath, IScanRoots& pTarget, const XML::TLoadProgress& pProgress,
                              XML::TPurpose pPurpose) {
  const std::string file = "The file " + ToQuotedDisplay(pPath);
  TFileProgress progress;
  if (pProgress) progress = [&](uint64_t pBytes) { return pProgress(pPath, pBytes); };
  try {
    TFileStream stream = TFileStream::OpenForReading(pPath);
    TPeekedSource source(stream);
    if (std::optional<TOpenedScan> opened = TryReadAny(source, pTarget, progress)) {
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
