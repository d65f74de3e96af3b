#include "search/files/FileFactsReader.h"

#include <algorithm>
#include <optional>

#include "platform/files/Paths.h"
#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "platform/threads/InterruptibleThread.h"
#include "search/metadata/Shortcut.h"
#include "search/query/SearchItem.h"

namespace Vantrel::Search {

namespace {

std::u16string PathOf(TSearchItem& pItem) {
  const std::u16string& folder = pItem.FolderPath();
  return folder.empty() ? std::u16string(pItem.NameText()) : JoinPath(folder, pItem.NameText(), pItem.PathDelimiter());
}

// A file up to the length that it had when it was opened. A file may grow faster than it is read.
class TOpenedLength final : public IByteSource {
 public:
  explicit TOpenedLength(IStoredFile& pFile)
      : fFile(pFile), fLeft(static_cast<uint64_t>(std::max<int64_t>(pFile.GetFacts().fSize, 0))) {}

  size_t Read(char* pBuffer, size_t pLength) override {
    const auto wanted = static_cast<size_t>(std::min<uint64_t>(pLength, fLeft));
    const size_t read = wanted == 0 ? 0 : fFile.Read(pBuffer, wanted);
    fLeft -= read;
    return read;
  }

  uint64_t SkipZeros() override {
    const uint64_t skipped = std::min(fFile.SkipZeros(), fLeft);
    fLeft -= skipped;
    return skipped;
  }

 private:
  IStoredFile& fFile;
  uint64_t fLeft;
};

}  // namespace

TContentMatcher& TFileFactsReader::MatcherOf(const TContentSearch& pSearch) {
  std::unique_ptr<TContentMatcher>& matcher = fMatchers[&pSearch];
  if (!matcher) matcher = std::make_unique<TContentMatcher>(pSearch);
  return *matcher;
}

int64_t TFileFactsReader::GivenUp() const {
  int64_t lines = 0;
  for (const auto& [search, matcher] : fMatchers) lines += matcher->GivenUp();
  return lines;
}

bool TFileFactsReader::IsReadable(TSearchItem& pItem) const {
  const TEntryView& entry = pItem.Entry();
  const TAttributes attributes = entry.GetAttributes();
  // A file that Windows' overlay has compressed is no link. On NTFS a link has no size.
  const bool isLink = (attributes & kAttributeReparsePoint) != 0 && (attributes & kAttributeCompressed) == 0;
  return !pItem.IsFolder() && fStorage && !isLink && (attributes & kAttributeDevice) == 0 && entry.GetSize() > 0;
}

void TFileFactsReader::KeepError(const std::u16string& pPath, std::string_view pWhere) {
  const uint32_t code = CodeOfCaughtException(pWhere);
  // A file that has vanished since it was listed is not missing from the answer.
  if (ClassifyOSError(code) != TErrorKind::ekNotFound && !TInterruptibleThread::IsCurrentInterrupted())
    fErrors.FileFailed(pPath, code, fStorage->ErrorText(code));
}

bool TFileFactsReader::ContentsMatch(TSearchItem& pItem, const TContentSearch& pSearch) {
  if (!IsReadable(pItem)) return false;
  std::u16string path;
  try {
    path = PathOf(pItem);
    const std::unique_ptr<IStoredFile> file = fStorage->OpenFile(path, fContext);
    TOpenedLength contents(*file);
    return MatcherOf(pSearch).IsFoundIn(contents, [this] { return fErrors.IsStopped(); });
  } catch (...) {
    KeepError(path, "TFileFactsReader.ContentsMatch");
    return false;
  }
}

TMetaDataValue TFileFactsReader::GetProperty(TSearchItem& pItem, TFileProperty pProperty) {
  if (!IsReadable(pItem)) return {};
  std::u16string path;
  try {
    path = PathOf(pItem);
    if (path != fPathOfProperties) {
      fPathOfProperties = path;
      fProperties = {};
      const std::unique_ptr<IByteSource> file = fStorage->OpenFile(path, fContext);
      TFileBytes bytes(*file, static_cast<uint64_t>(pItem.Entry().GetSize()), [this] { return fErrors.IsStopped(); });
      fProperties = ReadFileProperties(bytes);
    }
    return fProperties.Get(pProperty);
  } catch (...) {
    KeepError(path, "TFileFactsReader.GetProperty");
    return {};
  }
}

// A path with a drive can be judged on Windows alone.
bool TFileFactsReader::LeadsNowhere(TSearchItem& pItem) {
  const std::u16string path = PathOf(pItem);
  const std::unique_ptr<IByteSource> file = fStorage->OpenFile(path, fContext);
  TFileBytes bytes(*file, static_cast<uint64_t>(pItem.Entry().GetSize()), [this] { return fErrors.IsStopped(); });
  const std::optional<TShortcutTarget> target = ReadShortcut(bytes);
  if (!target) return false;
  const char16_t delimiter = pItem.PathDelimiter();
  std::u16string relative = target->fRelativePath;
  std::replace(relative.begin(), relative.end(), u'\\', delimiter);
  if (!relative.empty() && fStorage->Exists(JoinPath(pItem.FolderPath(), relative, delimiter))) return false;
  if (delimiter != u'\\') return !relative.empty();
  return !target->fLocalPath.empty() && !fStorage->Exists(target->fLocalPath);
}

bool TFileFactsReader::IsInvalidShortcut(TSearchItem& pItem) {
  if (!fStorage) return false;
  try {
    if ((pItem.Entry().GetAttributes() & kAttributeReparsePoint) != 0) return !fStorage->Exists(PathOf(pItem));
    return SameTextAscii(pItem.Entry().GetExtension(), u"lnk") && IsReadable(pItem) && LeadsNowhere(pItem);
  } catch (...) {
    CodeOfCaughtException("TFileFactsReader.IsInvalidShortcut");
    return false;
  }
}

// A folder in a tree knows its counts. On a storage its listing is begun.
bool TFileFactsReader::IsEmptyFolder(TSearchItem& pItem) {
  if (!pItem.IsFolder()) return false;
  if (!fListing) {
    const TSizeValues values = pItem.Entry().GetValues();
    return values.fFiles == 0 && values.fFolders == 0;
  }
  try {
    if (!fListing->CanDescend()) return false;
    const TRef<IHierarchicalEnumerator> contents = fListing->GetChildHierarchicalEnumerator();
    return !contents->Next() && contents->GetErrorCode() == 0;
  } catch (...) {
    CodeOfCaughtException("TFileFactsReader.IsEmptyFolder");
    return false;
  }
}

}  // namespace Vantrel::Search
