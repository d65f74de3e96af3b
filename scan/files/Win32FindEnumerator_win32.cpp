#include "scan/files/Win32FindEnumerator_win32.h"

#include <utility>

#include "platform/files/Paths.h"
#include "platform/system/Errors.h"
#include "scan/files/VolumeInformationCache.h"
#include "scan/storage/PathNotFoundEnumerator.h"

namespace Vantrel::Enumerators {

TCustomFileSystemEnumerator::~TCustomFileSystemEnumerator() {
  TCustomFileSystemEnumerator::CloseListing();
}

void TCustomFileSystemEnumerator::CloseListing() noexcept {
  if (fFindHandle != INVALID_HANDLE_VALUE) fApi.CloseFind(std::exchange(fFindHandle, INVALID_HANDLE_VALUE));
  fFindData.reset();
  fSingleObjectOnly = false;
}

bool TCustomFileSystemEnumerator::FindFirst() {
  if (!BelongsToScan()) return false;
  fFindData = std::make_unique<TKivWin32FindData>();
  fSingleObjectOnly = !fForFile.empty();
  // A drive is an entry of no folder, so the find call cannot describe it.
  bool isDrive = fSingleObjectOnly && fPath.empty();
  std::u16string pattern = fSingleObjectOnly ? JoinPath(fPath, fForFile, u'\\') : JoinPath(fPath, u"*", u'\\');
  uint32_t code = OpenFolder(pattern, [&](const std::u16string& pApiPath) {
    if (isDrive) return fApi.QueryEntry(pApiPath, *fFindData);
    uint32_t error = 0;
    fFindHandle = fApi.FindFirst(pApiPath, *fFindData, error);
    return error;
  });
  if (code == 0) return true;
  // The root of an empty drive has no "." and "..", so the search matches nothing. A missing folder gives another code.
  return code == ERROR_FILE_NOT_FOUND && !fSingleObjectOnly ? false : Fail(code);
}

bool TCustomFileSystemEnumerator::FindNext() {
  if (fSingleObjectOnly) return false;
  uint32_t code = fApi.FindNext(fFindHandle, *fFindData);
  return code == 0 ? true : code == ERROR_NO_MORE_FILES ? false : Fail(code);
}

bool TCustomFileSystemEnumerator::FetchRecord(TRecord& pRecord) {
  if (!(fFindData == nullptr ? FindFirst() : FindNext())) return false;
  pRecord = RecordOf(*fFindData);
  if (fSingleObjectOnly && fPath.empty()) pRecord.fName = fForFile;
  return true;
}

// Asks the system about files with the bits of "asked". Their storage is not just their size in whole clusters.
int64_t TCustomFileSystemEnumerator::RecordAllocation() const {
  constexpr TAttributes asked = kAttributeCompressed | kAttributeSparse | kAttributeOffline;
  int64_t size = Record().fSize;
  int64_t bytes = 0;
  if ((fAttributes & asked) != 0 && fApi.QueryCompressedSize(ApiPath(GetFullPath()), bytes) == 0) return bytes;
  int64_t cluster = ClusterSize();
  return cluster <= 0 ? size : (size + cluster - 1) / cluster * cluster;
}

TRef<TWin32Enumerator> TFileSystemEnumerator::CreateForFolder(std::u16string pPath) const {
  return MakeRef<TFileSystemEnumerator>(std::move(pPath), *this);
}

TRef<TFileSystemEnumerator> TFileSystemEnumerator::CreateForFolderPath(std::u16string pPath,
                                                                       THierarchicalEnumeratorOptions pOptions,
                                                                       IWin32FileApi& pApi) {
  return MakeRef<TFileSystemEnumerator>(std::move(pPath), std::u16string(), pOptions, pApi);
}

TRef<IHierarchicalEnumerator> TFileSystemEnumerator::CreateForPath(const std::u16string& pPath,
                                                                   THierarchicalEnumeratorOptions pOptions) {
  TVolumeInformationCache::Instance().Clear();
  std::u16string path = RootedPathOf(pPath);
  TKivWin32FindData data{};
  uint32_t code = TSystemFileApi::Instance().QueryEntry(ApiPath(path), data);
  if (ClassifyOSError(code) == TErrorKind::ekNotFound) return MakeRef<TPathNotFoundEnumerator>(path, code, pOptions);
  if (code == 0 && (data.dwFileAttributes & kAttributeDirectory) == 0) return CreateForObject(path, pOptions);
  return CreateForFolderPath(path, pOptions);
}

TRef<IHierarchicalEnumerator> TFileSystemEnumerator::CreateForObject(const std::u16string& pPath,
                                                                     THierarchicalEnumeratorOptions pOptions) {
  std::u16string path = RootedPathOf(pPath);
  std::u16string folder(FolderOfPath(path, u'\\'));
  std::u16string name(folder.empty() ? path : std::u16string(FileNameOfPath(path, u'\\')));
  return MakeRef<TFileSystemEnumerator>(std::move(folder), std::move(name), pOptions, TSystemFileApi::Instance());
}

}  // namespace Vantrel::Enumerators
